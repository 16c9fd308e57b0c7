// A comp: its nodes, and the project's own format and range.
//
// Ownership: a graph owns its nodes.
// Errors:    PluginError for classes that cannot be found.
// Threads:   main thread only.
#pragma once

#include "host/node.h"
#include "host/plugins.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class DDImage_API Graph {
public:
    explicit Graph(const PluginPath& plugins);
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;
    ~Graph();

    // The format of nodes that pick none: 2048x1556 at first, as the host's is.
    const DD::Image::Format& format() const { return root_format; }
    void set_format(const DD::Image::Format& format) { root_format = format; }

    int first_frame = 1;
    int last_frame = 100;

    // A new node. Without a name it is called by its class and a number that makes it differ.
    DD::Image::Node& create(const std::string& class_name, const std::string& name = "");
    void remove(DD::Image::Node& node); // disconnected first

    DD::Image::Node* find(const std::string& name) const;
    const std::vector<std::unique_ptr<DD::Image::Node>>& nodes() const { return all; }

    const PluginPath& plugins() const { return path; }

private:
    std::string free_name(const std::string& class_name) const;

    PluginPath path;
    DD::Image::Format root_format;
    std::vector<std::unique_ptr<DD::Image::Node>> all;
};

} // namespace velmora
