// SPDX-License-Identifier: BSD-3-Clause

// The camera of a host of version TEST_HOST_MAJOR.TEST_HOST_MINOR, which has one set of accessors.
#include "node/sdk.h"

#include <gtest/gtest.h>

using DD::Image::CameraOp;

TEST(TEST_HOST_SUITE, GivesTheLensOfACamera) {
    const CameraOp camera = {};
    EXPECT_EQ(velmora::focal_length(camera), 35.25);
    EXPECT_EQ(velmora::horizontal_aperture(camera), 36.125);
    EXPECT_EQ(velmora::vertical_aperture(camera), 24.0625);
}

// Column by column, narrowed to float where the host has it in double.
TEST(TEST_HOST_SUITE, GivesThePlaceOfACamera) {
    CameraOp camera = {};
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            camera.world[column][row] = 10 * column + row + 0.25f;
    camera.world[2][1] = decltype(+camera.world[2][1])(0.1);
    const DD::Image::Matrix4 place = velmora::camera_to_world(camera);
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++) {
            const bool tenth = column == 2 && row == 1;
            EXPECT_EQ(place[column][row], tenth ? 0.1f : 10 * column + row + 0.25f)
                << column << " " << row;
        }
}
