#include "host/graph.h"

#include <algorithm>

namespace velmora {

using DD::Image::Node;

Graph::Graph(const PluginPath& plugins) : path(plugins), root_format(2048, 1556) {}

Graph::~Graph() {}

// Camera2 gives Camera1, Camera2, … : a class's own digits are no part of its nodes' names.
std::string Graph::free_name(const std::string& class_name) const {
    const std::string stem = class_name.substr(0, class_name.find_last_not_of("0123456789") + 1);
    int number = 1;
    while (find(stem + std::to_string(number)))
        number++;
    return stem + std::to_string(number);
}

Node& Graph::create(const std::string& class_name, const std::string& name) {
    const std::string called = name.empty() ? free_name(class_name) : name;
    all.push_back(std::make_unique<Node>(path.find(class_name), called, root_format));
    return *all.back();
}

void Graph::remove(Node& node) {
    for (const std::unique_ptr<Node>& other : all)
        for (int n = 0; n < other->inputs(); n++)
            if (other->input(n) == &node)
                other->set_input(n, nullptr);
    all.erase(
        std::remove_if(all.begin(), all.end(),
                       [&](const std::unique_ptr<Node>& kept) { return kept.get() == &node; }),
        all.end());
}

Node* Graph::find(const std::string& name) const {
    for (const std::unique_ptr<Node>& node : all)
        if (node->name() == name)
            return node.get();
    return nullptr;
}

} // namespace velmora
