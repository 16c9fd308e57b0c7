// SPDX-License-Identifier: BSD-3-Clause

// From the camera input and the transform knob to the camera records and the film window.
#include "tests/node/comp.h"

#include <DDImage/CameraOp.h>

using namespace node_test;
using DD::Image::CameraOp;
using DD::Image::Op;

namespace {

// A camera that writes down how it is validated.
class WatchedCamera : public CameraOp {
public:
    static std::vector<std::pair<double, bool>> validated; // frame, for real

    explicit WatchedCamera(Node* node) : CameraOp(node) {}
    void _validate(bool for_real) override {
        validated.emplace_back(outputContext().frame(), for_real);
        CameraOp::_validate(for_real);
    }
};
std::vector<std::pair<double, bool>> WatchedCamera::validated;

// An op with a camera's knobs that is not a camera.
class Disguised : public DD::Image::AxisOp {
public:
    explicit Disguised(Node* node) : AxisOp(node), lens(nullptr) {}
    void knobs(DD::Image::Knob_Callback f) override { lens.knobs(f); }

private:
    CameraOp lens;
};

// A class whose ops are cameras or not by the order in which they are made.
class Changeling {
public:
    static std::vector<bool> is_camera;
    static std::size_t made;
    static void start(const std::vector<bool>& kinds) {
        is_camera = kinds;
        made = 0;
    }
    static Op* make(Node* node) {
        if (is_camera.at(made++))
            return new CameraOp(node);
        return new Disguised(node);
    }
};
std::vector<bool> Changeling::is_camera;
std::size_t Changeling::made;

Op* make_watched(Node* node) {
    return new WatchedCamera(node);
}

const Op::Description watched_class("WatchedCamera", make_watched);
const Op::Description changeling_class("Changeling", Changeling::make);

class NodeCamera : public testing::Test {
protected:
    Comp comp;

    void expect_window(const VelmoraNK& node, double half_width, double half_height) {
        EXPECT_EQ(node.render_data.left, -half_width);
        EXPECT_EQ(node.render_data.right, half_width);
        EXPECT_EQ(node.render_data.bottom, -half_height);
        EXPECT_EQ(node.render_data.top, half_height);
    }
};

const double focal_alone = 3.2000000476837158;

} // namespace

// ---- without a camera --------------------------------------------------------------------------

TEST_F(NodeCamera, IsADefaultOneWhenNoneIsConnected) {
    const VelmoraNK& node = inside(comp.validated());
    expect_window(node, 1.5, 1); // 24 by 16
    ASSERT_EQ(node.cameras.len(), 2u);
    for (uword n = 0; n < 2; n++) {
        EXPECT_EQ(node.cameras[n].focal, focal_alone);
        EXPECT_EQ(node.cameras[n].near, 0.10000000149011612);
        EXPECT_EQ(node.cameras[n].far, -1);
        for (int i = 0; i < 4; i++)
            for (int j = 0; j < 4; j++)
                EXPECT_EQ(node.cameras[n].matrix(i, j), i == j ? 1 : 0) << i << " " << j;
    }
}

TEST_F(NodeCamera, HasAWindowOfTheFormatsShapeWhenNoneIsConnected) {
    comp.graph.set_format(DD::Image::Format(7, 3));
    expect_window(inside(comp.validated()), 7.0 / 3.0, 1);
    comp.graph.set_format(DD::Image::Format(1000, 3000, 100, 100, 900, 200, 2));
    expect_window(inside(comp.validated()), 1000.0 / 3000.0, 1);
}

