// A saved comp script: its project settings, and its nodes with their knobs and what is wired to
// them.
//
//     Camera2 { ... }        a node takes its inputs from a stack, input 0 from the top, and puts
//     set N1 [stack 0]       itself there in their place; `inputs` says how many, 1 if it is not
//     push $N1               there. Groups have stacks of their own, up to their end_group.
//
// Shapes:    what only passes on a picture is looked through and is no node here: dots, groups, and
//            the Inputs and Outputs in them. A group that is off passes on its input 0. One whose
//            `disable` is an expression, or that is on and has not just one Output, cannot be
//            looked through: it is a node of class Group. What the clipboard holds is a script too.
// Errors:    ScriptError, at the first slip.
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
    std::string name; // with its groups: "Group1.Camera1"; empty for a node without name
    ScriptPlace place;

    // As they stand, without `inputs` and `name`; user knobs' addUserKnob lines among them.
    std::vector<ScriptKnob> knobs;

    // Input 0 first: places in Script::nodes, or -1 for nothing. They stand before this node.
    std::vector<int> inputs;

    // For a clone, the node that it is a clone of, which is none itself: its knobs are that node's
    // but for those that only place and paint the node in the graph.
    int clone_of = -1;
};

struct Script {
    std::string name; // the file's, for messages
    std::string version;
    std::vector<ScriptKnob> root; // without `inputs`
    std::vector<ScriptNode> nodes;

    // `name` stands for the file in messages.
    static Script parse(const std::string& text, const std::string& name);
};

// Places do not matter.
bool operator==(const ScriptKnob& a, const ScriptKnob& b);
bool operator==(const ScriptNode& a, const ScriptNode& b);
bool operator==(const Script& a, const Script& b);

// The last knob of that name, which is the one that counts; null if there is none.
const ScriptKnob* find_knob(const std::vector<ScriptKnob>& knobs, const std::string& name);

// Whether a knob only places and paints its node in the graph, so that a clone may have its own.
bool is_graph_knob(const std::string& name);

// The knobs of a clone of a node with the knobs `original`, which states `own` itself.
std::vector<ScriptKnob> knobs_of_clone(std::vector<ScriptKnob> original,
                                       const std::vector<ScriptKnob>& own);

// Whether the class only passes on a picture, so that a script's nodes have none of it. A group may
// stay.
bool is_looked_through(const std::string& class_name);

} // namespace velmora::host
