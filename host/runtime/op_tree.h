// SPDX-License-Identifier: BSD-3-Clause

// The ops of a node and of everything upstream of it, for one frame at a time.
//
// Within the tree a node has one op for each output context (frame and view) that is asked of it,
// shared by all that ask for the same. When the tree moves to another frame, it reuses its ops, so
// that they keep what they cache from frame to frame, and destroys those that are no longer needed.
//
// Ownership: the tree owns its ops and borrows the nodes, which must outlive it.
// Errors:    what the ops' constructors and the knobs throw; at() may be called again after that.
// Threads:   one at a time, but abort() from any.
#pragma once

#include "host/runtime/node.h"

#include <atomic>
#include <map>
#include <memory>
#include <vector>

namespace velmora::host {

class DDImage_API OpTree {
public:
    explicit OpTree(Node& root);
    OpTree(const OpTree&) = delete;
    OpTree& operator=(const OpTree&) = delete;
    ~OpTree();

    // Closes all ops, then returns the root's op: knobs stored, inputs connected, hash computed.
    DD::Image::Op& at(const DD::Image::OutputContext& context);
    DD::Image::Op& at(double frame);

    // The ops of a node in the tree, by ascending time.
    std::vector<DD::Image::Op*> ops_of(const Node& node) const;

    // Makes Op::aborted() true for all ops, until at() is called again.
    void abort() { abort_switch = true; }

private:
    struct Entry {
        std::unique_ptr<DD::Image::Op> op;
        bool in_use; // for the context that at() is building
        bool is_new; // made by this call of at(), or downstream of such an op
    };
    typedef std::multimap<const Node*, Entry> Pool;

    Node& root;
    std::atomic<bool> abort_switch{false};
    Pool pool;

    Entry& build(Node& node, const DD::Image::OutputContext& context);
    Entry& take(Node& node, const DD::Image::OutputContext& context);
    bool wire(Node& node, DD::Image::Op& op, DD::Image::Hash& hash);
    void close_all();
};

} // namespace velmora::host
