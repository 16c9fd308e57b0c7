// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/comp.h"

#include "host/runtime/node.h"
#include "tests/scratch_folder.h"
#include "tests/tools/failure_in.h"
#include "tools/comp/knobs.h"
#include "tools/comp/star_node.h"
#include "tools/files/program_folder.h"

#include <gtest/gtest.h>

using namespace velmora;

static std::string text_of(const Node& node, const char* knob) {
    return knob_text(*node.knob(knob), 1);
}

static std::string failure_of(const CompOptions& options) {
    return failure_in([&] { make_comp(options); });
}

TEST(Comp, HasOneNodeWithItsCameraAndTheDefaults) {
    const std::unique_ptr<Comp> comp = make_comp({});
    ASSERT_EQ(comp->stars.size(), 1u);
    const Node& node = *comp->stars[0];
    EXPECT_EQ(text_of(node, "format"), "1920x1080");
    EXPECT_EQ(text_of(node, "starfile"), default_star_file());
    ASSERT_NE(node.input(star_camera_input), nullptr);
    EXPECT_EQ(node.input(star_camera_input)->class_name(), std::string("Camera2"));
    EXPECT_EQ(comp->inputs, std::vector<std::string>{default_star_file()});
    EXPECT_EQ(comp->notes, std::vector<std::string>());
}

TEST(Comp, TakesWhatTheOptionsSay) {
    const ScratchFolder folder;
    CompOptions options;
    options.format = "64x36";
    options.star_file = "sky.velmora";
    options.knobs = {"star_size=4", "projection=Hemispherical"};
    options.camera.chan_file = folder.write("shot.chan", "1 0 0 0 0 0 0\n");
    const std::unique_ptr<Comp> comp = make_comp(options);
    const Node& node = *comp->stars[0];
    EXPECT_EQ(text_of(node, "format"), "64x36");
    EXPECT_EQ(text_of(node, "starfile"), "sky.velmora");
    EXPECT_EQ(text_of(node, "star_size"), "4");
    EXPECT_EQ(text_of(node, "projection"), "Hemispherical");
    EXPECT_EQ(comp->inputs, (std::vector<std::string>{folder.file("shot.chan"), "sky.velmora"}));
}

TEST(Comp, LeavesTheDatabaseThatAKnobNames) {
    CompOptions options;
    options.knobs = {"starfile="};
    EXPECT_EQ(text_of(*make_comp(options)->stars[0], "starfile"), "");
}

TEST(Comp, TakesTheNodesOfAScript) {
    const ScratchFolder folder;
    CompOptions options;
    options.script = folder.write("shot.nk", "VelmoraNK {\n inputs 0\n name One\n}\n"
                                             "Blur {\n inputs 0\n}\n"
                                             "VelmoraNK {\n inputs 0\n name Off\n disable true\n}\n"
                                             "VelmoraNK {\n inputs 0\n name Two\n}\n");
    options.knobs = {"star_size=4"};
    std::unique_ptr<Comp> comp = make_comp(options);
    ASSERT_EQ(comp->stars.size(), 2u);
    EXPECT_EQ(comp->stars[0]->name(), "One");
    EXPECT_EQ(comp->stars[1]->name(), "Two");
    for (const Node* const node : comp->stars)
        EXPECT_EQ(text_of(*node, "star_size"), "4");
    EXPECT_EQ(comp->inputs, (std::vector<std::string>{options.script, "", ""}));
    EXPECT_EQ(comp->notes, (std::vector<std::string>{
                               "note: " + options.script + ": skipped nodes of other classes: Blur",
                               "note: " + options.script + ": not rendered, being disabled: Off"}));

    options.node = "Two";
    comp = make_comp(options);
    ASSERT_EQ(comp->stars.size(), 1u);
    EXPECT_EQ(comp->stars[0]->name(), "Two");
    options.node = "Off";
    EXPECT_EQ(failure_of(options), "usage: --node Off: is disabled in " + options.script);
    options.node = "Three";
    EXPECT_EQ(failure_of(options),
              "usage: --node Three: " + options.script + " has no such node of class VelmoraNK");
}

TEST(Comp, RefusesOptionsThatContradictEachOther) {
    CompOptions options;
    options.knobs = {"star_size"};
    EXPECT_EQ(failure_of(options), "usage: --knob star_size: takes NAME=VALUE");
    options.knobs = {"bias=1", "bias=2"};
    EXPECT_EQ(failure_of(options), "usage: --knob bias=2: the knob is given twice");
    options.knobs = {"starfile=a"};
    options.star_file = "b";
    EXPECT_EQ(failure_of(options), "usage: --star-file: says the same as --knob starfile");
    options.star_file.clear();
    options.knobs = {"format=8x8"};
    options.format = "8x8";
    EXPECT_EQ(failure_of(options), "usage: --format: says the same as --knob format");

    CompOptions other;
    other.node = "One";
    EXPECT_EQ(failure_of(other), "usage: --node: is for scripts");
}

TEST(Comp, RefusesAScriptWithoutANode) {
    const ScratchFolder folder;
    CompOptions options;
    options.script = folder.write("empty.nk", "Blur {\n inputs 0\n}\n");
    EXPECT_EQ(failure_of(options),
              "work: " + options.script + ": has no node of class VelmoraNK to render");
    options.script = folder.file("gone.nk");
    EXPECT_EQ(failure_of(options), "work: " + options.script + ": No such file or directory");
    options.camera.focal = 35;
    EXPECT_EQ(failure_of(options),
              "usage: arguments: the camera is what the script says: options such as --camera, "
              "--focal or --look-at are for renders without");
}
