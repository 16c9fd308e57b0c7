// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/op_tree.h"

#include <algorithm>

namespace velmora::host {

using DD::Image::Hash;
using DD::Image::Op;
using DD::Image::OutputContext;

OpTree::OpTree(Node& root) : root(root) {}

OpTree::~OpTree() {
    close_all();
}

void OpTree::close_all() {
    for (auto& [node, entry] : pool)
        entry.op->close();
}

Op& OpTree::at(const OutputContext& context) {
    // Make every op available, and build the tree from the root.
    close_all();
    abort_switch = false;
    for (auto& [node, entry] : pool)
        entry.in_use = false;
    Op& op = *build(root, context).op;
    // Destroy those that were not needed.
    for (auto entry = pool.begin(); entry != pool.end();) {
        entry->second.is_new = false;
        entry = entry->second.in_use ? std::next(entry) : pool.erase(entry);
    }
    return op;
}

Op& OpTree::at(double frame) {
    OutputContext context;
    context.setFrame(frame);
    return at(context);
}

std::vector<Op*> OpTree::ops_of(const Node& node) const {
    std::vector<Op*> ops;
    const auto [first, last] = pool.equal_range(&node);
    for (auto entry = first; entry != last; ++entry)
        ops.push_back(entry->second.op.get());
    std::sort(ops.begin(), ops.end(),
              [](const Op* a, const Op* b) { return a->outputContext() < b->outputContext(); });
    return ops;
}

// The op of that context, else one that is not in use yet, else a new one.
OpTree::Entry& OpTree::take(Node& node, const OutputContext& context) {
    const auto [first, last] = pool.equal_range(&node);
    Entry* spare = nullptr;
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second.op->outputContext() == context)
            return entry->second;
        if (!entry->second.in_use)
            spare = &entry->second;
    }
    if (spare)
        return *spare;
    return pool.emplace(&node, Entry{node.make_op(), false, true})->second;
}

OpTree::Entry& OpTree::build(Node& node, const OutputContext& context) {
    Entry& entry = take(node, context);
    Op& op = *entry.op;
    if (entry.in_use)
        return entry;
    // The context and the early knobs may decide the inputs.
    entry.in_use = true;
    op.set_abort_switch(&abort_switch);
    op.setOutputContext(context);
    node.store_early(op);
    // Class, inputs, knobs and the op's own additions make the hash.
    Hash hash;
    hash.append(op.Class());
    const bool has_new_input = wire(node, op, hash);
    node.store_all(op, hash);
    op.append(hash);
    op.set_hash(hash);
    // A new input may have the hash of the one it replaces, but has not been validated.
    if (has_new_input && op.valid())
        op.invalidate();
    entry.is_new = entry.is_new || has_new_input;
    return entry;
}

// Connects every copy of every input to the op of its own context, or to the class's default.
// Returns whether one of those ops is new.
bool OpTree::wire(Node& node, Op& op, Hash& hash) {
    op.inputs(node.inputs_of_ops());
    op.clear_inputs();
    bool is_new = false;
    int place = 0;
    for (int n = 0; n < op.inputs(); n++) {
        Node* const source = node.input(n);
        const int copies = op.split_input(n);
        for (int m = 0; m < copies; m++) {
            OutputContext scratch;
            Op* input = nullptr;
            if (source) {
                Entry& entry = build(*source, op.inputContext(n, m, scratch));
                input = entry.op.get();
                is_new = is_new || entry.is_new;
            }
            if (!input || !op.test_input(n, input))
                input = op.default_input(n);
            op.set_input(place++, input, n, m);
            hash.append(input ? input->hash() : Hash());
        }
    }
    return is_new;
}

} // namespace velmora::host
