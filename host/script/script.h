// SPDX-License-Identifier: BSD-3-Clause

// A saved comp script: its project settings, and its nodes with their knobs and inputs.
//
//     Camera2 { ... }        a node pops its inputs from a stack, input 0 first, and pushes itself;
//     set N1 [stack 0]       the knob `inputs` gives their number, 1 by default. Each group has a
//     push $N1               stack of its own, up to its end_group.
//
// Shapes:    dots, groups, and the Inputs and Outputs in groups only pass an image on: they are
//            resolved into direct connections and are not among the nodes. A disabled group passes
//            on its input 0. A group whose `disable` is an expression, or that is enabled and does
//            not have exactly one Output, cannot be resolved: it is a node of class Group. The
//            clipboard's text is a script, too.
// Errors:    ScriptError, at the first error.
// Threads:   pure functions.
#pragma once

#include "host/script/script_text.h"

#include <string>
#include <vector>

namespace velmora::host {

struct ScriptKnob {
    std::string name;
    ScriptPlace place;
    ScriptValue value;
};

struct ScriptNode {
    std::string class_name;
    std::string name; // with its groups: "Group1.Camera1"; may be empty
    ScriptPlace place;

    // In the script's order, without `inputs` and `name`, with the addUserKnob lines.
    std::vector<ScriptKnob> knobs;

    // Input 0 first: indices into Script::nodes, below this node's own; -1 for no connection.
    std::vector<int> inputs;

    // Of a clone, the index of its original, which is not a clone itself; else -1. A clone has the
    // original's knobs, except for those that only affect the node graph's look.
    int clone_of = -1;
};

struct Script {
    std::string name; // the file's, for messages
    std::string version;
    std::vector<ScriptKnob> root; // without `inputs`
    std::vector<ScriptNode> nodes;

    // `name` is the file's name in messages.
    static Script parse(const std::string& text, const std::string& name);
};

// Places are not compared.
bool operator==(const ScriptKnob& a, const ScriptKnob& b);
bool operator==(const ScriptNode& a, const ScriptNode& b);
bool operator==(const Script& a, const Script& b);

// The last knob of that name, which overrides the others; null if there is none.
const ScriptKnob* find_knob(const std::vector<ScriptKnob>& knobs, const std::string& name);

// Whether a knob only affects how its node looks in the node graph: a clone may have its own.
bool is_graph_knob(const std::string& name);

// The knobs of a clone: those of `original`, replaced and extended by the clone's `own`.
std::vector<ScriptKnob> knobs_of_clone(std::vector<ScriptKnob> original,
                                       const std::vector<ScriptKnob>& own);

// Whether nodes of the class are resolved and not among a script's nodes; but see Group above.
bool is_looked_through(const std::string& class_name);

} // namespace velmora::host