// The knob's matrix for column vectors, as the host keeps it by columns:
//
//     | 2 0 0 5 |    read in memory order it is its own transpose, for row vectors;
//     | 0 0 -1 6 |   with z reversed on both sides:
//     | 0 1 0 7 |
//     | 0 0 0 1 |        | 2 0  0 0 |    whose rows have the inverse  | .5   0  0 0 |
//                        | 0 0 -1 0 |                                 |  0   0  1 0 |
//                        | 0 1  0 0 |                                 |  0  -1  0 0 |
//                        | 5 6 -7 1 |                                 | -2.5 -7 -6 1 |
//
// All numbers are exact, the inverse's too.
TEST_F(NodeCamera, IsTheTransformAloneWhenNoneIsConnected) {
    comp.set("useMatrix", "true");
    comp.set("matrix", "{2 0 0 5} {0 0 -1 6} {0 1 0 7} {0 0 0 1}");
    const VelmoraNK& node = inside(comp.validated());
    const double expected[4][4] = {{.5, 0, 0, 0}, {0, 0, 1, 0}, {0, -1, 0, 0}, {-2.5, -7, -6, 1}};
    for (uword n = 0; n < node.cameras.len(); n++)
        for (int i = 0; i < 4; i++)
            for (int j = 0; j < 4; j++)
                EXPECT_EQ(node.cameras[n].matrix(i, j), expected[i][j]) << i << " " << j;
    EXPECT_EQ(node.camera_matrix, node.transform);
}

// All sixteen numbers count: m times its inverse is one. The numbers are below 20 and the
// determinant, -2799, is far from 0, so 1e-12 is a thousand roundings.
TEST_F(NodeCamera, ReversesZInRowsAndColumns) {
    comp.set("useMatrix", "true");
    comp.set("matrix", "{9 2 3 4} {5 -7 6 1} {2 3 8 5} {1 4 2 7}"); // by rows
    const double m[4][4] = {{9, 5, -2, 1}, {2, -7, -3, 4}, {-3, -6, 8, -2}, {4, 1, -5, 7}};
    const DblMatrix4& inverse = inside(comp.validated()).cameras[0].matrix;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++) {
            double sum = 0;
            for (int k = 0; k < 4; k++)
                sum += m[i][k] * inverse(k, j);
            EXPECT_NEAR(sum, i == j ? 1 : 0, 1e-12) << i << " " << j;
        }
}

TEST_F(NodeCamera, WarnsOfASingularMatrixAndGoesOn) {
    comp.set("blur_segs", "0");
    comp.set("scaling", "1 0 1");
    testing::internal::CaptureStderr();
    DD::Image::Op& op = comp.validated();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "warning: matrix appears to be singular; inverse may not be reliable in "
              "<Matrix4<real> Matrix4<real>::inverse() const [with real = double]>\n");
    EXPECT_FALSE(op.has_error());
    ASSERT_EQ(inside(op).cameras.len(), 1u);
    EXPECT_FALSE(std::isfinite(inside(op).cameras[0].matrix(1, 1)));
    EXPECT_EQ(inside(op).cameras[0].focal, focal_alone);
}

// ---- with a camera -----------------------------------------------------------------------------

TEST_F(NodeCamera, IsTheHostsDefaultOneWhenItIsConnected) {
    comp.connect_camera();
    const VelmoraNK& node = inside(comp.validated());
    ASSERT_EQ(node.cameras.len(), 2u);
    for (uword n = 0; n < 2; n++) {
        EXPECT_EQ(node.cameras[n].focal, 50);
        EXPECT_EQ(node.cameras[n].near, 0.10000000149011612) << "the camera's own is not asked";
        EXPECT_EQ(node.cameras[n].far, -1);
    }
    expect_window(node, 12.288, 9.336);
}

TEST_F(NodeCamera, HasTheLensOfTheInput) {
    Node& camera = comp.connect_camera();
    set(camera, "focal", "35.5");
    set(camera, "haperture", "36");
    set(camera, "vaperture", "-24");
    set(camera, "near", "7");
    set(camera, "far", "8");
    const VelmoraNK& node = inside(comp.validated());
    EXPECT_EQ(node.cameras[0].focal, 35.5);
    EXPECT_EQ(node.cameras[0].near, 0.10000000149011612);
    EXPECT_EQ(node.cameras[0].far, -1);
    expect_window(node, 18, -12);
}

