// The ops of a node and of all that feeds it, for one moment at a time.
//
// Each moment that is asked of a node within the tree has an op of its own, and every op serves all
// who ask for that moment. Taken to another moment, the tree keeps the ops that it has and moves
// them there, so that what an op holds on to from frame to frame stays; ops that are left over go.
//
// Ownership: the tree owns its ops and borrows the nodes, which must outlive it.
// Errors:    whatever the ops' constructors and the knobs throw; the tree may be brought to a
//            moment again after that.
// Threads:   one at a time; the abort switch from any.
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

    // The root's op with its knobs stored, its inputs wired and its hash made, as they are now. An
    // op that is open is closed first.
    DD::Image::Op& at(const DD::Image::OutputContext& context);
    DD::Image::Op& at(double frame);

    // The ops of a node that the tree has at the moment, by growing time.
    std::vector<DD::Image::Op*> ops_of(const Node& node) const;

    // What Op::aborted() tells: raised by abort() until the tree is brought to a moment again.
    void abort() { abort_switch = true; }

private:
    struct Entry {
        std::unique_ptr<DD::Image::Op> op;
        bool in_use;
        bool anew; // since the tree was last brought to a moment, or fed by such a one
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
