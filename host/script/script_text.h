// The text of a saved comp script: commands of words, quoted texts and braced lists, each with the
// place where it stands.
//
//     Camera2 {                     a command ends with its line, or with a ; outside braces
//      focal {{curve x1 35}}        # starts a comment where a command could begin
//      label "two\nlines"
//     }
//
// Shapes:    places count from 1, columns in bytes. Lines end in LF or CRLF, within texts too,
//            where they all come out as LF. A word may hold [...], which stays as it stands, and
//            $name, which stays too. Words and quoted texts know the escapes of Tcl; braced text
//            stays raw. Lists are split one level at a time, so nothing here gets deeper with the
//            braces.
// Errors:    ScriptError; what was opened and never closed is told by where it opened.
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

// Says "<where>: <why>", printable, where <where> is FILE:LINE:COLUMN, or FILE when the whole file is at
// fault.
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
    std::string text; // unescaped; what is inside the braces, raw, when braced
    ScriptPlace place;
};

// The host makes no difference between a word and a quoted text, and places do not matter.
inline bool operator==(const ScriptValue& a, const ScriptValue& b) {
    return (a.kind == ScriptValue::Kind::braced) == (b.kind == ScriptValue::Kind::braced) &&
           a.text == b.text;
}

typedef std::vector<ScriptValue> ScriptCommand; // at least one value, its name

// Splits a whole script into its commands. `name` stands for the file in messages.
std::vector<ScriptCommand> commands_of(const std::string& text, const std::string& name);

// Splits a braced list into its items; a word or a quoted text is a list of itself.
std::vector<ScriptValue> list_items(const ScriptValue& value, const std::string& name);

// The finite number that a word or a quoted text is, whatever the locale.
double number_of(const ScriptValue& value, const std::string& name);

// The value as a message shows it, a list with its braces.
using velmora::in_quotes; // else the next line would hide those for texts
std::string in_quotes(const ScriptValue& value);

} // namespace velmora::host