// Turns of 90 degrees: about x y goes to z and z to -y, about y z to x and x to -z, about z x to y
// and y to -x. Where the axes and the origin of a space go to, a column each:
//
//     transform knob              camera                      parent axis
//     moved (0, 0, 4),            moved (1, 2, 3),            moved (10, 0, 0),
//     turned about x              twice as large, about y     turned about z
//     | 1 0  0 0 |                |  0 0 2 1 |                | 0 -1 0 10 |
//     | 0 0 -1 0 |                |  0 2 0 2 |                | 1  0 0  0 |
//     | 0 1  0 4 |                | -2 0 0 3 |                | 0  0 1  0 |
//
//     camera · transform          parent · camera · transform
//     |  0 2  0 9 |               |  0 0 2 8 |
//     |  0 0 -2 2 |               |  0 2 0 9 |
//     | -2 0  0 3 |               | -2 0 0 3 |
//
// The last one read for row vectors, with z reversed on both sides, and its inverse:
//
//     |  0 0  2 0 |               |   0    0 -.5 0 |
//     |  0 2  0 0 |               |   0   .5   0 0 |
//     | -2 0  0 0 |               |  .5    0   0 0 |
//     |  8 9 -3 1 |               | 1.5 -4.5   4 1 |
//
// Sines and cosines of 90 degrees and products of numbers below 16 in float: 1e-5.
TEST_F(NodeCamera, IsTheParentTimesTheCameraTimesTheTransformTurnedRound) {
    Node& camera = comp.connect_camera();
    Node& parent = comp.graph.create("Axis2");
    ASSERT_TRUE(camera.set_input(0, &parent));
    comp.set("translate", "0 0 4");
    comp.set("rotate", "90 0 0");
    set(camera, "translate", "1 2 3");
    set(camera, "rotate", "0 90 0");
    set(camera, "uniform_scale", "2");
    set(parent, "translate", "10 0 0");
    set(parent, "rotate", "0 0 90");

    const VelmoraNK& node = inside(comp.validated());
    const float to_world[16] = {0, 0, -2, 0, 0, 2, 0, 0, 2, 0, 0, 0, 8, 9, 3, 1};
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(node.camera_matrix.array()[i], to_world[i], 1e-5) << i;
    const double expected[4][4] = {{0, 0, -.5, 0}, {0, .5, 0, 0}, {.5, 0, 0, 0}, {1.5, -4.5, 4, 1}};
    ASSERT_EQ(node.cameras.len(), 2u);
    for (uword n = 0; n < 2; n++)
        for (int i = 0; i < 4; i++)
            for (int j = 0; j < 4; j++)
                EXPECT_NEAR(node.cameras[n].matrix(i, j), expected[i][j], 1e-5)
                    << n << ": " << i << " " << j;
}

// ---- samples over time -------------------------------------------------------------------------

// Four copies, at the times of the shutter, each with its own lens and place.
TEST_F(NodeCamera, IsSampledOverTheShutter) {
    Node& camera = comp.connect_camera();
    set(camera, "focal", "{curve L x0 0 x100 100}");
    set(camera, "translate", "{curve L x0 0 x100 100} 0 0");
    comp.set("blur_segs", "3");
    comp.set("shutter", "0.75");
    comp.set("shutter_offset", "-0.5");
    const VelmoraNK& node = inside(comp.validated(50));
    const double times[] = {49.5, 49.75, 50, 50.25};
    ASSERT_EQ(node.cameras.len(), 4u);
    for (uword n = 0; n < 4; n++) {
        // The host's straight line between two keys, a few roundings of numbers below 100.
        EXPECT_NEAR(node.cameras[n].focal, times[n], 1e-12) << n;
        EXPECT_NEAR(node.cameras[n].matrix(3, 0), -times[n], 1e-5) << n; // through a float
    }
    EXPECT_NEAR(node.camera_matrix.a03, 50.25f, 1e-5) << "the last sample's";
}

