// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/node.h"

#include "host/knobs/make_knob.h"
#include "host/runtime/checks.h"

#include <algorithm>
#include <set>

using DD::Image::Hash;
using DD::Image::Knob;
using DD::Image::Knob_Closure;
using DD::Image::KnobSpec;
using DD::Image::Op;

namespace velmora::host {

// The first pass over an op's knobs: makes them, with the op's own values.
class KnobMaker : public Knob_Closure {
public:
    explicit KnobMaker(Node& node) : node(node) {}

    bool makeKnobs() const override { return true; }
    int getKnobCount() const override { return int(node.declared.size()); }
    Knob* made_last() override { return node.declared.empty() ? nullptr : node.declared.back(); }

    Knob* declare(const KnobSpec& spec) override {
        for (std::unique_ptr<HostKnob>& knob : make_knobs(spec, node.project())) {
            if (knob->declared())
                node.declared.push_back(knob.get());
            node.knobs_.push_back(std::move(knob));
        }
        return made_last();
    }

private:
    Node& node;
};

// Every later pass: stores the knobs' values into the op.
class KnobStorer : public Knob_Closure {
public:
    KnobStorer(const Node& node, Op& op, bool early, Hash& hash)
        : node(node), op(op), early(early), hash(hash) {}

    bool makeKnobs() const override { return false; }
    int getKnobCount() const override { return int(next); }
    Knob* made_last() override { return nullptr; }

    Knob* declare(const KnobSpec& spec) override {
        // Early passes skip the others; some values do not count for the hash.
        HostKnob& knob = declared(spec);
        if (early && !knob.flag(Knob::EARLY_STORE))
            return &knob;
        Hash ignored;
        Hash& counted = knob.flag(Knob::NO_RERENDER) ? ignored : hash;
        knob.store_into(op, spec.store, spec.data, counted);
        return &knob;
    }

private:
    const Node& node;
    Op& op;
    bool early;
    Hash& hash;
    std::size_t next = 0;

    // The knob made by this declaration. They must come in the same order each time: another knob's
    // value would be written through the pointer otherwise.
    HostKnob& declared(const KnobSpec& spec) {
        const std::string name = spec.name ? spec.name : "";
        if (next == node.declared.size() || node.declared[next]->name() != name)
            throw PluginMisuse(op, "knob '" + name +
                                       "' is declared where it was not when the knobs were made");
        HostKnob& knob = *node.declared[next++];
        if (!knob.is_declared_as(spec))
            throw PluginMisuse(op, "knob '" + name +
                                       "' is declared as another kind than when it was made");
        return knob;
    }
};

} // namespace velmora::host

Node::Node(const Op::Description& description, const std::string& name,
           const velmora::host::Project& project)
    : description_(description), name_(name), project_(project) {
    // The prototype declares the knobs, and its values are their defaults.
    prototype_ = make_op();
    velmora::host::KnobMaker maker(*this);
    prototype_->knobs(maker);
}

Node::~Node() {}

std::unique_ptr<Op> Node::make_op() {
    Op* const op = description_.constructor(this);
    if (!op)
        throw velmora::host::PluginError(description_.name, "its plug-in made no op");
    return std::unique_ptr<Op>(op);
}

velmora::host::HostKnob* Node::knob(const std::string& name) const {
    for (const std::unique_ptr<velmora::host::HostKnob>& knob : knobs_)
        if (!name.empty() && knob->name() == name)
            return knob.get();
    return nullptr;
}

Node* Node::input(int n) const {
    return n >= 0 && std::size_t(n) < inputs_.size() ? inputs_[std::size_t(n)] : nullptr;
}

int Node::inputs_of_ops() const {
    // Unconnected inputs at the end do not count.
    int connected = int(inputs_.size());
    while (connected > 0 && !inputs_[std::size_t(connected) - 1])
        connected--;
    return std::max({prototype_->inputs(), prototype_->minimum_inputs(), connected});
}

bool Node::feeds(const Node* other) const {
    // Walk everything upstream of `other`; no recursion, chains may be long.
    std::vector<const Node*> waiting = {other};
    std::set<const Node*> seen;
    while (!waiting.empty()) {
        const Node* const node = waiting.back();
        waiting.pop_back();
        if (node == this)
            return true;
        if (node && seen.insert(node).second)
            waiting.insert(waiting.end(), node->inputs_.begin(), node->inputs_.end());
    }
    return false;
}

bool Node::set_input(int n, Node* node) {
    if (n < 0 || n >= inputs())
        return false;
    // Refuse cycles, and what the class does not accept.
    if (node && (feeds(node) || !prototype_->test_input(n, node->prototype_.get())))
        return false;
    if (std::size_t(n) >= inputs_.size())
        inputs_.resize(std::size_t(n) + 1);
    inputs_[std::size_t(n)] = node;
    return true;
}

void Node::store_early(Op& op) const {
    Hash ignored;
    velmora::host::KnobStorer storer(*this, op, true, ignored);
    op.knobs(storer);
}

void Node::store_all(Op& op, Hash& hash) const {
    velmora::host::KnobStorer storer(*this, op, false, hash);
    op.knobs(storer);
}
