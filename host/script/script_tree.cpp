// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_tree.h"

namespace velmora::host {

const std::vector<ScriptTree>& ScriptTree::items() const {
    if (!items_) {
        std::vector<ScriptTree> split;
        for (const ScriptValue& item : list_items(value_, script_))
            split.emplace_back(item, script_);
        items_ = std::move(split);
    }
    return *items_;
}

bool ScriptTree::is_curve() const {
    return is_list() && !items().empty() && items()[0].value().text == "curve";
}

} // namespace velmora::host
