#include "host/op_tree.h"

#include <algorithm>

namespace velmora {

using DD::Image::Hash;
using DD::Image::Node;
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
    close_all();
    abort_switch = false;
    for (auto& [node, entry] : pool)
        entry.in_use = false;
    Op& op = build(root, context);
    for (auto entry = pool.begin(); entry != pool.end();)
        entry = entry->second.in_use ? std::next(entry) : pool.erase(entry);
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

// The op of that moment; or else one that nobody has asked for yet; or else a new one.
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
    return pool.emplace(&node, Entry{node.make_op(), false})->second;
}

Op& OpTree::build(Node& node, const OutputContext& context) {
    Entry& entry = take(node, context);
    Op& op = *entry.op;
    if (entry.in_use)
        return op;
    entry.in_use = true;
    op.set_abort_switch(&abort_switch);
    op.setOutputContext(context);
    node.store_early(op);
    wire(node, op);

    Hash hash;
    hash.append(op.Class());
    for (int n = 0; n < op.inputs(); n++)
        for (int m = 0; m < op.split_input(n); m++)
            hash.append(op.input(n, m) ? op.input(n, m)->hash() : Hash());
    node.store_all(op, hash);
    op.append(hash);
    op.set_hash(hash);
    return op;
}

// Every copy of every input gets the op of its own moment, or the class's own idea of nothing.
void OpTree::wire(Node& node, Op& op) {
    int place = 0;
    for (int n = 0; n < op.inputs(); n++) {
        Node* const source = node.input(n);
        for (int m = 0; m < op.split_input(n); m++) {
            OutputContext scratch;
            Op* input = nullptr;
            if (source)
                input = &build(*source, op.inputContext(n, m, scratch));
            if (!input || !op.test_input(n, input))
                input = op.default_input(n);
            op.set_input(place++, input, n, m);
        }
    }
}

} // namespace velmora
