// SPDX-License-Identifier: BSD-3-Clause

// Rotations, projection and the splitting of affine matrices.

#include "core/newmatrix.h"
#include "core/xception.h"
#include "tests/core/matrix_tools.h"
#include "tests/core/observed.h"
#include "tests/special_values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

using namespace velmora_test::doubles;

namespace {

const double pi = 3.14159265358979323846;
// Column-vector rotations about one axis: p' = R p, counter-clockwise seen from the axis' tip.
Plain about_x(long double angle) {
    const long double s = std::sin(angle), c = std::cos(angle);
    return {{{1, 0, 0, 0}, {0, c, -s, 0}, {0, s, c, 0}, {0, 0, 0, 1}}};
}

Plain about_y(long double angle) {
    const long double s = std::sin(angle), c = std::cos(angle);
    return {{{c, 0, s, 0}, {0, 1, 0, 0}, {-s, 0, c, 0}, {0, 0, 0, 1}}};
}

Plain about_z(long double angle) {
    const long double s = std::sin(angle), c = std::cos(angle);
    return {{{c, -s, 0, 0}, {s, c, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
}

DblMatrix4 rotation(double heading, double pitch, double bank) {
    const double angles[3] = {heading, pitch, bank};
    return DblMatrix4::from_euler_angles(angles);
}

template <class real>
class RotationOf : public testing::Test {};

typedef testing::Types<float, double> Precisions;
TYPED_TEST_SUITE(RotationOf, Precisions);

template <class real>
class PerspectiveOf : public testing::Test {};

TYPED_TEST_SUITE(PerspectiveOf, Precisions);

} // namespace

// ---- Euler angles ----------------------------------------------------------------------------

// Sine and cosine within an ulp, two products, one sum: 4 ulps of 1.
TYPED_TEST(RotationOf, EulerAnglesTurnAboutZThenXThenY) {
    std::mt19937 random(1);
    std::uniform_real_distribution<TypeParam> angle(-7, 7);
    const double tolerance = 4 * std::numeric_limits<TypeParam>::epsilon();
    for (int round = 0; round < 500; round++) {
        const TypeParam a[3] = {angle(random), angle(random), angle(random)};
        const Plain columns = product(product(about_y(a[0]), about_x(a[1])), about_z(a[2]));
        const auto m = Matrix4<TypeParam>::from_euler_angles(a);
        EXPECT_LE(distance(plain(m), transpose(columns)), tolerance)
            << a[0] << ' ' << a[1] << ' ' << a[2];
    }
}

TYPED_TEST(RotationOf, QuarterTurnsMoveTheAxes) {
    const TypeParam quarter = TypeParam(pi / 2);
    struct {
        const char* name;
        TypeParam angles[3];
        int from, to; // the axis that turns, and where its tip arrives
    } const cases[] = {
        {"heading takes z to x", {quarter, 0, 0}, 2, 0}, {"and leaves y", {quarter, 0, 0}, 1, 1},
        {"pitch takes y to z", {0, quarter, 0}, 1, 2},   {"and leaves x", {0, quarter, 0}, 0, 0},
        {"bank takes x to y", {0, 0, quarter}, 0, 1},    {"and leaves z", {0, 0, quarter}, 2, 2},
    };
    for (const auto& c : cases) {
        const auto m = Matrix4<TypeParam>::from_euler_angles(c.angles);
        for (int j = 0; j < 4; j++)
            EXPECT_NEAR(m(c.from, j), j == c.to, 1e-7) << c.name; // cos(pi / 2) in float
    }
}

TYPED_TEST(RotationOf, NoTurnIsTheIdentity) {
    const TypeParam none[3] = {0, 0, 0};
    EXPECT_EQ(distance(plain(Matrix4<TypeParam>::from_euler_angles(none)), identity()), 0);
}

TYPED_TEST(RotationOf, RotationsAreOrthonormalAndKeepTheHand) {
    std::mt19937 random(2);
    std::uniform_real_distribution<TypeParam> angle(-4, 4);
    const double tolerance = 8 * std::numeric_limits<TypeParam>::epsilon();
    for (int round = 0; round < 200; round++) {
        const TypeParam a[3] = {angle(random), angle(random), angle(random)};
        const Plain m = plain(Matrix4<TypeParam>::from_euler_angles(a));
        EXPECT_LE(distance(product(m, transpose(m)), identity()), tolerance);
        EXPECT_NEAR(double(determinant(m)), 1, tolerance);
        for (int i = 0; i < 3; i++) {
            EXPECT_EQ(m.e[i][3], 0);
            EXPECT_EQ(m.e[3][i], 0);
        }
        EXPECT_EQ(m.e[3][3], 1);
    }
}

// Near the poles the angles are known no better than the square root of the rounding allows, so
// the pitch stays 0.01 away from them: asin and atan2 then magnify an ulp at most a hundredfold.
TEST(EulerAngles, ComeBackFromTheirRotation) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> turn(-pi, pi), pitch(-pi / 2 + 0.01, pi / 2 - 0.01);
    for (int round = 0; round < 1000; round++) {
        const double a[3] = {turn(random), pitch(random), turn(random)};
        const VectorN<double, 3> b = DblMatrix4::from_euler_angles(a).orthonormal_to_euler();
        for (int i = 0; i < 3; i++)
            EXPECT_NEAR(b[i], a[i], 1e-13) << i;
    }
}

TEST(EulerAngles, HalfATurnComesBackAsPlusPi) {
    const VectorN<double, 3> b = rotation(pi, 0.5, pi).orthonormal_to_euler();
    EXPECT_NEAR(b[0], pi, 1e-15);
    EXPECT_NEAR(b[1], 0.5, 1e-15);
    EXPECT_NEAR(b[2], pi, 1e-15);
}

// At a pole heading and bank turn about the same axis: with the cosine of the pitch exactly 0 they
// come back as 0, whatever they were.
TEST(EulerAngles, AreLostAtThePoles) {
    const double heading = 0.3, bank = 0.2;
    const double s0 = std::sin(heading), c0 = std::cos(heading);
    const double s2 = std::sin(bank), c2 = std::cos(bank);
    for (double s1 : {1.0, -1.0}) {
        const DblMatrix4 m = matrix<double>({c0 * c2 + s0 * s1 * s2, 0, c0 * s1 * s2 - s0 * c2, 0,
                                             s0 * s1 * c2 - c0 * s2, 0, c0 * s1 * c2 + s0 * s2, 0,
                                             0, -s1, 0, 0, 0, 0, 0, 1});
        const VectorN<double, 3> b = m.orthonormal_to_euler();
        EXPECT_EQ(b[0], 0.0);
        EXPECT_NEAR(b[1], s1 * pi / 2, 1e-15);
        EXPECT_EQ(b[2], 0.0);
    }
}

// The double nearest to pi / 2 is no pole: its cosine is 6e-17, and its sign is all atan2 needs.
TEST(EulerAngles, ComeBackFromTheDoubleNearestToThePole) {
    for (double pitch : {pi / 2, -pi / 2}) {
        const VectorN<double, 3> b = rotation(0.3, pitch, 0.2).orthonormal_to_euler();
        EXPECT_NEAR(b[0], 0.3, 1e-15);
        EXPECT_NEAR(b[1], pitch, 1e-15);
        EXPECT_NEAR(b[2], 0.2, 1e-15);
    }
}

TEST(EulerAngles, TheSineOfThePitchIsNotClamped) {
    for (double sine : {1.0000001, -1.0000001}) {
        DblMatrix4 m = DblMatrix4::the_identity();
        m(2, 1) = -sine;
        const VectorN<double, 3> b = m.orthonormal_to_euler();
        EXPECT_EQ(b[0], 0.0);
        EXPECT_TRUE(std::isnan(b[1]));
        EXPECT_EQ(b[2], 0.0);
    }
}

TEST(EulerAngles, AreTakenFromFiveElements) {
    DblMatrix4 m;
    for (double& e : m.e)
        e = not_a_number;
    m(2, 0) = 1;
    m(2, 2) = 2;
    m(2, 1) = -0.5;
    m(0, 1) = 3;
    m(1, 1) = -4;
    const VectorN<double, 3> b = m.orthonormal_to_euler();
    EXPECT_NEAR(b[0], 0.46364760900080611621, 1e-15); // atan(1 / 2)
    EXPECT_NEAR(b[1], 0.52359877559829887308, 1e-15); // pi / 6
    EXPECT_NEAR(b[2], 2.49809154479650885166, 1e-15); // pi - atan(3 / 4)
}

// ---- Perspective -----------------------------------------------------------------------------

TYPED_TEST(PerspectiveOf, ANegativeFocalLengthGivesTheIdentity) {
    const TypeParam values[] = {TypeParam(-1),
                                0,
                                TypeParam(0.1),
                                1000,
                                std::numeric_limits<TypeParam>::infinity(),
                                std::numeric_limits<TypeParam>::quiet_NaN()};
    for (TypeParam focal : {TypeParam(-1), TypeParam(-1e-30)})
        for (TypeParam near : values)
            for (TypeParam far : values)
                EXPECT_EQ(
                    distance(plain(Matrix4<TypeParam>::perspective(focal, near, far)), identity()),
                    0);
}

TYPED_TEST(PerspectiveOf, HasTheseElements) {
    typedef TypeParam real;
    struct {
        real focal, near, far;
        long double a, b, c; // m(2,2), m(2,3), m(3,2)
    } const cases[] = {
        {2, real(0.1), -1, 0.5L, 0.5L, -0.05L},
        {2, real(0.1), 0, 0.5L, 0.5L, -0.05L}, // far 0 is no far distance either
        {1, 1, -1, 1, 1, -1},
        {4, 0, -1, 0.25L, 0.25L, 0},
        {2, 1, 2, 1, 0.5L, -1},            // 1 / ((1 - 1/2) * 2)
        {real(0.5), 1, 5, 2.5L, 2, -2.5L}, // 1 / ((1 - 1/5) * 0.5)
        {2, real(0.1), 10, 1 / 1.98L, 0.5L, -0.1L / 1.98L},
    };
    // Three or four roundings of values up to 2.5.
    const double tolerance = 8 * std::numeric_limits<real>::epsilon();
    for (const auto& c : cases) {
        const Plain expected = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, c.a, c.b}, {0, 0, c.c, 0}}};
        EXPECT_LE(distance(plain(Matrix4<real>::perspective(c.focal, c.near, c.far)), expected),
                  tolerance)
            << &c - cases;
    }
}