TEST_F(NodeCamera, IsSampledOnceAtTheFrameWithoutSegments) {
    set(comp.connect_camera(), "focal", "{curve L x0 0 x100 100}");
    comp.set("shutter", "2");
    comp.set("shutter_offset", "1");
    for (const char* const segments : {"0", "-4"}) {
        comp.set("blur_segs", segments);
        const VelmoraNK& node = inside(comp.validated(50));
        ASSERT_EQ(node.cameras.len(), 1u) << segments;
        EXPECT_NEAR(node.cameras[0].focal, 50, 1e-12) << segments;
    }
}

TEST_F(NodeCamera, IsValidatedAtEveryTimeInTheSameWayAsTheNode) {
    comp.connect_camera("WatchedCamera");
    comp.set("blur_segs", "2");
    comp.set("shutter", "1");
    typedef std::vector<std::pair<double, bool>> Log;
    for (const bool for_real : {false, true}) {
        WatchedCamera::validated.clear();
        Op& op = comp.tree.at(for_real ? 30 : 20);
        op.validate(for_real);
        const double frame = for_real ? 30 : 20;
        EXPECT_EQ(WatchedCamera::validated,
                  (Log{{frame, for_real}, {frame + 0.5, for_real}, {frame + 1, for_real}}));
    }
}

TEST_F(NodeCamera, IsRebuiltByEveryValidation) {
    Node& camera = comp.connect_camera();
    comp.set("blur_segs", "5");
    EXPECT_EQ(inside(comp.validated()).cameras.len(), 6u);
    comp.set("blur_segs", "2");
    EXPECT_EQ(inside(comp.validated()).cameras.len(), 3u);
    set(camera, "focal", "20");
    EXPECT_EQ(inside(comp.validated()).cameras[2].focal, 20);
    comp.stars.set_input(1, nullptr);
    const VelmoraNK& node = inside(comp.validated());
    EXPECT_EQ(node.cameras.len(), 3u);
    EXPECT_EQ(node.cameras[2].focal, focal_alone);
    expect_window(node, 1.5, 1);
}

// ---- film window -------------------------------------------------------------------------------

TEST_F(NodeCamera, HasTheWindowOfTheLastSample) {
    Node& camera = comp.connect_camera();
    set(camera, "haperture", "{curve K x1 20 x2 40}");
    set(camera, "vaperture", "{curve K x1 10 x2 30}");
    comp.set("shutter", "1");
    expect_window(inside(comp.validated(1)), 20, 15);
    comp.set("shutter_offset", "-1");
    comp.set("shutter", "0");
    expect_window(inside(comp.validated(2)), 10, 5);
}

// The host may have a camera for some moments and none for others.
TEST_F(NodeCamera, HasTheFormatsWindowWhenTheLastSampleHasNoCamera) {
    Changeling::start({true, true, true, false});
    comp.connect_camera("Changeling");
    comp.set("blur_segs", "2");
    comp.set("translate", "0 0 3");
    const VelmoraNK& node = inside(comp.validated());
    ASSERT_EQ(node.cameras.len(), 3u);
    EXPECT_EQ(node.cameras[0].focal, 50);
    EXPECT_EQ(node.cameras[1].focal, 50);
    EXPECT_EQ(node.cameras[2].focal, focal_alone);
    EXPECT_EQ(node.camera_matrix, node.transform);
    expect_window(node, 1.5, 1);
}

TEST_F(NodeCamera, HasTheCamerasWindowWhenOnlyTheLastSampleHasACamera) {
    Changeling::start({true, false, false, true});
    comp.connect_camera("Changeling");
    comp.set("blur_segs", "2");
    const VelmoraNK& node = inside(comp.validated());
    ASSERT_EQ(node.cameras.len(), 3u);
    EXPECT_EQ(node.cameras[0].focal, focal_alone);
    EXPECT_EQ(node.cameras[1].focal, focal_alone);
    EXPECT_EQ(node.cameras[2].focal, 50);
    expect_window(node, 12.288, 9.336);
}
