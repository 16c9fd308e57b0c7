// SPDX-License-Identifier: BSD-3-Clause
#include "stars/footprint.h"
#include "tests/special_values.h"
#include "tests/stars/picture.h"

#include <climits>

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::floats;

namespace {

// 20 columns and 10 rows.
bool clip(const Path& path, float rx, float ry, Box& box) {
    return clip_box(path, rx, ry, 20, 10, box);
}

bool clip(const Path& path, float rx, float ry) {
    Box box;
    return clip(path, rx, ry, box);
}

} // namespace

TEST(Footprint, PathHasAMidpointALengthAndADirection) {
    const Path path(at(1, 2), at(4, 6)); // 3, 4, 5
    EXPECT_EQ(path.mid[0], 2.5f);
    EXPECT_EQ(path.mid[1], 4);
    EXPECT_EQ(path.length, 5);
    EXPECT_EQ(path.ux, 0.6f);
    EXPECT_EQ(path.uy, 0.8f);
    EXPECT_TRUE(path.is_streak());
}

TEST(Footprint, PathOfUpToAHundredThousandthIsASpot) {
    EXPECT_FALSE(Path(at(3, 4), at(3, 4)).is_streak());
    EXPECT_EQ(Path(at(3, 4), at(3, 4)).ux, 0);
    EXPECT_FALSE(Path(at(0, 0), at(1e-5f, 0)).is_streak());
    EXPECT_TRUE(Path(at(0, 0), at(1.01e-5f, 0)).is_streak());
}

TEST(Footprint, PathIsNowhereWhenItsMidpointIsNotANumber) {
    EXPECT_TRUE(Path(at(1, 2), at(3, 4)).is_somewhere());
    EXPECT_FALSE(Path(at(not_a_number, 2), at(3, 4)).is_somewhere());
    EXPECT_FALSE(Path(at(1, 2), at(3, not_a_number)).is_somewhere());
    EXPECT_FALSE(Path(at(infinity, 2), at(-infinity, 4)).is_somewhere());
}

// floor(5.5 - 2.25) = 3 to floor(8.5 + 2.25) + 1 = 11; floor(4 - 1) = 3 to floor(4 + 1) + 1 = 6.
TEST(Footprint, BoxIsRoundedOutwards) {
    Box box;
    ASSERT_TRUE(clip(Path(at(8.5f, 4), at(5.5f, 4)), 2.25f, 1, box));
    EXPECT_EQ(box.x_lo, 3);
    EXPECT_EQ(box.x_hi, 11);
    EXPECT_EQ(box.y_lo, 3);
    EXPECT_EQ(box.y_hi, 6);
}

TEST(Footprint, BoxIsClippedToTheImage) {
    Box box;
    ASSERT_TRUE(clip(Path(at(-3, -2), at(50, 30)), 5, 5, box));
    EXPECT_EQ(box.x_lo, 0);
    EXPECT_EQ(box.x_hi, 19);
    EXPECT_EQ(box.y_lo, 0);
    EXPECT_EQ(box.y_hi, 9);
}

TEST(Footprint, BoxIsEmptyBesideTheImage) {
    EXPECT_TRUE(clip(Path(at(-2, 5), at(-2, 5)), 1, 1)) << "x_hi is 0";
    EXPECT_FALSE(clip(Path(at(-3, 5), at(-3, 5)), 1, 1)) << "x_hi is -1";
    EXPECT_TRUE(clip(Path(at(20.5f, 5), at(20.5f, 5)), 1, 1)) << "x_lo is 19";
    EXPECT_FALSE(clip(Path(at(21, 5), at(21, 5)), 1, 1)) << "x_lo is 20";
    EXPECT_FALSE(clip(Path(at(5, -3), at(5, -3)), 1, 1));
    EXPECT_FALSE(clip(Path(at(5, 11), at(5, 11)), 1, 1));
    EXPECT_FALSE(clip(Path(at(5, 5), at(5, 5)), not_a_number, not_a_number)) << "too faint";
}

TEST(Footprint, SpotsAndHorizontalPathsSpanTheWholeBox) {
    EXPECT_TRUE(row_geometry(Path(at(5, 5), at(5, 5)), 4, 2, 2).is_flat());
    EXPECT_TRUE(row_geometry(Path(at(1, 0), at(9, 1e-6f)), 4, 2, 2).is_flat());
    EXPECT_FALSE(row_geometry(Path(at(1, 0), at(9, 1.1e-6f)), 4, 2, 2).is_flat());
}

// Slope 3 columns per row; half-width 2 * 4 + |5 * 4 * 3| = 68.
TEST(Footprint, SlopingPathsHaveAHalfWidth) {
    const RowGeometry rows = row_geometry(Path(at(0, 0), at(6, 2)), 4, 2, 5);
    EXPECT_EQ(rows.slope, 3);
    EXPECT_EQ(rows.half_width, 68);
}

// Row 1 of the path from (0, 0) to (8, 4), whose midpoint is (4, 2): the row is at Y = -1 and its
// centre at x = 2, from which 1.5 columns either way reach from 0.5 to 3.5.
TEST(Footprint, SpanFollowsThePath) {
    const Path path(at(0, 0), at(8, 4));
    const Span span = row_span(path, {2, 1.5f}, {0, 0, 19, 9}, -1);
    EXPECT_EQ(span.ix, 0);
    EXPECT_EQ(span.X, -4);
    EXPECT_EQ(span.X_end, 0);
}

TEST(Footprint, SpanThatStartsBeyondTheIntegersIsEmpty) {
    const Path path(at(0, 0), at(8, 4));
    EXPECT_EQ(row_span(path, {2, 1}, {0, 0, 19, 9}, 3e9f).ix, INT_MIN);
}

TEST(Footprint, RowsAreWrittenByTheirParity) {
    for (s32 iy : {0, 1, 2, 7}) {
        EXPECT_TRUE(row_is_written(iy, OP_STARS_LINES_ALL));
        EXPECT_EQ(row_is_written(iy, OP_STARS_LINES_EVEN), iy % 2 == 0);
        EXPECT_EQ(row_is_written(iy, OP_STARS_LINES_ODD), iy % 2 == 1);
        EXPECT_EQ(row_is_written(iy, static_cast<op_stars_lines>(7)), iy % 2 == 1) << "as ODD";
    }
}
