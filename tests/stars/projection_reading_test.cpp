// SPDX-License-Identifier: BSD-3-Clause

// The projection down to its last bit: what the order of its operations decides, in numbers worked
// out by hand, and the same steps written down once more in double.
#include "stars/projection.h"
#include "tests/stars/dice.h"
#include "tests/stars/sky.h"

#include <algorithm>
#include <cmath>

using namespace stars_test;

namespace {

// Before the film window.
struct Place {
    double x, y;
    bool visible;
};

// A star, and the sample's matrix.
struct Star {
    double x, y, z, w;
    DblMatrix4 m = identity();
};

const double bit = std::ldexp(1.0, -52); // the last bit of 1

// Where the star is, seen through a window that begins at `corner` and is a few hundred last
// bits wide: exactly in the corner when the projection gives `corner`, pixels away when the last
// bit of either coordinate is another.
testing::AssertionResult is_projected_to(const Place& corner, op_stars_projection projection,
                                         const Star& s) {
    const double width = 256 * bit * std::max(1.0, std::fabs(corner.x));
    const double height = 256 * bit * std::max(1.0, std::fabs(corner.y));
    Vector2 out;
    const bool visible = world_to_screen(s.x, s.y, s.z, s.w, s.m, projection, 1000, 1000, corner.x,
                                         corner.x + width, corner.y - height, corner.y, out);
    if (out[0] == 0 && out[1] == 0 && visible == corner.visible)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "(" << s.x << ", " << s.y << ", " << s.z << ", " << s.w << ") is at (" << out[0]
           << ", " << out[1] << "), " << (visible ? "visible" : "invisible");
}

// One column of the matrix: what x, y, z and w are multiplied by.
DblMatrix4 with_column(int column, const double (&factors)[4], DblMatrix4 m = identity()) {
    for (int row = 0; row < 4; row++)
        m(row, column) = factors[row];
    return m;
}

// ---- The projection once more, in double, operation by operation ------------------------------

Place reread_place(op_stars_projection projection, const Star& s) {
    const DblMatrix4& m = s.m;
    double X = ((s.x * m(0, 0) + s.y * m(1, 0)) + s.z * m(2, 0)) + s.w * m(3, 0);
    double Y = ((s.x * m(0, 1) + s.y * m(1, 1)) + s.z * m(2, 1)) + s.w * m(3, 1);
    double Z = ((s.x * m(0, 2) + s.y * m(1, 2)) + s.z * m(2, 2)) + s.w * m(3, 2);
    const double W = ((s.x * m(0, 3) + s.y * m(1, 3)) + s.z * m(2, 3)) + s.w * m(3, 3);
    bool visible = W >= 0;
    if (projection == OP_STARS_PERSPECTIVE) {
        const double inverse = 1 / W;
        X = X * inverse;
        Y = Y * inverse;
        Z = Z * inverse;
    } else {
        const double L = std::sqrt((X * X + Y * Y) + Z * Z);
        if (L != 0) {
            X = X / L;
            Y = Y / L;
            Z = Z / L;
        }
        if (projection == OP_STARS_AZIMUTHAL_EQUIDISTANT) {
            const double r = std::sqrt(X * X + Y * Y);
            const double a = std::asin(r) * 0.6366197466850281;
            X = (X * a) / r;
            Y = (Y * a) / r;
        }
        if (X * X + Y * Y > 1)
            visible = false;
    }
    if (Z < 0)
        visible = false;
    return {X, Y, visible};
}

} // namespace

TEST(ProjectionReading, AddsTheTermsFromXToW) {
    // Half a last bit is lost when it is added to 1, three times in a row as well. Two of them
    // count as a bit, to which another half rounds to the even sum, two bits above 1; so do three.
    const double h = bit / 2;
    static const struct {
        double factors[4];
        double sum;
    } table[] = {{{1, h, h, h}, 1},
                 {{h, 1, h, h}, 1},
                 {{h, h, 1, h}, 1 + 2 * bit},
                 {{h, h, h, 1}, 1 + 2 * bit}};
    const double w_alone[4] = {0, 0, 0, 1}; // so that W is 1 and divides nothing away
    for (const auto& row : table) {
        const DblMatrix4 m =
            with_column(0, row.factors, with_column(1, row.factors, with_column(3, w_alone)));
        EXPECT_TRUE(
            is_projected_to({row.sum, row.sum, true}, OP_STARS_PERSPECTIVE, {1, 1, 1, 1, m}));
    }
}

