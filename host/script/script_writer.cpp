// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_writer.h"

#include <algorithm>
#include <stdexcept>

namespace velmora::host {

// Characters that need no quotes in a word.
static bool is_plain(char ch) {
    return (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') ||
           (ch != '\0' && std::string("_-+.,:/%=@*!?~^&|<>()'").find(ch) != std::string::npos);
}

static std::string quoted_value(const std::string& text) {
    std::string result = "\"";
    for (const char ch : text) {
        const auto byte = static_cast<unsigned char>(ch);
        if (ch == '\n')
            result += "\\n";
        else if (byte < 0x20 || byte == 0x7f) // as octal: \x could swallow a digit after it
            result +=
                {'\\', static_cast<char>('0' + (byte >> 6)),
                 static_cast<char>('0' + (byte >> 3 & 7)), static_cast<char>('0' + (byte & 7))};
        else if (std::string("\\\"{}[]$").find(ch) != std::string::npos)
            result += {'\\', ch};
        else
            result += ch;
    }
    return result + "\"";
}

static std::string text_of(const ScriptValue& value) {
    if (value.kind == ScriptValue::Kind::braced)
        return "{" + value.text + "}";
    const bool is_bare =
        !value.text.empty() && std::all_of(value.text.begin(), value.text.end(), is_plain);
    return is_bare ? value.text : quoted_value(value.text);
}

// The version without quotes, if it reads back the same: words separated by single blanks.
static std::string version_text(const std::string& version) {
    const bool is_bare = std::all_of(version.begin(), version.end(),
                                     [](char ch) { return ch == ' ' || is_plain(ch); }) &&
                         version.front() != ' ' && version.back() != ' ' &&
                         version.find("  ") == std::string::npos;
    return is_bare ? version : quoted_value(version);
}

static void write_knobs(std::string& text, const std::vector<ScriptKnob>& knobs) {
    for (const ScriptKnob& knob : knobs)
        text += " " + text_of(text_value(knob.name)) + " " + text_of(knob.value) + "\n";
}

// Whether the node's only input is the node before it, which is on top of the stack.
static bool follows(const Script& script, std::size_t k) {
    const std::vector<int>& inputs = script.nodes[k].inputs;
    return k > 0 && inputs.size() == 1 && inputs[0] == static_cast<int>(k) - 1;
}

// The knobs of a clone that differ from its original's, by position.
static std::vector<ScriptKnob> own_knobs(const ScriptNode& clone, const ScriptNode& original) {
    std::vector<ScriptKnob> own;
    for (std::size_t k = 0; k < clone.knobs.size(); k++)
        if (k >= original.knobs.size() || !(clone.knobs[k] == original.knobs[k]))
            own.push_back(clone.knobs[k]);
    return own;
}

// Nodes that later ones push or clone: they need a variable.
struct LaterUses {
    std::vector<bool> pushed, cloned;
};

static LaterUses later_uses(const Script& script) {
    const std::size_t count = script.nodes.size();
    LaterUses uses = {std::vector<bool>(count), std::vector<bool>(count)};
    for (std::size_t k = 0; k < count; k++) {
        const ScriptNode& node = script.nodes[k];
        // Inputs and originals come earlier: the text is read from top to bottom.
        for (const int input : node.inputs) {
            if (input < -1 || input >= static_cast<int>(k))
                throw std::invalid_argument("an input of the node " + in_quotes(node.name) +
                                            " does not come before it");
            if (input >= 0 && !follows(script, k))
                uses.pushed[static_cast<std::size_t>(input)] = true;
        }
        if (node.clone_of < -1 || node.clone_of >= static_cast<int>(k))
            throw std::invalid_argument("the original of the node " + in_quotes(node.name) +
                                        " does not come before it");
        if (node.clone_of >= 0)
            uses.cloned[static_cast<std::size_t>(node.clone_of)] = true;
    }
    return uses;
}

// Refuses what reading would resolve or rename.
static void check_node(const ScriptNode& node) {
    if (node.name.find('.') != std::string::npos)
        throw std::invalid_argument("the node " + in_quotes(node.name) + " is in a group");
    if (is_looked_through(node.class_name))
        throw std::invalid_argument("the node " + in_quotes(node.name) + " is of class " +
                                    node.class_name + ", which scripts are read without");
}

static void write_node(std::string& text, const Script& script, std::size_t k) {
    const ScriptNode& node = script.nodes[k];
    check_node(node);
    // Push the inputs, the last one first.
    if (!follows(script, k))
        for (auto input = node.inputs.rbegin(); input != node.inputs.rend(); ++input)
            text += *input < 0 ? "push 0\n" : "push $N" + std::to_string(*input) + "\n";

    // The block of its knobs.
    const bool is_clone = node.clone_of >= 0;
    text += is_clone ? "clone $C" + std::to_string(node.clone_of) : node.class_name;
    text += " {\n";
    if (node.inputs.size() != 1)
        text += " inputs " + std::to_string(node.inputs.size()) + "\n";
    if (!node.name.empty())
        text += " name " + text_of(text_value(node.name)) + "\n";
    write_knobs(text, is_clone
                          ? own_knobs(node, script.nodes[static_cast<std::size_t>(node.clone_of)])
                          : node.knobs);
    text += "}\n";
}

std::string write_script(const Script& script) {
    const LaterUses uses = later_uses(script);
    std::string text;
    if (!script.version.empty())
        text += "version " + version_text(script.version) + "\n";
    if (!script.root.empty()) {
        text += "Root {\n inputs 0\n";
        write_knobs(text, script.root);
        text += "}\n";
    }
    for (std::size_t k = 0; k < script.nodes.size(); k++) {
        write_node(text, script, k);
        if (uses.pushed[k])
            text += "set N" + std::to_string(k) + " [stack 0]\n";
        if (uses.cloned[k])
            text += "set C" + std::to_string(k) + " [stack 0]\n";
    }

    // Reading it back finds whatever cannot be written.
    try {
        if (Script::parse(text, script.name) == script)
            return text;
    } catch (const ScriptError& error) {
        throw std::invalid_argument("the script cannot be written: " + error.why);
    }
    throw std::invalid_argument("the script cannot be written: it would read otherwise");
}

ScriptValue text_value(const std::string& text) {
    return {ScriptValue::Kind::quoted, text, {}};
}

ScriptValue number_value(double number) {
    return {ScriptValue::Kind::word, number_text(number), {}};
}

ScriptValue list_value(const std::vector<ScriptValue>& items) {
    std::string text;
    for (const ScriptValue& item : items)
        text += (text.empty() ? "" : " ") + text_of(item);
    return {ScriptValue::Kind::braced, text, {}};
}

} // namespace velmora::host
