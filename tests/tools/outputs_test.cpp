// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/outputs.h"

#include "host/runtime/graph.h"
#include "tests/scratch_folder.h"
#include "tests/tools/failure_in.h"
#include "tools/comp/star_node.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace velmora;

static OutputOptions named(const std::vector<std::string>& pictures, const std::string& raw = "") {
    OutputOptions options;
    options.pictures = pictures;
    options.raw = raw;
    return options;
}

static std::string failure_of(const OutputOptions& options, const std::vector<int>& frames = {1},
                              const std::vector<std::string>& inputs = {}) {
    return failure_in([&] {
        OutputPlaces taken;
        Outputs(options, frames, inputs, taken);
    });
}

TEST(Outputs, WritesEachKindForEachFrame) {
    const ScratchFolder folder;
    host::Graph graph(plugin_path());
    OutputOptions options =
        named({folder.file("a.##.png"), folder.file("a.%d.exr")}, folder.file("{node}.#.raw"));
    options = outputs_of_node(options, "Stars", false);
    RenderedFrame drawn = {
        create_star_node(graph), 7, {{}, {}, 2, 1}, {0, 1, 2, 3, 0, 4, 5, 6}, {}};
    drawn.view.cameras.append({DblMatrix4::the_identity(), 50, 0.1, -1});
    drawn.view.data.right = drawn.view.data.top = 1;
    OutputPlaces taken;
    const Outputs outputs(options, {7, 8}, {}, taken);
    outputs.write(drawn, 7);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"Stars.0007.raw", "a.07.png", "a.7.exr"}));

    const float floats[] = {0, 1, 2, 3, 0, 4, 5, 6};
    EXPECT_EQ(folder.read("Stars.0007.raw"),
              std::string(reinterpret_cast<const char*>(floats), sizeof floats));
    EXPECT_EQ(folder.read("a.07.png").substr(1, 3), "PNG");
    EXPECT_EQ(folder.read("a.7.exr").substr(0, 4), "\x76\x2f\x31\x01");
    EXPECT_EQ(taken.size(), 6u);
}

TEST(Outputs, PutsTheNodesNameWhereANameAsksForIt) {
    const OutputOptions options =
        outputs_of_node(named({"{node}/{node}.exr"}, "{node}.raw"), "A.B", true);
    EXPECT_EQ(options.pictures, std::vector<std::string>{"A.B/A.B.exr"});
    EXPECT_EQ(options.raw, "A.B.raw");
    EXPECT_EQ(outputs_of_node(named({"x.exr"}), "A", false).pictures,
              std::vector<std::string>{"x.exr"});
}

TEST(Outputs, NeedsTheNodesNameForSeveralNodes) {
    EXPECT_EQ(failure_in([] { outputs_of_node(named({"x.exr"}), "A", true); }),
              "usage: output 'x.exr': has no {node}, and several nodes would overwrite each other: "
              "--node renders one of them");
    for (const char* node : {"a/b", "a#", "a%"})
        EXPECT_EQ(failure_in([&] { outputs_of_node(named({"{node}.exr"}), node, false); }),
                  "usage: output '{node}.exr': the name of the node '" + std::string(node) +
                      "' cannot be part of a file's");
}

TEST(Outputs, RefusesNamesThatDoNotServe) {
    EXPECT_EQ(failure_of(named({})),
              "usage: arguments: no output is named: give -o NAME.exr or NAME.png");
    EXPECT_EQ(failure_of(named({"x.jpg"})), "usage: output 'x.jpg': must end in .exr or .png");
    EXPECT_EQ(failure_of(named({"x.exr"}), {1, 2}),
              "usage: output 'x.exr': has no frame number (#### or %04d), and 2 frames would "
              "overwrite each other");
    OutputOptions half = named({"x.png"});
    half.half = true;
    EXPECT_EQ(failure_of(half), "usage: --half: is for EXR, and no .exr output is named");
    OutputOptions exposure = named({"x.exr"});
    exposure.exposure = 1;
    EXPECT_EQ(failure_of(exposure), "usage: --exposure: is for PNG, and no .png output is named");
}

TEST(Outputs, KeepsPlacesApart) {
    const ScratchFolder folder;
    const std::string name = folder.file("x.exr");
    EXPECT_EQ(failure_of(named({name}, name)), "usage: output '" + name + "': is named twice");
    EXPECT_EQ(failure_of(named({name}, name + ".inprogress")),
              "usage: output '" + name + "': is written to " + name +
                  ".inprogress first, which is another output");
    folder.write("x.exr", "");
    EXPECT_EQ(failure_of(named({name}), {1}, {name}),
              "usage: " + name + ": is read by the same command, and would be overwritten");

    OutputPlaces taken;
    Outputs first(named({folder.file("y.png")}), {1}, {}, taken);
    EXPECT_EQ(failure_in([&] { Outputs(named({folder.file("y.png")}), {1}, {}, taken); }),
              "usage: output '" + folder.file("y.png") + "': is named twice");
}
