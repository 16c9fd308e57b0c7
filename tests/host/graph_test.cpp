// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/graph.h"

#include "tests/host/comp.h"

using namespace velmora;
using namespace velmora::host;
using DD::Image::Format;

TEST(Graph, HasTheHostsFormatAndRangeAtFirst) {
    const Graph graph{PluginPath()};
    EXPECT_EQ(graph.format(), Format(2048, 1556));
    EXPECT_EQ(graph.first_frame, 1);
    EXPECT_EQ(graph.last_frame, 100);
    EXPECT_EQ(graph.fps, 24);
    EXPECT_TRUE(graph.nodes().empty());
}

TEST(Graph, CallsNodesByTheirClassAndANumber) {
    Graph graph(test_plugins());
    EXPECT_EQ(graph.create("Camera2").name(), "Camera1");
    EXPECT_EQ(graph.create("Camera3").name(), "Camera2"); // without the digits of the class
    EXPECT_EQ(graph.create("Ramp").name(), "Ramp1");
    EXPECT_EQ(graph.create("Ramp", "Ramp2").name(), "Ramp2");
    EXPECT_EQ(graph.create("Ramp").name(), "Ramp3");
    EXPECT_EQ(graph.nodes().size(), 5u);
}

TEST(Graph, FindsNodesByName) {
    Graph graph(test_plugins());
    Node& node = graph.create("Ramp", "sky");
    EXPECT_EQ(graph.find("sky"), &node);
    EXPECT_EQ(graph.find("Ramp1"), nullptr);
    EXPECT_STREQ(node.class_name(), "Ramp");
    EXPECT_EQ(&node.description(), &graph.plugins().find("Ramp"));
}

TEST(Graph, HasNoNodesOfClassesThatCannotBeFound) {
    Graph graph{PluginPath()};
    EXPECT_EQ(error_of([&] { graph.create("Nothing"); }),
              "Nothing: there is no such plug-in in an empty plug-in path");
    EXPECT_TRUE(graph.nodes().empty());
}

TEST(Graph, DisconnectsANodeBeforeItGoes) {
    Graph graph(test_plugins());
    Node& first = graph.create("Raise");
    Node& second = graph.create("Raise");
    Node& ramp = graph.create("Ramp");
    ASSERT_TRUE(first.set_input(0, &ramp));
    ASSERT_TRUE(second.set_input(0, &first));
    ASSERT_TRUE(second.set_input(1, &ramp));
    graph.remove(ramp);
    EXPECT_EQ(graph.nodes().size(), 2u);
    EXPECT_EQ(first.input(0), nullptr);
    EXPECT_EQ(second.input(0), &first);
    EXPECT_EQ(second.input(1), nullptr);
    EXPECT_EQ(graph.find("Ramp1"), nullptr);
}

TEST(Graph, GivesItsFormatToNodesThatHaveNothingConnected) {
    Graph graph(test_plugins());
    Node& node = graph.create("BareRaise");
    OpTree tree(node);
    for (const Format& format : {Format(2048, 1556), Format(640, 480), Format(10, 20)}) {
        graph.set_format(format);
        DD::Image::Op& op = tree.at(1);
        validate(op);
        EXPECT_EQ(op.iop()->format(), format);
        EXPECT_EQ(op.iop()->full_size_format(), format);
    }
}

TEST(Graph, GivesItsFormatToNodesThatPickNone) {
    Graph graph(test_plugins());
    Node& node = graph.create("Ramp");
    OpTree tree(node);
    const auto format = [&]() -> const Format& {
        DD::Image::Op& op = tree.at(1);
        validate(op);
        return op.iop()->format();
    };
    const Format& before = format();
    EXPECT_EQ(before, Format(2048, 1556));
    graph.set_format(Format(640, 480, 2));
    EXPECT_EQ(format(), Format(640, 480, 2));
    EXPECT_EQ(before, Format(2048, 1556)); // returned formats never change
    EXPECT_EQ(&node.script_format(), &graph.format());
    EXPECT_EQ(tree.at(1).input_format(), &graph.format());
    ASSERT_TRUE(node.knob("format")->from_script("\"100 50\""));
    EXPECT_EQ(format(), Format(100, 50));
}