// The depth Z and the divisor W hide a star below 0. 1 + h is 1 again, so that 1 + h - 1 - h / 2
// comes out below 0; added up exactly, backwards or in pairs it does not.
TEST(ProjectionReading, AddsTheTermsOfDepthAndDivisorInThatOrderToo) {
    const double h = bit / 2;
    const double factors[4] = {1, h, -1, -h / 2};
    for (int column : {2, 3}) {
        Vector2 out;
        EXPECT_FALSE(world_to_screen(1, 1, 1, 1, with_column(column, factors),
                                     OP_STARS_HEMISPHERICAL, 100, 100, -1, 1, -1, 1, out))
            << column;
    }
}

// 1 / 49 is a little too small: 49 times it is the number below 1, while 49 / 49 is 1.
TEST(ProjectionReading, MultipliesByTheInverseOfTheDivisor) {
    const Star s = {49, 49, 0, 49};
    EXPECT_TRUE(is_projected_to({1 - bit / 2, 1 - bit / 2, true}, OP_STARS_PERSPECTIVE, s));
}

TEST(ProjectionReading, DividesByTheLength) {
    EXPECT_TRUE(is_projected_to({1, 0, true}, OP_STARS_HEMISPHERICAL, {49, 0, 0, 0}));
    EXPECT_TRUE(is_projected_to({0, 1, true}, OP_STARS_HEMISPHERICAL, {0, 49, 0, 0}));
}

// On the rim, but for rounding: with both coordinates divided by sqrt(26) or sqrt(65) the sum of
// their squares is the number above 1.
TEST(ProjectionReading, HidesWhatRoundsToBeyondTheRim) {
    const struct { double x, y; } table[] = {{1, 5}, {1, 8}, {-5, 1}, {-8, -1}};
    for (const auto& row : table) {
        const double length = std::sqrt(row.x * row.x + row.y * row.y);
        const Place beyond = {row.x / length, row.y / length, false};
        ASSERT_EQ(beyond.x * beyond.x + beyond.y * beyond.y, 1 + bit);
        EXPECT_TRUE(is_projected_to(beyond, OP_STARS_HEMISPHERICAL, {row.x, row.y, 0, 0}));
    }
}

// Directions with whole lengths for which X * a / r, X * (a / r) and X / r * a differ in the last
// bit, where asin is rounded correctly.
TEST(ProjectionReading, MultipliesByTheAngleBeforeItDividesByTheRadius) {
    static const struct {
        double x, y, z, length;
    } table[] = {{1, 2, 2, 3}, {2, 1, 2, 3}, {1, 4, 8, 9}, {6, 6, 7, 11}};
    int told = 0;
    for (const auto& row : table) {
        const double X = row.x / row.length, Y = row.y / row.length;
        const double r = std::sqrt(X * X + Y * Y);
        const double a = std::asin(r) * 0.6366197466850281;
        EXPECT_TRUE(is_projected_to({X * a / r, Y * a / r, true}, OP_STARS_AZIMUTHAL_EQUIDISTANT,
                                    {row.x, row.y, row.z, 0}));
        told += X * a / r != X * (a / r) && X * a / r != X / r * a;
    }
    EXPECT_GT(told, 0) << "no direction distinguishes the readings";
}

// 29572875 / 7 * 7 is 29572875 - 2^-28 and narrows to 29572874; multiplied first it is 29572875
// itself, half-way between two floats, which narrows to the even one, 29572876. So are
// 26510791 / 100 * 100 and 26510790, not 26510792.
TEST(ProjectionReading, DividesByTheWindowBeforeItMultipliesByTheSize) {
    Vector2 out;
    world_to_screen(29572875, -26510791, 0, 1, identity(), OP_STARS_PERSPECTIVE, 7, 100, 0, 7, -100,
                    0, out);
    EXPECT_EQ(out[0], 29572874);
    EXPECT_EQ(out[1], 26510790);
    world_to_screen(26510791, -29572875, 0, 1, identity(), OP_STARS_PERSPECTIVE, 100, 7, 0, 100, -7,
                    0, out);
    EXPECT_EQ(out[0], 26510790);
    EXPECT_EQ(out[1], 29572874);
}

TEST(ProjectionReading, AgreesForAnyStar) {
    Dice dice(9);
    for (int round = 0; round < 6000; round++) {
        const op_stars_projection projection = static_cast<op_stars_projection>(round % 3);
        Star s = {dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1),
                  dice.below(2) ? dice.between(0, 2) : 0};
        for (double& element : s.m.e)
            element = dice.between(-1, 1);
        ASSERT_TRUE(is_projected_to(reread_place(projection, s), projection, s)) << round;
    }
}
