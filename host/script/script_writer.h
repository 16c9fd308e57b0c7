// Saved comp scripts as text: what Script::parse reads back as an equal script.
//
// Shapes:    a node is wired to the one before it where that is its only input, and by set and push
//            everywhere else, as the host does. Values are bare words where that is possible,
//            quoted texts and braced lists elsewhere; numbers are the shortest texts that give them
//            again.
// Errors:    std::invalid_argument for a script that no text gives back: nodes that stand in groups
//            or of a class that is looked through, inputs that come later, a clone that is not like
//            its original, braces that do not match, a NUL.
// Threads:   pure functions.
#pragma once

#include "host/script/script.h"

#include <string>
#include <vector>

namespace velmora::host {

std::string write_script(const Script& script);

// Values to write. A number must be finite, and braces in a list's items must match.
ScriptValue text_value(const std::string& text);
ScriptValue number_value(double number);
ScriptValue list_value(const std::vector<ScriptValue>& items);

} // namespace velmora::host
