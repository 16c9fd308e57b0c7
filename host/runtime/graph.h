// SPDX-License-Identifier: BSD-3-Clause

// A comp: its nodes, and the project's format, frame range and rate.
//
// Ownership: a graph owns its nodes and its project.
// Errors:    PluginError for classes that cannot be found.
// Threads:   main thread only.
#pragma once

#include "host/runtime/node.h"
#include "host/runtime/plugins.h"
#include "host/runtime/project.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velmora::host {

class DDImage_API Graph {
public:
    // `plugins` is where the classes of nodes are found.
    explicit Graph(const PluginPath& plugins);
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;
    ~Graph();

    // The project's settings, with the host's defaults.
    const DD::Image::Format& format() const { return project.format(); }
    void set_format(const DD::Image::Format& format) { project.set_format(format); }

    int first_frame = 1;
    int last_frame = 100;
    double fps = 24;

    // A new node. Without a name it is named for its class, with a number that makes it unique. If
    // several are given the same name, find() returns the last.
    Node& create(const std::string& class_name, const std::string& name = "");
    void remove(Node& node); // after disconnecting it

    // Null if there is none.
    Node* find(const std::string& name) const;
    const std::vector<std::unique_ptr<Node>>& nodes() const { return all; }

    const PluginPath& plugins() const { return path; }

private:
    PluginPath path;
    Project project;
    std::vector<std::unique_ptr<Node>> all;
    std::map<std::string, Node*> by_name;
    std::map<std::string, int> last_numbers; // in names made here, by the stem before them

    std::string free_name(const std::string& class_name);
};

} // namespace velmora::host
