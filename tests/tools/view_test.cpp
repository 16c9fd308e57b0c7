// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/view.h"

#include "host/runtime/graph.h"
#include "host/runtime/op_tree.h"
#include "host/runtime/scanlines.h"
#include "tests/tools/failure_in.h"
#include "tools/comp/star_node.h"

#include <gtest/gtest.h>

using namespace velmora;
using velmora::host::Graph;
using velmora::host::OpTree;

// A node of ours with a camera.
class ViewOf : public testing::Test {
protected:
    Graph graph{plugin_path()};
    Node& stars = create_star_node(graph);
    Node& cam = graph.create("Camera2");
    OpTree tree{stars};

    ViewOf() {
        graph.set_format(DD::Image::Format(64, 36));
        stars.set_input(star_camera_input, &cam);
    }

    View view() {
        DD::Image::Op& op = tree.at(1);
        host::validate(op);
        return view_of(op, PluginDoors(stars.description()));
    }
};

TEST_F(ViewOf, IsWhatTheNodeHandsToTheRenderer) {
    stars.knob("star_size")->set_value(4);
    stars.knob("star_aspect")->set_value(2);
    stars.knob("parallax")->set_value(12.5);
    stars.knob("projection")->set_value(1);
    const View shown = view();
    EXPECT_EQ(shown.width, 64);
    EXPECT_EQ(shown.height, 36);
    EXPECT_EQ(shown.data.star_size, 4);
    EXPECT_EQ(shown.data.spot_width, 8);
    EXPECT_EQ(shown.data.parallax, 12.5);
    EXPECT_EQ(shown.data.projection, OP_STARS_HEMISPHERICAL);
    EXPECT_EQ(shown.data.right - shown.data.left, 24.576);
}

TEST_F(ViewOf, HasACameraForEachSample) {
    cam.knob("focal")->set_value(35);
    for (const int segments : {0, 1, 3}) {
        stars.knob("blur_segs")->set_value(segments);
        const View shown = view();
        ASSERT_EQ(shown.cameras.len(), uword(segments + 1));
        for (uword i = 0; i < shown.cameras.len(); i++)
            EXPECT_EQ(shown.cameras[i].focal, 35);
        EXPECT_EQ(&shown.first(), &shown.cameras[0]);
    }
}

TEST_F(ViewOf, KeepsItsValuesWhenTheNodeIsValidatedAgain) {
    const View before = view();
    cam.knob("focal")->set_value(80);
    EXPECT_EQ(view().first().focal, 80);
    EXPECT_EQ(before.first().focal, 50);
}

TEST_F(ViewOf, RefusesACameraBeyondSinglePrecision) {
    cam.knob("translate")->set_value(1e39, 0);
    EXPECT_EQ(failure_in([&] { check_cameras(tree.at(1)); }),
              "work: camera at frame 1: is placed too far away to be computed");
    cam.knob("translate")->set_value(1e38, 0);
    EXPECT_EQ(failure_in([&] { check_cameras(tree.at(1)); }), "(no failure)");
}
