// SPDX-License-Identifier: BSD-3-Clause

// What the host learns of the class as the plug-in is loaded.
#include "tests/node/comp.h"

using namespace node_test;
using DD::Image::Op;

TEST(NodeClass, AnnouncesItselfUnderItsName) {
    const Op::Description& description = plugin_path().find("VelmoraNK");
    EXPECT_STREQ(description.name, "VelmoraNK");
    EXPECT_STREQ(description.compiled, "Jun 10 2013 for 7.0v6");
    EXPECT_EQ(std::string(description.plugin),
              std::string(VELMORA_PLUGIN_FOLDER) + "/VelmoraNK.so");
}

TEST(NodeClass, SaysWhatItIs) {
    Comp comp;
    Op& op = comp.tree.at(1);
    EXPECT_STREQ(op.Class(), "VelmoraNK");
    EXPECT_EQ(std::string(op.node_help()),
              "Velmora: Renders realistic star fields.\n" + std::string(42, '-') + "\n");
}

TEST(NodeClass, ComesWrappedWithoutMixAndMask) {
    Comp comp;
    Op& op = comp.tree.at(1);
    EXPECT_NE(dynamic_cast<DD::Image::NukeWrapper*>(&op), nullptr);
    EXPECT_EQ(comp.stars.knob("mix"), nullptr);
    EXPECT_EQ(op.minimum_inputs(), 2);
    EXPECT_EQ(op.maximum_inputs(), 2);
    EXPECT_EQ(op.optional_input(), -1) << "a mask would be an optional input";
    EXPECT_EQ(op.inputs(), 2);
    EXPECT_EQ(inside(op).inputs(), 2);
}

TEST(NodeClass, StartsWithoutDatabaseCamerasAndPicture) {
    Comp comp;
    const VelmoraNK& node = inside(comp.stars.prototype());
    EXPECT_STREQ(node.starfile, "");
    EXPECT_EQ(node.starfile_loaded.str, nullptr);
    EXPECT_EQ(node.cameras.len(), 0u);
    EXPECT_EQ(node.image, nullptr);
    EXPECT_EQ(node.star_input, nullptr);
    EXPECT_EQ(node.projection_mode, 0);
    EXPECT_EQ(node.transform, DD::Image::Matrix4::identity());
    EXPECT_EQ(node.camera_matrix, DD::Image::Matrix4::identity());
    EXPECT_TRUE(node.formats.format()->is_none());
    EXPECT_TRUE(node.formats.fullSizeFormat()->is_none());
}
