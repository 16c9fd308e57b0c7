// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>

namespace velmora::host {

static const std::size_t deepest_group = 100;
static const int most_inputs = 1000;
static bool is_one_of(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_graph_knob(const std::string& name) {
    return is_one_of(name, {"name", "xpos", "ypos", "selected", "hide_input", "label", "icon",
                            "tile_color", "gl_color", "note_font", "note_font_size",
                            "note_font_color", "indicators", "autolabel", "postage_stamp",
                            "postage_stamp_frame", "dope_sheet", "bookmark", "cached"});
}

bool is_looked_through(const std::string& class_name) {
    return is_one_of(class_name, {"Dot", "Group", "Input", "Output"});
}

bool operator==(const ScriptKnob& a, const ScriptKnob& b) {
    return a.name == b.name && a.value == b.value;
}

bool operator==(const ScriptNode& a, const ScriptNode& b) {
    return a.class_name == b.class_name && a.name == b.name && a.knobs == b.knobs &&
           a.inputs == b.inputs && a.clone_of == b.clone_of;
}

bool operator==(const Script& a, const Script& b) {
    return a.name == b.name && a.version == b.version && a.root == b.root && a.nodes == b.nodes;
}

const ScriptKnob* find_knob(const std::vector<ScriptKnob>& knobs, const std::string& name) {
    const auto found = std::find_if(knobs.rbegin(), knobs.rend(),
                                    [&](const ScriptKnob& knob) { return knob.name == name; });
    return found == knobs.rend() ? nullptr : &*found;
}

std::vector<ScriptKnob> knobs_of_clone(std::vector<ScriptKnob> original,
                                       const std::vector<ScriptKnob>& own) {
    for (const ScriptKnob& knob : own) {
        const auto found = std::find_if(original.rbegin(), original.rend(),
                                        [&](const ScriptKnob& k) { return k.name == knob.name; });
        if (found == original.rend())
            original.push_back(knob);
        else
            *found = knob;
    }
    return original;
}

namespace {

// The contents of a node's block.
struct Body {
    std::vector<ScriptKnob> knobs; // without the two below, but with the root's `name`
    std::size_t inputs = 1;
    ScriptValue name; // empty if the node has none
};

// A node of any class while the script is built, also of those that are resolved.
struct Placed {
    std::string class_name;
    int group = -1;          // the group around it, in `placed`; -1 at the top level
    std::vector<int> inputs; // as in ScriptNode
    int node = -1;           // in Script::nodes; -1 if it is resolved
    int seen = -1;           // in Script::nodes: whose image it passes on; -1 for none
    std::size_t number = 0;  // of an Input
};

// An open group, or the script around all groups.
struct Scope {
    int group = -1;           // in `placed`
    ScriptNode as_node;       // the group, in case it cannot be resolved
    std::string prefix;       // of its nodes' names
    std::vector<int> stack;   // in `placed`; -1 for no node
    std::vector<int> outputs; // what its Outputs pass on
    std::map<std::string, ScriptPlace> names;
};

class ScriptBuilder {
public:
    explicit ScriptBuilder(Script& script) : script(script), scopes(1) {}

    void run(const ScriptCommand& command);
    void finish() const;

private:
    Script& script;
    std::vector<Placed> placed;
    std::vector<Scope> scopes;                      // the innermost last
    std::unordered_map<std::string, int> variables; // in `placed`; -1 for no node
    std::set<std::string> clone_names;

    Body read_body(const ScriptValue& block, bool is_root) const;
    std::size_t read_count(const ScriptValue& value) const;
    std::string full_name(const ScriptValue& own_name);
    std::vector<int> pop_inputs(std::size_t count);

    void set(const ScriptCommand& command);
    void push(const ScriptCommand& command);
    void clone(const ScriptCommand& command);
    void set_root(const ScriptCommand& command);
    void make_clone(ScriptNode& node, int original) const;
    std::size_t read_number(const std::vector<ScriptKnob>& knobs) const;
    int outside_of(const Placed& input) const;
    void place_node(const std::string& class_name, ScriptPlace place, const ScriptValue& block,
                    const Placed* original);
    void begin_group(ScriptNode&& node);
    void end_group(const ScriptCommand& command);
    void check_class(const ScriptValue& name) const;
    int variable(const ScriptValue& word) const;

    [[noreturn]] void fail(const ScriptValue& at, const std::string& why) const {
        throw ScriptError(script.name, at.place, why);
    }
};

} // namespace

static bool is_block(const ScriptValue& value) {
    return value.kind == ScriptValue::Kind::braced;
}

static bool is_word(const ScriptValue& value) {
    return value.kind == ScriptValue::Kind::word;
}

// The whole text as a decimal number of at most `largest`, or -1.
static int small_number(std::string_view text, int largest) {
    int number = -1;
    return parse_count(text, largest, number) ? number : -1;
}

// Commands by their names; anything else must be a node: a class and a block.
void ScriptBuilder::run(const ScriptCommand& command) {
    const ScriptValue& head = command[0];
    const std::string& what = head.text;
    if (is_word(head) && what == "version") {
        script.version.clear();
        for (std::size_t k = 1; k < command.size(); k++)
            script.version += (k > 1 ? " " : "") + command[k].text;
    } else if (is_word(head) && what == "set") {
        set(command);
    } else if (is_word(head) && what == "push") {
        push(command);
    } else if (is_word(head) && what == "clone") {
        clone(command);
    } else if (is_word(head) && what == "end_group") {
        end_group(command);
    } else if (!is_word(head) || command.size() != 2 || !is_block(command[1])) {
        fail(head, "the command " + in_quotes(head) + " is not known");
    } else if (what == "Root") {
        set_root(command);
    } else if (!is_one_of(what, {"define_window_layout_xml", "add_layer"})) {
        check_class(head);
        place_node(what, head.place, command[1], nullptr);
    }
}

void ScriptBuilder::finish() const {
    if (scopes.size() > 1)
        throw ScriptError(script.name, scopes.back().as_node.place, "the group is never ended");
}

// The node that the variable `$name` refers to, in `placed`; -1 for no node.
int ScriptBuilder::variable(const ScriptValue& word) const {
    const auto found = variables.find(word.text.substr(1));
    if (found == variables.end())
        fail(word, "the variable " + in_quotes(word.text.substr(1)) + " is not set");
    return found->second;
}

void ScriptBuilder::set(const ScriptCommand& command) {
    static const std::string_view start = "[stack ";
    const std::string value = command.size() == 3 && is_word(command[2]) ? command[2].text : "";
    const bool is_stack = value.size() > start.size() &&
                          value.compare(0, start.size(), start) == 0 && value.back() == ']';
    const int depth = !is_stack ? -1
                                : small_number(std::string_view(value).substr(
                                                   start.size(), value.size() - start.size() - 1),
                                               1 << 30);
    if (depth < 0 || is_block(command[1]))
        fail(command[0], "'set' takes a name and [stack N]");
    // A stack that is not so deep has no node there.
    const std::vector<int>& stack = scopes.back().stack;
    const auto below = static_cast<std::size_t>(depth);
    variables[command[1].text] = below < stack.size() ? stack[stack.size() - 1 - below] : -1;
}

void ScriptBuilder::push(const ScriptCommand& command) {
    // `push $N1`, or `push 0` for no node.
    const bool is_name = command.size() == 2 && is_word(command[1]) && command[1].text[0] == '$';
    if (!is_name && !(command.size() == 2 && is_word(command[1]) && command[1].text == "0"))
        fail(command[0], "'push' takes a variable or 0");
    const int node = is_name ? variable(command[1]) : -1;
    if (node >= 0 && placed[static_cast<std::size_t>(node)].group != scopes.back().group)
        fail(command[1], in_quotes(command[1]) + " refers to a node of another group");
    scopes.back().stack.push_back(node);
}

void ScriptBuilder::clone(const ScriptCommand& command) {
    // `clone $C1 {...}`, or for the first of several `clone name Class {...}`.
    const bool again = command.size() == 3 && is_word(command[1]) && command[1].text[0] == '$';
    const bool first = command.size() == 4 && is_word(command[1]) && is_word(command[2]);
    if ((!again && !first) || !is_block(command.back()))
        fail(command[0], "'clone' takes a variable or a new name and a class, and a {...}");
    if (first) {
        check_class(command[2]);
        // The name joins clones that are pasted one by one.
        if (!clone_names.insert(command[1].text).second)
            fail(command[1], "the clones " + in_quotes(command[1]) + " have begun already");
        place_node(command[2].text, command[0].place, command[3], nullptr);
        return;
    }
    // A copy of the original: placing a node may move it.
    const int node = variable(command[1]);
    if (node < 0)
        fail(command[1], in_quotes(command[1]) + " refers to no node");
    const Placed original = placed[static_cast<std::size_t>(node)];
    if (original.class_name == "Group")
        fail(command[1], "the clone of a group is not supported");
    place_node(original.class_name, command[0].place, command[2], &original);
}

void ScriptBuilder::set_root(const ScriptCommand& command) {
    const Body body = read_body(command[1], true);
    script.root.insert(script.root.end(), body.knobs.begin(), body.knobs.end());
}

// Classes are words of plain characters, other than the commands.
void ScriptBuilder::check_class(const ScriptValue& name) const {
    const bool is_plain = std::all_of(name.text.begin(), name.text.end(), [](char ch) {
        return (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') ||
               ch == '_' || ch == '.' || ch == '-';
    });
    if (!is_plain || is_one_of(name.text, {"Root", "version", "set", "push", "clone", "end_group",
                                           "define_window_layout_xml", "add_layer"}))
        fail(name, in_quotes(name) + " cannot be the class of a node");
}

// ---- the contents of a block --------------------------------------------------------------------

// N inputs, or N+M with M masks, which are popped from the stack like the others.
std::size_t ScriptBuilder::read_count(const ScriptValue& value) const {
    const std::string_view text = value.text;
    const std::size_t plus = std::min(text.find('+'), text.size());
    const int count = small_number(text.substr(0, plus), most_inputs);
    const int masks =
        plus == text.size() ? 0 : small_number(text.substr(plus + 1), most_inputs - count);
    if (is_block(value) || count < 0 || masks < 0)
        fail(value, in_quotes(value) + " is not a number of inputs");
    return static_cast<std::size_t>(count) + static_cast<std::size_t>(masks);
}

Body ScriptBuilder::read_body(const ScriptValue& block, bool is_root) const {
    const std::vector<ScriptValue> items = list_items(block, script.name);
    Body body;
    for (std::size_t k = 0; k < items.size(); k += 2) {
        // A name, and a value on the same line.
        const ScriptValue& knob = items[k];
        if (is_block(knob) || knob.text.empty())
            fail(knob, in_quotes(knob) + " cannot be the name of a knob");
        if (k + 1 == items.size() || items[k + 1].place.line != knob.place.line)
            fail(knob, "the knob " + in_quotes(knob) + " has no value");
        // Two of them are about the node itself.
        const ScriptValue& value = items[k + 1];
        if (knob.text == "inputs")
            body.inputs = read_count(value);
        else if (knob.text == "name" && !is_root)
            body.name = value;
        else
            body.knobs.push_back({knob.text, knob.place, value});
    }
    return body;
}

// The name with its groups; within a group names are unique.
std::string ScriptBuilder::full_name(const ScriptValue& own_name) {
    if (own_name.text.empty())
        return "";
    const auto is_odd = [](char ch) { return ch == '.' || (ch >= 0 && ch <= ' '); };
    if (is_block(own_name) || std::any_of(own_name.text.begin(), own_name.text.end(), is_odd))
        fail(own_name, in_quotes(own_name) + " cannot be the name of a node");
    const auto [other, is_new] = scopes.back().names.emplace(own_name.text, own_name.place);
    if (!is_new)
        fail(own_name, "the name " + in_quotes(own_name) + " is taken since line " +
                           std::to_string(other->second.line));
    return scopes.back().prefix + own_name.text;
}

// Pops nodes and returns what they pass on, the topmost first. Missing ones are -1.
std::vector<int> ScriptBuilder::pop_inputs(std::size_t count) {
    std::vector<int> inputs(count, -1);
    std::vector<int>& stack = scopes.back().stack;
    for (std::size_t k = 0; k < count && !stack.empty(); k++) {
        if (stack.back() >= 0)
            inputs[k] = placed[static_cast<std::size_t>(stack.back())].seen;
        stack.pop_back();
    }
    return inputs;
}

// What an Input passes on: the input of its group with the same number.
int ScriptBuilder::outside_of(const Placed& input) const {
    if (input.group < 0)
        return -1;
    const std::vector<int>& outside = placed[static_cast<std::size_t>(input.group)].inputs;
    return input.number < outside.size() ? outside[input.number] : -1;
}

// Which input of its group an Input is.
std::size_t ScriptBuilder::read_number(const std::vector<ScriptKnob>& knobs) const {
    const ScriptKnob* const number = find_knob(knobs, "number");
    const int which = number ? small_number(number->value.text, most_inputs) : 0;
    if (which < 0)
        fail(number->value, in_quotes(number->value) + " is not the number of an input");
    return static_cast<std::size_t>(which);
}

// ---- nodes and groups ---------------------------------------------------------------------------

// Gives a node the knobs of its original; `original` is -1 for one that is resolved.
void ScriptBuilder::make_clone(ScriptNode& node, int original) const {
    for (const ScriptKnob& knob : node.knobs)
        if (!is_graph_knob(knob.name))
            throw ScriptError(script.name, knob.place,
                              "a clone cannot have a " + in_quotes(knob.name) + " of its own");
    if (original < 0)
        return;
    const int before = script.nodes[static_cast<std::size_t>(original)].clone_of;
    node.clone_of = before >= 0 ? before : original;
    node.knobs =
        knobs_of_clone(script.nodes[static_cast<std::size_t>(node.clone_of)].knobs, node.knobs);
}

void ScriptBuilder::place_node(const std::string& class_name, ScriptPlace place,
                               const ScriptValue& block, const Placed* original) {
    // Read the block and pop the inputs.
    Body body = read_body(block, false);
    ScriptNode node;
    node.class_name = class_name;
    node.place = place;
    node.name = full_name(body.name);
    node.inputs = pop_inputs(body.inputs);
    node.knobs = std::move(body.knobs);
    if (original)
        make_clone(node, original->node);

    // Decide what it passes on: its input, its group's, or its own image. (A group: see end_group.)
    Placed one;
    one.class_name = class_name;
    one.group = scopes.back().group;
    one.inputs = node.inputs;
    if (class_name == "Dot" || class_name == "Output") {
        one.seen = node.inputs.empty() ? -1 : node.inputs[0];
    } else if (class_name == "Input") {
        one.number = original ? original->number : read_number(node.knobs);
        one.seen = outside_of(one);
    } else if (class_name != "Group") {
        one.node = one.seen = static_cast<int>(script.nodes.size());
    }
    // Push it, and keep it unless it is resolved.
    placed.push_back(one);
    scopes.back().stack.push_back(static_cast<int>(placed.size()) - 1);

    if (class_name == "Output")
        scopes.back().outputs.push_back(one.seen);
    if (class_name == "Group")
        begin_group(std::move(node));
    else if (one.node >= 0)
        script.nodes.push_back(std::move(node));
}

void ScriptBuilder::begin_group(ScriptNode&& node) {
    if (node.name.empty())
        throw ScriptError(script.name, node.place, "the group has no name");
    if (scopes.size() > deepest_group)
        throw ScriptError(script.name, node.place,
                          "groups are nested more than " + std::to_string(deepest_group) + " deep");
    Scope scope;
    scope.group = static_cast<int>(placed.size()) - 1;
    scope.prefix = node.name + ".";
    scope.as_node = std::move(node);
    scopes.push_back(std::move(scope));
}

void ScriptBuilder::end_group(const ScriptCommand& command) {
    if (scopes.size() == 1)
        fail(command[0], "there is no group to end");
    if (command.size() > 1)
        fail(command[1], "'end_group' takes nothing");
    // Close the scope; the group's node is in `placed` since its beginning.
    Scope scope = std::move(scopes.back());
    scopes.pop_back();
    Placed& group = placed[static_cast<std::size_t>(scope.group)];

    // Resolve it, or keep it as a node of class Group.
    const ScriptKnob* const disable = find_knob(scope.as_node.knobs, "disable");
    const bool is_on = !disable || is_one_of(disable->value.text, {"false", "0"});
    const bool is_off = disable && is_one_of(disable->value.text, {"true", "1"});
    if (is_off) {
        group.seen = group.inputs.empty() ? -1 : group.inputs[0];
    } else if (is_on && scope.outputs.size() == 1) {
        group.seen = scope.outputs[0];
    } else {
        group.node = group.seen = static_cast<int>(script.nodes.size());
        script.nodes.push_back(std::move(scope.as_node));
    }
}

Script Script::parse(const std::string& text, const std::string& name) {
    Script script;
    script.name = name;
    ScriptBuilder builder(script);
    for (const ScriptCommand& command : commands_of(text, name))
        builder.run(command);
    builder.finish();
    return script;
}

} // namespace velmora::host
