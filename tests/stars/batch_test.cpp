// SPDX-License-Identifier: BSD-3-Clause

// Directions, projections and shading of the fast kernels against the functions in long double and
// against the plain reading.
#include "stars/fast/batch.h"
#include "stars/fast/level.h"
#include "stars/fast/shading.h"
#include "stars/plain/shading.h"
#include "stars/projection.h"
#include "tests/special_values.h"
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/sky.h"

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::doubles;

namespace {

struct Directions {
    double x[16], y[16], z[16], w[16];
};

Directions directions_of(double ra, double dec) {
    double ras[16], decs[16], distances[16] = {};
    for (int i = 0; i < 16; i++) {
        ras[i] = ra;
        decs[i] = dec;
    }
    Directions found;
    lane_kernels(kernel_level())
        ->find_directions({16, ras, decs, distances, false, 0, found.x, found.y, found.z, found.w});
    return found;
}

double angle_of(double degrees) {
    return double(float(degrees) * 0.017453292f);
}

double last_bits(double value, long double exact) {
    const double spacing = std::nextafter(std::fabs(value), 2.0) - std::fabs(value);
    return std::fabs(double((value - exact) / spacing));
}

} // namespace

// sin dec is a component of its own; an angle of any size is reduced exactly before.
TEST(Batch, TakesSinesToOneAndAHalfLastBits) {
    for (KernelLevel level : fast_levels()) {
        const WithKernels kernels(level);
        Dice dice(31);
        double worst = 0;
        for (int i = 0; i < 20000; i++) {
            const double dec = i % 3 == 0   ? dice.between(-360, 360)
                               : i % 3 == 1 ? dice.between(-90, 90)
                                            : dice.log_between(1e-30, 1e38);
            const Directions found = directions_of(0, dec);
            const double angle = angle_of(dec);
            // The long double's own argument reduction has 64 bits of pi to spend.
            if (std::fabs(angle) < 1e5)
                worst = std::max(worst, last_bits(found.y[i % 16], sinl(angle)));
            else
                EXPECT_NEAR(found.y[i % 16], std::sin(angle), 3e-16) << dec;
        }
        EXPECT_LE(worst, 1.5) << kernel_level_name(level);
    }
}

TEST(Batch, FindsUnitDirections) {
    for (KernelLevel level : fast_levels()) {
        const WithKernels kernels(level);
        Dice dice(32);
        for (int i = 0; i < 5000; i++) {
            const double ra = dice.between(-400, 400), dec = dice.between(-90, 90);
            const Directions found = directions_of(ra, dec);
            const VectorN<double, 3> plain = scene_direction(make_star(ra, dec, 1));
            EXPECT_NEAR(found.x[5], plain[0], 4e-16) << ra << ", " << dec;
            EXPECT_NEAR(found.y[5], plain[1], 4e-16) << ra << ", " << dec;
            EXPECT_NEAR(found.z[5], plain[2], 4e-16) << ra << ", " << dec;
        }
    }
}

TEST(Batch, GivesNoDirectionToAnglesThatAreNone) {
    for (KernelLevel level : fast_levels()) {
        const WithKernels kernels(level);
        for (double bad : {not_a_number, infinity, -infinity, 1e300}) {
            EXPECT_TRUE(std::isnan(directions_of(0, bad).y[3])) << bad;
            EXPECT_TRUE(std::isnan(directions_of(bad, 10).x[3])) << bad;
        }
        EXPECT_EQ(directions_of(0, 0).y[0], 0);
        EXPECT_EQ(directions_of(0, 0).x[0], 1);
    }
}

// Within a last bit or two of the float's place: the direction is 4e-16 off at most.
TEST(Batch, PlacesStarsWhereThePlainReadingDoes) {
    Dice dice(33);
    for (int round = 0; round < 300; round++) {
        StarRendererData data = plain_data(1000);
        data.left = -dice.between(0.5, 2);
        data.right = dice.between(0.5, 2);
        data.projection = static_cast<op_stars_projection>(round % 3);
        data.parallax = round % 2 ? 100 : 0;
        DblMatrix4 m = turn_about_y(dice.between(-40, 40));
        for (int j = 0; j < 3; j++)
            m(3, j) = dice.between(-0.3, 0.3);
        Array<DblMatrix4> matrices;
        matrices.append(
            data.projection == OP_STARS_PERSPECTIVE ? m * DblMatrix4::perspective(1, 0.1, -1) : m);
        StarBatch batch(1);
        std::vector<star> stars;
        for (int i = 0; i < 37; i++)
            stars.push_back(make_star(dice.between(30, 150), dice.between(-60, 60), 1, 1, 2, 3,
                                      dice.between(-1, 5)));
        for (const star& s : stars)
            batch.append(s);
        batch.find_places(*lane_kernels(kernel_level()), {&data, &matrices, true, 1000, 800, 5, 5});
        for (int i = 0; i < 37; i++) {
            const star& s = stars[size_t(i)];
            const VectorN<double, 3> d = scene_direction(s);
            Vector2 plain;
            const bool visible = world_to_screen(
                d[0], d[1], d[2], inverse_distance(s.distance > 0, s.distance, data.parallax),
                matrices[0], data.projection, 1000, 800, data.left, data.right, data.bottom,
                data.top, plain);
            EXPECT_EQ(batch.is_seen(0, i), visible);
            for (int axis = 0; axis < 2; axis++) {
                const float off = std::fabs(batch.place(0, i)[axis] - plain[axis]);
                EXPECT_LE(off, 2.4e-7f * std::fabs(plain[axis]) + 1e-9f) << round << ", " << i;
            }
            const bool near = plain[0] > -5 && plain[0] < 1005 && plain[1] > -5 && plain[1] < 805;
            if (visible && near) {
                EXPECT_TRUE(batch.reaches(i));
            }
            if (!visible) {
                EXPECT_FALSE(batch.reaches(i));
            }
        }
    }
}

TEST(Batch, HasTheSameBitsForEveryColourByte) {
    StarRendererData data = plain_data(100);
    data.tint_color = {{0.25f, 0.5f, 1}};
    for (double tint : {0.0, 0.3})
        for (int byte = 0; byte < 256; byte++) {
            data.tint_strength = tint;
            const star s = make_star(0, 0, 1, byte, 255 - byte, byte / 2);
            const Color3 plain = shaded_color(s, data), steady = steady_color(s, data);
            for (int k = 0; k < 3; k++)
                EXPECT_EQ(plain[k], steady[k]) << byte;
        }
}

TEST(Batch, BiasesAndCapsAsThePlainReading) {
    Dice dice(34);
    for (int i = 0; i < 5000; i++) {
        StarRendererData data = plain_data(100);
        data.bias_exponent = i % 4 ? dice.between(0.1, 5) : 1;
        data.lum_max = i % 3 ? 1e30 : 0.5;
        const float flux = float(dice.log_between(1e-5, 100));
        const float plain = shaded_luminance(flux, data), steady = steady_luminance(flux, data);
        EXPECT_LE(std::fabs(plain - steady), 1.2e-7f * plain) << flux; // both round once, or nearly
    }
}
