// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/graph.h"

#include <algorithm>

namespace velmora::host {

Graph::Graph(const PluginPath& plugins) : path(plugins) {}

Graph::~Graph() {}

// Nodes of class Camera2 are named Camera1, Camera2, …: without the digits of the class.
std::string Graph::free_name(const std::string& class_name) {
    const std::string stem = class_name.substr(0, class_name.find_last_not_of("0123456789") + 1);
    int& number = last_numbers[stem];
    do
        number++;
    while (find(stem + std::to_string(number)));
    return stem + std::to_string(number);
}

Node& Graph::create(const std::string& class_name, const std::string& name) {
    const std::string called = name.empty() ? free_name(class_name) : name;
    all.push_back(std::make_unique<Node>(path.find(class_name), called, project));
    by_name[called] = all.back().get();
    return *all.back();
}

void Graph::remove(Node& node) {
    // Disconnect it.
    for (const std::unique_ptr<Node>& other : all)
        for (int n = 0; n < other->inputs(); n++)
            if (other->input(n) == &node)
                other->set_input(n, nullptr);
    // Forget the name, unless a later node has it, and the node.
    if (find(node.name()) == &node)
        by_name.erase(node.name());
    all.erase(
        std::remove_if(all.begin(), all.end(),
                       [&](const std::unique_ptr<Node>& kept) { return kept.get() == &node; }),
        all.end());
}

Node* Graph::find(const std::string& name) const {
    const auto found = by_name.find(name);
    return found == by_name.end() ? nullptr : found->second;
}

} // namespace velmora::host
