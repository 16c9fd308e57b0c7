// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/camera.h"

#include "host/runtime/op_tree.h"
#include "host/runtime/scanlines.h"
#include "host/script/transform.h"
#include "stars/host_camera.h"
#include "tests/scratch_folder.h"
#include "tools/comp/look_at.h"
#include "tools/comp/star_node.h"
#include "tools/comp/view.h"

#include <DDImage/CameraOp.h>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;
using DD::Image::CameraOp;

// A node of ours with the camera that the options ask for.
class Shot : public testing::Test {
protected:
    Graph graph{plugin_path()};
    Node& stars = create_star_node(graph);
    OpTree tree{stars};

    Shot() { graph.set_format(default_format); }

    View view_at(double frame) {
        DD::Image::Op& op = tree.at(frame);
        validate(op);
        return view_of(op, PluginDoors(stars.description()));
    }

    std::vector<const CameraOp*> cameras_at(double frame) {
        DD::Image::Op& op = tree.at(frame);
        validate(op);
        std::vector<const CameraOp*> cameras;
        for (int n = 0; n < op.split_input(star_camera_input); n++)
            cameras.push_back(dynamic_cast<const CameraOp*>(op.Op::input(star_camera_input, n)));
        return cameras;
    }
};

// The node samples at frame + n · shutter / segments + offset; a .chan file whose x is the frame
// shows the times.
TEST_F(Shot, SamplesTheFileAtTheTimesOfTheShutter) {
    const ScratchFolder folder;
    folder.write("shot.chan", "0 0 0 0 0 0 0\n100 100 0 0 0 0 0\n");
    CameraOptions options;
    options.chan_file = folder.file("shot.chan");
    stars.knob("blur_segs")->set_value(3);
    stars.knob("shutter")->set_value(0.75);
    stars.knob("shutter_offset")->set_value(-0.5);
    add_camera(graph, stars, options);

    const std::vector<const CameraOp*> cameras = cameras_at(10);
    ASSERT_EQ(cameras.size(), 4u);
    const float times[] = {9.5f, 9.75f, 10, 10.25f};
    for (std::size_t i = 0; i < 4; i++)
        EXPECT_EQ(cameras[i]->matrix().a03, times[i]);

    stars.knob("blur_segs")->set_value(0);
    EXPECT_EQ(cameras_at(10)[0]->matrix().a03, 10); // the offset takes no part
}

TEST_F(Shot, IsTheHostsDefaultCameraWhenNothingIsSaid) {
    add_camera(graph, stars, {});
    EXPECT_EQ(cameras_at(1).size(), 2u);
    const View view = view_at(1);
    EXPECT_EQ(view.first().focal, 50);
    EXPECT_EQ(view.first().near, double(0.1f));
    EXPECT_EQ(view.first().far, -1);
    EXPECT_EQ(view.data.left, -12.288);
    EXPECT_EQ(view.data.right, 12.288);
    EXPECT_EQ(view.data.bottom, -9.336);
    EXPECT_EQ(view.data.top, 9.336);
}

TEST_F(Shot, WithoutACameraHasTheWindowOfTheFormat) {
    CameraOptions options;
    options.connected = false;
    add_camera(graph, stars, options);
    const View view = view_at(1);
    EXPECT_EQ(view.data.left, -1920.0 / 1080.0);
    EXPECT_EQ(view.data.right, 1920.0 / 1080.0);
    EXPECT_EQ(view.data.bottom, -1);
    EXPECT_EQ(view.data.top, 1);
    EXPECT_EQ(view.first().focal, 3.200000047683716);
}

// The camera's matrix is the left factor: it moves what the knob has turned.
TEST_F(Shot, MultipliesTheTransformKnobOntoTheCamera) {
    CameraOptions options;
    options.rotate = {0, 90, 0}; // whose x then points along the world's -z
    options.translate = {1, 2, 3};
    stars.knob("translate")->set_value(5, 0); // five along its own x
    add_camera(graph, stars, options);
    const camera cam = view_at(1).first();

    // The camera's place in the host's world is (1, 2, 3 - 5); the renderer reverses z.
    const double place[4] = {1, 2, 2, 1};
    for (int column = 0; column < 3; column++) {
        double sum = 0;
        for (int row = 0; row < 4; row++)
            sum += place[row] * cam.matrix(row, column);
        EXPECT_NEAR(sum, 0, 1e-6) << column; // float matrices of numbers below 10
    }
}

TEST_F(Shot, LeavesTheViewToTheKnobWithoutACamera) {
    CameraOptions options;
    options.connected = false;
    options.look_at = {120, 30, 10};
    add_camera(graph, stars, options);
    Transform expected;
    expected.rotate = look_at_rotation(120, 30, 10);
    const HostMatrix matrix = expected.matrix();
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(stars.knob("transform")->get_value_at(1, i), double(matrix[std::size_t(i)]));
    EXPECT_EQ(stars.input(star_camera_input), nullptr);
}

TEST_F(Shot, LeavesTheKnobAloneWithACamera) {
    CameraOptions options;
    options.look_at = {120, 30};
    add_camera(graph, stars, options);
    EXPECT_FALSE(stars.knob("rotate")->not_default());
    EXPECT_TRUE(stars.input(star_camera_input)->knob("rotate")->not_default());
}
