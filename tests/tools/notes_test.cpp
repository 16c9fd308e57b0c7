// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/notes.h"

#include "tests/tools/standard_error.h"

#include <gtest/gtest.h>

using namespace velmora;

static View view_of(op_stars_projection projection, double half_width, double half_height,
                    int width, int height) {
    View view = {{}, {}, width, height};
    view.data.projection = projection;
    view.data.right = half_width;
    view.data.left = -half_width;
    view.data.top = half_height;
    view.data.bottom = -half_height;
    return view;
}

static std::string said_of(const View& view) {
    StandardError error;
    say_notes(view);
    return error.text();
}

// 24.576 mm across 1920 pixels make 13.824 mm across 1080.
TEST(Notes, NameTheApertureOfSquarePixels) {
    EXPECT_EQ(said_of(view_of(OP_STARS_PERSPECTIVE, 12.288, 9.336, 1920, 1080)),
              "velmora: note: the apertures' shape is not the image's, so the sky is stretched: "
              "--vaperture 13.824 gives square pixels\n");
}

TEST(Notes, AllowAHundredthOfStretch) {
    EXPECT_EQ(said_of(view_of(OP_STARS_PERSPECTIVE, 12.288, 6.912, 1920, 1080)), "");
    EXPECT_EQ(said_of(view_of(OP_STARS_PERSPECTIVE, 12.288, 6.912 * 1.0099, 1920, 1080)), "");
    EXPECT_NE(said_of(view_of(OP_STARS_PERSPECTIVE, 12.288, 6.912 * 1.0101, 1920, 1080)), "");
}

// The disc is two units high: of a window of 16, an eighth.
TEST(Notes, MeasureASmallDisc) {
    EXPECT_EQ(said_of(view_of(OP_STARS_HEMISPHERICAL, 16, 8, 128, 64)),
              "velmora: note: the Hemispherical disc takes up 8 of the image's 64 rows with these "
              "apertures: --no-camera fits it\n");
    EXPECT_EQ(
        said_of(view_of(OP_STARS_AZIMUTHAL_EQUIDISTANT, 16, 8, 128, 64)),
        "velmora: note: the Azimuthal Equidistant disc takes up 8 of the image's 64 rows with "
        "these apertures: --no-camera fits it\n");
}

TEST(Notes, LeaveADiscOfAQuarterAlone) {
    EXPECT_EQ(said_of(view_of(OP_STARS_HEMISPHERICAL, 8, 4, 128, 64)), "");
    EXPECT_EQ(said_of(view_of(OP_STARS_PERSPECTIVE, 16, 8, 128, 64)), "");
}
