// SPDX-License-Identifier: BSD-3-Clause

// A value of a saved script with the items of its lists, at any depth.
//
// Shapes:    a list is split when its items are first asked for, and once. Not earlier: whether
//            braced text is a list depends on the knob, and other text may not split at all.
// Errors:    ScriptError from items(), for text that does not split.
// Threads:   one at a time: items() fills a cache.
// Ownership: a tree copies the value and borrows the script's name.
#pragma once

#include "host/script/script_text.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::host {

class ScriptTree {
public:
    // `script` is the script's name in messages.
    ScriptTree(const ScriptValue& value, const std::string& script)
        : value_(value), script_(script) {}

    const ScriptValue& value() const { return value_; }
    const std::string& script() const { return script_; }
    bool is_list() const { return value_.kind == ScriptValue::Kind::braced; }

    // A word or a quoted text is a list of itself.
    const std::vector<ScriptTree>& items() const;

    // Whether this is {curve ...}.
    bool is_curve() const;

    [[noreturn]] void fail(const std::string& why) const {
        throw ScriptError(script_, value_.place, why);
    }

private:
    ScriptValue value_;
    const std::string& script_;
    mutable std::optional<std::vector<ScriptTree>> items_;
};

} // namespace velmora::host
