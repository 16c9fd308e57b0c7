// SPDX-License-Identifier: BSD-3-Clause
#include "stars/projection.h"
#include "tests/message_of.h"
#include "tests/special_values.h"
#include "tests/stars/sky.h"

#include <cmath>

using namespace stars_test;
using namespace velmora_test::doubles;

namespace {

const double half = 0.7071067811865476; // sqrt(1/2)

struct Seen {
    bool visible;
    float x, y;
};

// A film window of -2 to 2 by -1 to 1 on 200 x 100 pixels: x is 50 (X + 2), y is 50 (1 - Y).
Seen project(op_stars_projection projection, double x, double y, double z, double w = 0,
             const DblMatrix4& m = identity()) {
    Vector2 out = {{-1e9f, -1e9f}};
    const bool visible = world_to_screen(x, y, z, w, m, projection, 200, 100, -2, 2, -1, 1, out);
    return {visible, out[0], out[1]};
}

const op_stars_projection hemisphere = OP_STARS_HEMISPHERICAL;
const op_stars_projection azimuthal = OP_STARS_AZIMUTHAL_EQUIDISTANT;

// Focal length 2, near 0.1, no far plane.
Seen pinhole(double x, double y, double z, double w = 0) {
    DblMatrix4 p = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.5, 0.5, 0, 0, -0.05, 0}};
    return project(OP_STARS_PERSPECTIVE, x, y, z, w, p);
}

struct Case {
    double x, y, z, w;
    bool visible;
    float px, py;
};

// Pixel positions are narrowed to float, as the expected ones are: a step of float apart at most.
void expect(const Case& want, const Seen& seen) {
    const auto name = [&] {
        return testing::Message() << want.x << ", " << want.y << ", " << want.z << ", " << want.w;
    };
    EXPECT_EQ(seen.visible, want.visible) << name();
    EXPECT_NEAR(seen.x, want.px, 1e-5 + 1.2e-7 * std::fabs(want.px)) << name();
    EXPECT_NEAR(seen.y, want.py, 1e-5 + 1.2e-7 * std::fabs(want.py)) << name();
}

} // namespace

TEST(Projection, MultipliesRowVectorsFromTheLeft) {
    // p · m with p = (1, 10, 100, 1000) / 10000: columns pick 4321, 8765, and W 1.
    DblMatrix4 m = {{1, 5, 1, 0, 2, 6, 0, 0, 3, 7, 0, 0, 4, 8, 0, 10}};
    const Seen seen = project(OP_STARS_PERSPECTIVE, 1e-4, 1e-3, 1e-2, 1e-1, m);
    EXPECT_TRUE(seen.visible);
    EXPECT_NEAR(seen.x, 50 * (0.4321 + 2), 2e-5);
    EXPECT_NEAR(seen.y, 50 * (1 - 0.8765), 2e-5);
}

// After the division a point is at (2 X / Z, 2 Y / Z).
TEST(Projection, PutsAPinholePointAtFocalTimesItsTangent) {
    static const Case table[] = {
        {0, 0, 1, 0, true, 100, 50},     // straight ahead: the middle
        {0.6, 0, 0.8, 0, true, 175, 50}, // X = 2 * 0.75 = 1.5
        {0, 0.28, 0.96, 0, true, 100, 50 - 50 * 0.56f / 0.96f},
        {-0.6, 0, 0.8, 0, true, 25, 50},
        {0.96, 0, 0.28, 0, true, 50 * (2 + 1.92f / 0.28f), 50}, // visible outside of the image
    };
    for (const Case& row : table)
        expect(row, pinhole(row.x, row.y, row.z, row.w));
}

TEST(Projection, DropsWhatIsBehindThePinhole) {
    // W = Z / 2 < 0; the position is the mirrored one and is given all the same.
    expect({0.6, 0, -0.8, 0, false, 25, 50}, pinhole(0.6, 0, -0.8));
    expect({0, 0, -1, 0, false, 100, 50}, pinhole(0, 0, -1));
}

