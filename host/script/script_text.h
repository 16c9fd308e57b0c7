// SPDX-License-Identifier: BSD-3-Clause

// The text of a saved comp script: commands of words, quoted texts and braced lists, each with its
// place in the file.
//
//     Camera2 {                     a command ends with its line, or at a ; outside braces
//      focal {{curve x1 35}}        # starts a comment where a command could start
//      label "two\nlines"
//     }
//
// Shapes:    places count from 1, columns in bytes. Lines end in LF or CRLF; both become LF, even
//            inside texts. [...] and $name in words stay as they are: nothing is evaluated. Words
//            and quoted texts have the escapes of Tcl; braced text is raw. Lists are split one
//            level at a time, so that deep nesting costs no stack.
// Errors:    ScriptError; for what is never closed, at the place where it was opened.
// Threads:   pure functions.
#pragma once

#include "text/number.h"
#include "text/text_error.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora::host {

struct ScriptPlace {
    int line = 1;
    int column = 1;
};

// `where` is FILE:LINE:COLUMN, or FILE for an error in the file as a whole.
class ScriptError : public TextError {
public:
    using TextError::TextError;
    ScriptError(const std::string& name, ScriptPlace place, const std::string& why)
        : ScriptError(name + ":" + std::to_string(place.line) + ":" + std::to_string(place.column),
                      why) {}
};

struct ScriptValue {
    enum class Kind { word, quoted, braced };

    Kind kind = Kind::word;
    std::string text; // unescaped; of a braced value the raw text inside the braces
    ScriptPlace place;
};

// A word and a quoted text of the same characters are equal, as they are for the host. Places are
// not compared.
inline bool operator==(const ScriptValue& a, const ScriptValue& b) {
    return (a.kind == ScriptValue::Kind::braced) == (b.kind == ScriptValue::Kind::braced) &&
           a.text == b.text;
}

typedef std::vector<ScriptValue> ScriptCommand; // at least one value, its name

// Splits a whole script into its commands. `name` is the file's name in messages.
std::vector<ScriptCommand> commands_of(const std::string& text, const std::string& name);

// Splits a braced list into its items; a word or a quoted text is a list of itself.
std::vector<ScriptValue> list_items(const ScriptValue& value, const std::string& name);

// Reads a word or a quoted text as a finite number.
double number_of(const ScriptValue& value, const std::string& name);

// The value quoted for a message, a list with its braces.
using velmora::in_quotes; // the next line would hide it
std::string in_quotes(const ScriptValue& value);

} // namespace velmora::host
