// SPDX-License-Identifier: BSD-3-Clause

// Writes comp scripts as text that Script::parse reads back as an equal script.
//
// Shapes:    a node whose only input is the node before it finds it on the stack; other inputs are
//            pushed, as the host does. Values are bare words where possible, else quoted texts or
//            braced lists; numbers are the shortest text that reads back the same.
// Errors:    std::invalid_argument for a script that no text can represent: nodes in groups or of a
//            class that is resolved by reading, inputs that come later, a clone that differs from
//            its original, unbalanced braces, a NUL.
// Threads:   pure functions.
#pragma once

#include "host/script/script.h"

#include <string>
#include <vector>

namespace velmora::host {

std::string write_script(const Script& script);

// Values to write. A number must be finite, and braces in a list's items balanced.
ScriptValue text_value(const std::string& text);
ScriptValue number_value(double number);
ScriptValue list_value(const std::vector<ScriptValue>& items);

} // namespace velmora::host