TEST(Projection, DropsStarsNearerThanTheNearPlane) {
    // The star is at 1 / w along the axis and the depth is 1 - 0.1 w.
    EXPECT_TRUE(pinhole(0, 0, 1, 0).visible);
    EXPECT_TRUE(pinhole(0, 0, 1, 5).visible);
    EXPECT_TRUE(pinhole(0, 0, 1, 9.999).visible);
    EXPECT_TRUE(pinhole(0, 0, 1, 10).visible) << "depth 0";
    EXPECT_FALSE(pinhole(0, 0, 1, 10.001).visible);
    EXPECT_FALSE(pinhole(0, 0, 1, 20).visible);
    // Along the axis only counts z: this one is 2 away in all and 0.02 deep.
    EXPECT_FALSE(pinhole(std::sqrt(1 - 1e-4), 0, 0.01, 0.5).visible);
    expect({0, 0, 1, 20, false, 100, 50}, pinhole(0, 0, 1, 20));
}

TEST(Projection, GivesInfinitiesForAPinholeDivideByZero) {
    const Seen seen = pinhole(1, 0, 0);
    EXPECT_EQ(seen.x, infinity);
    EXPECT_TRUE(std::isnan(seen.y)); // 0 times infinity
    EXPECT_TRUE(seen.visible) << "W is 0 and the depth is NaN";
    EXPECT_EQ(pinhole(-1, 0, 0).x, -infinity);
}

// The depth's sign counts even where the divide makes it infinite.
TEST(Projection, TakesTheDepthTimesAnInfiniteReciprocal) {
    EXPECT_FALSE(project(OP_STARS_PERSPECTIVE, 0, 0, -1).visible);
    EXPECT_TRUE(project(OP_STARS_PERSPECTIVE, 0, 0, 1).visible);
}

// A direction whose length is beyond a double is divided by infinity: no depth is below 0 then.
TEST(Projection, SeesDirectionsTooLongToNormaliseInTheMiddle) {
    DblMatrix4 m = identity();
    for (int i = 0; i < 3; i++)
        m(i, i) = 1e200;
    expect({0.6, 0, -0.8, 0, true, 100, 50}, project(hemisphere, 0.6, 0, -0.8, 0, m));
}

TEST(Projection, CountsAWThatIsNoNumberAsVisible) {
    for (op_stars_projection p : {OP_STARS_PERSPECTIVE, hemisphere, azimuthal}) {
        DblMatrix4 m = identity();
        m(3, 3) = not_a_number;
        EXPECT_TRUE(project(p, 0, 0, 1, 1, m).visible) << p;
        m(3, 3) = -1;
        EXPECT_FALSE(project(p, 0, 0, 1, 1, m).visible) << p;
        m(3, 3) = -0.0;
        EXPECT_TRUE(project(p, 0, 0, 1, 1, m).visible) << p;
    }
}

TEST(Projection, SeesTheHemisphereOrthographically) {
    static const Case table[] = {
        {0, 0, 1, 0, true, 100, 50}, // along the axis: the middle
        {1, 0, 0, 0, true, 150, 50}, // 90 degrees off: radius 1
        {-1, 0, 0, 0, true, 50, 50},
        {0, 1, 0, 0, true, 100, 0}, // y upwards is towards row 0
        {0, -1, 0, 0, true, 100, 100},
        {0.6, 0, 0.8, 0, true, 130, 50},
        {3, 0, 4, 0, true, 130, 50},       // normalised first
        {0.6, 0, -0.8, 0, false, 130, 50}, // behind, with its position
        {0, 0, -1, 0, false, 100, 50},
        {0, 0, 0, 0, true, 100, 50}, // no direction at all
        {half, 0, half, 0, true, 100 + 50 * 0.70710678f, 50},
    };
    for (const Case& row : table)
        expect(row, project(hemisphere, row.x, row.y, row.z, row.w));
}

