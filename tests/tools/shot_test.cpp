#include "tools/shot.h"

#include "stars/setup.h"

#include <gtest/gtest.h>

using namespace velmora;

// The node samples at frame + n · shutter / segments + offset; a .chan file whose x is the frame
// shows the times.
TEST(Shot, SamplesTheFileAtTheTimesOfTheShutter) {
    const std::string path = testing::TempDir() + "/shot_test.chan";
    FILE* file = fopen(path.c_str(), "w");
    ASSERT_TRUE(file);
    fputs("0 0 0 0 0 0 0\n100 100 0 0 0 0 0\n", file);
    fclose(file);

    KnobValues knobs;
    knobs.blur_segs = 3;
    knobs.shutter = 0.75;
    knobs.shutter_offset = -0.5;
    CameraOptions options;
    options.chan_file = path;
    const Shot shot(options, OP_STARS_PERSPECTIVE);
    remove(path.c_str());

    const Array<camera> cameras = shot.cameras(knobs, 10);
    ASSERT_EQ(cameras.len(), 4u);
    // World to camera moves by the opposite way.
    const double times[] = {9.5, 9.75, 10, 10.25};
    for (uword i = 0; i < 4; i++)
        EXPECT_EQ(cameras[i].matrix(3, 0), -times[i]);

    knobs.blur_segs = 0;
    EXPECT_EQ(shot.cameras(knobs, 10)[0].matrix(3, 0), -10); // the offset takes no part
}

TEST(Shot, IsTheHostsDefaultCameraWhenNothingIsSaid) {
    KnobValues knobs;
    const Shot shot(CameraOptions(), OP_STARS_PERSPECTIVE);
    const Array<camera> cameras = shot.cameras(knobs, 1);
    ASSERT_EQ(cameras.len(), 2u);
    EXPECT_EQ(cameras[0].focal, 50);
    EXPECT_EQ(cameras[0].near, double(0.1f));
    EXPECT_EQ(cameras[0].far, -1);
    StarRendererData data;
    shot.set_window(knobs, data);
    EXPECT_EQ(data.left, -12.288);
    EXPECT_EQ(data.right, 12.288);
    EXPECT_EQ(data.bottom, -9.336);
    EXPECT_EQ(data.top, 9.336);
}

TEST(Shot, WithoutACameraHasTheWindowOfTheFormat) {
    KnobValues knobs;
    knobs.format = {1920, 1080};
    CameraOptions options;
    options.connected = false;
    const Shot shot(options, OP_STARS_PERSPECTIVE);
    StarRendererData data;
    shot.set_window(knobs, data);
    EXPECT_EQ(data.left, -1920.0 / 1080.0);
    EXPECT_EQ(data.right, 1920.0 / 1080.0);
    EXPECT_EQ(data.bottom, -1);
    EXPECT_EQ(data.top, 1);
    EXPECT_EQ(shot.cameras(knobs, 1)[0].focal, 3.200000047683716);
}

// The camera stands left of the knob's transform in the product: it moves what the knob has turned.
TEST(Shot, MultipliesTheTransformKnobOntoTheCamera) {
    KnobValues knobs;
    knobs.blur_segs = 0;
    knobs.transform = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 0, 0, 1}; // five along its own x
    CameraOptions options;
    options.rotate = {0, 90, 0}; // whose x then points along the world's -z
    options.translate = {1, 2, 3};
    const Shot shot(options, OP_STARS_PERSPECTIVE);
    const camera cam = shot.cameras(knobs, 1)[0];

    // The camera's place in the host's world is (1, 2, 3 - 5); the renderer reverses z.
    const double place[4] = {1, 2, 2, 1};
    for (int column = 0; column < 3; column++) {
        double sum = 0;
        for (int row = 0; row < 4; row++)
            sum += place[row] * cam.matrix(row, column);
        EXPECT_NEAR(sum, 0, 1e-6) << column; // float matrices of numbers below 10
    }
}

TEST(Shot, LeavesTheViewToTheKnobWithoutACamera) {
    CameraOptions options;
    options.connected = false;
    options.look_at = {120, 30, 10};
    const Shot shot(options, OP_STARS_PERSPECTIVE);
    Transform expected;
    expected.rotate = look_at_rotation(120, 30, 10);
    EXPECT_EQ(shot.view_without_camera(), expected.matrix());

    options.look_at.clear();
    EXPECT_FALSE(Shot(options, OP_STARS_PERSPECTIVE).view_without_camera());
    options.connected = true;
    options.look_at = {120, 30};
    EXPECT_FALSE(Shot(options, OP_STARS_PERSPECTIVE).view_without_camera());
}
