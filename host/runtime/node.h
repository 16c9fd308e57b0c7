// SPDX-License-Identifier: BSD-3-Clause

// A node of a comp: a class of ops, the values of its knobs, and its inputs.
//
// Ownership: a node owns its knobs and one op, its prototype, which answers questions about the
//            class and never renders. It borrows its inputs and the project.
// Errors:    PluginMisuse for knobs that are not stored as they were declared.
// Threads:   main thread only.
#pragma once

#include "host/knobs/host_knob.h"
#include "host/runtime/plugins.h"
#include "host/runtime/project.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora::host {
class KnobMaker;
class KnobStorer;
} // namespace velmora::host

class DDImage_API Node {
public:
    // The project must outlive the node. Throws PluginError for a class that makes no op.
    Node(const DD::Image::Op::Description& description, const std::string& name,
         const velmora::host::Project& project);
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node();

    const std::string& name() const { return name_; }
    const char* class_name() const { return description_.name; }
    const DD::Image::Op::Description& description() const { return description_; }
    const velmora::host::Project& project() const { return project_; }
    const DD::Image::Format& script_format() const { return project_.format(); }
    DD::Image::Op& prototype() const { return *prototype_; }

    // In the order of the panel, the parts of an axis after it.
    const std::vector<std::unique_ptr<velmora::host::HostKnob>>& knobs() const { return knobs_; }

    // Null if there is none.
    velmora::host::HostKnob* knob(const std::string& name) const;

    int inputs() const { return prototype_->maximum_inputs(); }
    Node* input(int n) const;

    // How many inputs an op of this node has: as many as its class wants or are connected.
    int inputs_of_ops() const;

    // Connects input `n`; null disconnects it. Returns false and changes nothing if the class does
    // not accept the node there, or if the connection would close a cycle.
    bool set_input(int n, Node* node);

    // Stores the EARLY_STORE knobs, or all of them, into `op`, which must be of this node, as they
    // are at its context's time; store_all() adds them to `hash`.
    void store_early(DD::Image::Op& op) const;
    void store_all(DD::Image::Op& op, DD::Image::Hash& hash) const;

    // A new op of this node's class.
    std::unique_ptr<DD::Image::Op> make_op();

private:
    friend class velmora::host::KnobMaker;
    friend class velmora::host::KnobStorer;

    const DD::Image::Op::Description& description_;
    std::string name_;
    const velmora::host::Project& project_;
    std::unique_ptr<DD::Image::Op> prototype_;
    std::vector<std::unique_ptr<velmora::host::HostKnob>> knobs_;
    std::vector<velmora::host::HostKnob*> declared; // those that the op itself declares
    std::vector<Node*> inputs_;

    // Whether `other` is this node or depends on it.
    bool feeds(const Node* other) const;
};