TEST(Projection, MakesRadiusProportionalToTheAngle) {
    static const Case table[] = {
        {half, 0, half, 0, true, 125, 50}, // 45 degrees: radius 0.5
        {0, half, half, 0, true, 100, 25},
        {0.5, 0, 0.8660254037844386, 0, true, 100 + 50 / 3.0f, 50}, // 30 degrees: 1/3
        {0, -1, 0, 0, true, 100, 100},                              // 90 degrees: radius 1
        {-7, 0, 7, 0, true, 75, 50},                                // normalised first
        {0.6, 0.8, 0, 0, true, 130, 10},                            // the direction stays
        {half, 0, -half, 0, false, 125, 50},                        // behind, with its position
    };
    for (const Case& row : table)
        expect(row, project(azimuthal, row.x, row.y, row.z, row.w));
}

TEST(Projection, UsesTheSinglePrecisionTwoOverPi) {
    // asin(1) = pi / 2, so the rim is at 1 - 4.03e-8, not at 1. Seen through a window of 1e-6 about
    // the rim: position (X - (1 - 1e-6)) / 2e-6 * 1000 = 500 - 20.2.
    Vector2 out;
    const bool visible = world_to_screen(1, 0, 0, 0, identity(), azimuthal, 1000, 1000, 1 - 1e-6,
                                         1 + 1e-6, -1, 1, out);
    EXPECT_TRUE(visible);
    const double rim = 1.5707963267948966 * 0.6366197466850281;
    EXPECT_NEAR(out[0], (rim - (1 - 1e-6)) / 2e-6 * 1000, 1e-3);
    EXPECT_LT(out[0], 490);
}

TEST(Projection, LosesAStarExactlyOnTheAzimuthalAxis) {
    for (double z : {1.0, 5.0}) {
        const Seen seen = project(azimuthal, 0, 0, z);
        EXPECT_TRUE(seen.visible) << "and the rasteriser discards it";
        EXPECT_TRUE(std::isnan(seen.x));
        EXPECT_TRUE(std::isnan(seen.y));
    }
    EXPECT_FALSE(project(azimuthal, 0, 0, -1).visible);
}

TEST(Projection, HidesWhatTheDiscDoesNotHold) {
    // Normalisation keeps finite directions within the disc, but for rounding; an overflowing
    // length does not: L is infinite, X / L is 0. A NaN direction stays visible.
    EXPECT_TRUE(project(hemisphere, not_a_number, 0, 1).visible);
    EXPECT_TRUE(project(azimuthal, not_a_number, 0, 1).visible);
    expect({1e200, 0, 1, 0, true, 100, 50}, project(hemisphere, 1e200, 0, 1));
}

TEST(Projection, TakesPositionsThroughTheTranslationByTheirInverseDistance) {
    DblMatrix4 m = identity();
    m(3, 0) = -0.6;
    // At w = 1 the star (0.6, 0.8, 0.6) has X = 0; normalised it is (0, 0.8, 0.6).
    expect({0.6, 0.8, 0.6, 1, true, 100, 10}, project(hemisphere, 0.6, 0.8, 0.6, 1, m));
    expect({0, 0, 1, 0, true, 100, 50}, project(hemisphere, 0, 0, 1, 0, m));
}

TEST(Projection, MeasuresAgainstAnyFilmWindow) {
    Vector2 out;
    EXPECT_TRUE(world_to_screen(0.6, 0.48, 0.64, 0, identity(), hemisphere, 10, 20, 0.5, 1.5, -3,
                                0.98, out));
    EXPECT_NEAR(out[0], 1, 1e-6);               // (0.6 - 0.5) / 1 * 10
    EXPECT_NEAR(out[1], 0.5 / 3.98 * 20, 1e-6); // (0.98 - 0.48) / 3.98 * 20
}

TEST(Projection, RefusesOthers) {
    for (int other : {3, -1, 77}) {
        const std::string message =
            message_of([&] { project(static_cast<op_stars_projection>(other), 0, 0, 1); });
        EXPECT_EQ(message, "unknown projection in <bool world_to_screen(double, double, double, "
                           "double, DblMatrix4, op_stars_projection, int, int, double, double, "
                           "double, double, Vector2&)> (stars:290)");
    }
}