TEST(Perspective, OfTheEdgeCaseIsExactInItsElements) {
    const DblMatrix4 m = DblMatrix4::perspective(2, 0.1, -1);
    EXPECT_EQ(m(2, 2), 0.5);
    EXPECT_EQ(m(2, 3), 0.5);
    EXPECT_EQ(m(3, 2), -0.05);
    EXPECT_EQ(m(3, 3), 0.0);
}

TEST(Perspective, ProjectsPointsOntoTheImagePlane) {
    const double focal = 3, near = 0.5, far = 20;
    const DblMatrix4 m = DblMatrix4::perspective(focal, near, far);
    for (double z : {0.5, 1.0, 7.0, 20.0}) {
        const double p[4] = {1.25, -2.5, z, 1};
        double q[4] = {};
        for (int j = 0; j < 4; j++)
            for (int i = 0; i < 4; i++)
                q[j] += p[i] * m(i, j);
        EXPECT_NEAR(q[3], z / focal, 1e-15 * z);
        EXPECT_NEAR(q[0] / q[3], p[0] * focal / z, 1e-14);
        EXPECT_NEAR(q[1] / q[3], p[1] * focal / z, 1e-14);
        EXPECT_NEAR(q[2] / q[3], (1 - near / z) / (1 - near / far), 1e-14); // 0 at near, 1 at far
    }
}

TYPED_TEST(PerspectiveOf, AFocalLengthOfZeroGivesInfinities) {
    const auto m = Matrix4<TypeParam>::perspective(0, 1, -1);
    EXPECT_EQ(m(2, 2), std::numeric_limits<TypeParam>::infinity());
    EXPECT_EQ(m(2, 3), std::numeric_limits<TypeParam>::infinity());
    EXPECT_EQ(m(3, 2), -std::numeric_limits<TypeParam>::infinity());
    EXPECT_EQ(m(0, 0), TypeParam(1));
    const auto with_far = Matrix4<TypeParam>::perspective(0, 1, 2);
    EXPECT_EQ(with_far(2, 2), std::numeric_limits<TypeParam>::infinity());
}
