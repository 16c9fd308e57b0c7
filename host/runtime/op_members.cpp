// SPDX-License-Identifier: BSD-3-Clause

// The members of the interface's classes that need the runtime: ops ask their node, descriptions
// what is loading their plug-in.
#include "host/runtime/node.h"

#include <DDImage/Iop.h>

namespace DD::Image {

void Op::Description::announced(DD::Image::Description* description) {
    description->plugin = velmora::host::plugin_being_loaded();
}

const char* Op::node_name() const {
    return node_ ? node_->name().c_str() : Class();
}

Knob* Op::knob(const char* name) const {
    return node_ ? node_->knob(name) : nullptr;
}

const Format* Op::input_format() const {
    return node_ ? &node_->project().format() : nullptr;
}

Op* Iop::default_input(int) const {
    return node() ? node()->project().black() : nullptr;
}

} // namespace DD::Image
