// SPDX-License-Identifier: BSD-3-Clause

// A plug-in whose class is not named like its file.
#include <DDImage/Op.h>

using namespace DD::Image;

namespace {

class Hidden : public Op {
public:
    explicit Hidden(Node* node) : Op(node) {}
    const char* Class() const override { return "Hidden"; }
    const char* node_help() const override { return "Cannot be found by its name."; }
};

Op* make(Node* node) {
    return new Hidden(node);
}

const Op::Description description("Hidden", make);

} // namespace
