// SPDX-License-Identifier: BSD-3-Clause
#include "core/newmatrix.h"
#include "core/xception.h"
#include "tests/core/matrix_tools.h"
#include "tests/core/observed.h"
#include "tests/special_values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

using namespace velmora_test::doubles;

namespace {

const double pi = 3.14159265358979323846;
const char affine_text[] = "fabsf(m(0,3)) < EPSILON && fabsf(m(1,3)) < EPSILON && "
                           "fabsf(m(2,3)) < EPSILON && fabsf(m(3,3)-1) < EPSILON";
const char skew_text[] =
    "fabsf(rs[0][0]*rs[1][0] + rs[0][1]*rs[1][1] + rs[0][2]*rs[1][2]) < EPSILON && "
    "fabsf(rs[0][0]*rs[2][0] + rs[0][1]*rs[2][1] + rs[0][2]*rs[2][2]) < EPSILON && "
    "fabsf(rs[1][0]*rs[2][0] + rs[1][1]*rs[2][1] + rs[1][2]*rs[2][2]) < EPSILON";
const char signature[] = "void Matrix4<real>::decompose_lw(VectorN<T, 3>&, VectorN<T, 3>&, "
                         "VectorN<T, 3>&) const [with real = double]";

struct Parts {
    VectorN<double, 3> translation, rotation, scale;
};

Parts parts_of(const DblMatrix4& m) {
    Parts parts;
    m.decompose_lw(parts.translation, parts.rotation, parts.scale);
    return parts;
}

// The line of the assertion that `m` fails, 0 when it is split.
int failing_line(const DblMatrix4& m) {
    try {
        parts_of(m);
    } catch (AssertXception& x) {
        return x.line;
    }
    return 0;
}

DblMatrix4 identity_with(int i, int j, double value) {
    DblMatrix4 m = DblMatrix4::the_identity();
    m(i, j) = value;
    return m;
}

// Scales, then turns, then moves.
DblMatrix4 composed(const double (&scale)[3], const double (&angles)[3], const double (&move)[3]) {
    const DblMatrix4 turn = DblMatrix4::from_euler_angles(angles);
    DblMatrix4 m = turn;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++)
            m(i, j) = scale[i] * turn(i, j);
    for (int j = 0; j < 3; j++)
        m(3, j) = move[j];
    return m;
}

} // namespace

// ---- Splitting -------------------------------------------------------------------------------

TEST(DecomposeLw, OfTheIdentityIsNothing) {
    const Parts parts = parts_of(DblMatrix4::the_identity());
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(parts.translation[i], 0.0);
        EXPECT_EQ(parts.rotation[i], 0.0);
        EXPECT_EQ(parts.scale[i], 1.0);
    }
}

// The scale is a float's (half an ulp each from sum and root), and so are the normalised rows:
// angles off by some 1e-7, magnified where the pitch nears a pole.
TEST(DecomposeLw, FindsTheTranslationRotationAndScaleOfAComposedMatrix) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> turn(-pi, pi), pitch(-1.4, 1.4), size(0.01, 100),
        position(-1e6, 1e6);
    for (int round = 0; round < 500; round++) {
        const double scale[3] = {size(random), size(random), size(random)};
        const double angles[3] = {turn(random), pitch(random), turn(random)};
        const double move[3] = {position(random), position(random), position(random)};
        const Parts parts = parts_of(composed(scale, angles, move));
        for (int i = 0; i < 3; i++) {
            EXPECT_EQ(parts.translation[i], move[i]);
            EXPECT_NEAR(parts.scale[i] / scale[i], 1, 2e-7);
            EXPECT_NEAR(parts.rotation[i], angles[i], 2e-6);
        }
    }
}

TEST(DecomposeLw, TheScaleIsASinglePrecisionRoot) {
    // The sum of squares in double, rounded to float, rooted in float.
    const double rows[] = {0.1, 3.3, 1e-5, 12345.678};
    for (double length : rows) {
        DblMatrix4 m = DblMatrix4::the_identity();
        m(0, 0) = length;
        const Parts parts = parts_of(m);
        EXPECT_EQ(parts.scale[0], double(sqrtf(float(length * length)))) << length;
        EXPECT_EQ(parts.scale[0], double(float(parts.scale[0]))) << length;
        EXPECT_EQ(parts.scale[1], 1.0);
    }
    EXPECT_NE(parts_of(identity_with(0, 0, 0.1)).scale[0], 0.1);
}

// 2.25 + 2 * 0.0003^2 lies nearest to the float above 2.25; added one after the other in float,
// both squares would be lost. The rows are orthogonal to within 1e-7.
TEST(DecomposeLw, TheSumOfSquaresIsTakenInDouble) {
    const double s = 0.0003;
    ASSERT_EQ(2.25f + float(s * s), 2.25f);
    const float sum = float(2.25 + s * s + s * s);
    ASSERT_GT(sqrtf(sum), 1.5f);

    const DblMatrix4 m = matrix<double>({1.5, s, s, 0, -s, 1.5, 0, 0, -s, 0, 1.5, 0, 0, 0, 0, 1});
    EXPECT_EQ(parts_of(m).scale[0], double(sqrtf(sum)));
}

TEST(DecomposeLw, ScalesComeOutPositive) {
    const double scale[3] = {2, -3, 4}, angles[3] = {0, 0, 0}, move[3] = {0, 0, 0};
    const Parts parts = parts_of(composed(scale, angles, move));
    EXPECT_EQ(parts.scale[0], 2.0);
    EXPECT_EQ(parts.scale[1], 3.0);
    EXPECT_EQ(parts.scale[2], 4.0);
}

TEST(DecomposeLw, TheRotationIsThatOfTheNormalisedRows) {
    // A mirrored matrix keeps its mirrored rows: bank atan2(0, -1).
    const double scale[3] = {2, -3, 4}, angles[3] = {0, 0, 0}, move[3] = {0, 0, 0};
    const Parts parts = parts_of(composed(scale, angles, move));
    EXPECT_EQ(parts.rotation[0], 0.0);
    EXPECT_EQ(parts.rotation[1], 0.0);
    EXPECT_NEAR(parts.rotation[2], pi, 1e-15);
}

// ---- Matrices that are not affine ------------------------------------------------------------

TEST(DecomposeLw, ThrowsTheWholeAffineCheck) {
    try {
        parts_of(identity_with(3, 3, 1.0002));
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, affine_text);
        EXPECT_STREQ(x.file, "newmatrix");
        EXPECT_EQ(spelled_by_gcc(x.function), signature);
        EXPECT_EQ(x.line, 133);
        EXPECT_EQ(stderr_of([&] { x.print(); }), std::string("Assertion Failed: '") + affine_text +
                                                     "' in <" + signature + "> (newmatrix:133)\n");
    }
}

TEST(DecomposeLw, ToleratesLessThanEpsilonInTheLastColumn) {
    // 0.0001 in single precision, and its neighbours there. A double just below it becomes it.
    const double at = 0.0001f, below = std::nextafterf(0.0001f, 0);
    const double just_below = std::nextafter(at, 0);
    struct {
        double value;
        int line;
    } const cases[] = {
        {0, 0},          {0.00005, 0},      {-0.00005, 0},       {below, 0},
        {-below, 0},     {at, 133},         {-at, 133},          {0.0002, 133},
        {-0.0002, 133},  {just_below, 133}, {not_a_number, 133}, {1e30, 133},
        {infinity, 133},
    };
    for (int row = 0; row < 3; row++)
        for (const auto& c : cases)
            EXPECT_EQ(failing_line(identity_with(row, 3, c.value)), c.line)
                << row << ' ' << c.value;
}

TEST(DecomposeLw, ToleratesLessThanEpsilonAroundTheLastElement) {
    struct {
        double value;
        int line;
    } const cases[] = {
        {1, 0},        {1.00005, 0},   {0.99995, 0}, {1.00009, 0},        {1.0002, 133},
        {0.9998, 133}, {1.00011, 133}, {0, 133},     {not_a_number, 133},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failing_line(identity_with(3, 3, c.value)), c.line) << c.value;
}

// ---- Matrices with skew ----------------------------------------------------------------------

TEST(DecomposeLw, ThrowsTheWholeSkewCheck) {
    try {
        parts_of(identity_with(0, 1, 0.5));
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, skew_text);
        EXPECT_STREQ(x.file, "newmatrix");
        EXPECT_EQ(spelled_by_gcc(x.function), signature);
        EXPECT_EQ(x.line, 156);
        EXPECT_EQ(stderr_of([&] { x.print(); }), std::string("Assertion Failed: '") + skew_text +
                                                     "' in <" + signature + "> (newmatrix:156)\n");
    }
}

TEST(DecomposeLw, ChecksEveryPairOfRows) {
    const int pairs[][2] = {{0, 1}, {0, 2}, {1, 2}, {1, 0}, {2, 0}, {2, 1}};
    for (const auto& pair : pairs) {
        EXPECT_EQ(failing_line(identity_with(pair[0], pair[1], 0.0002)), 156);
        EXPECT_EQ(failing_line(identity_with(pair[0], pair[1], -0.0002)), 156);
        EXPECT_EQ(failing_line(identity_with(pair[0], pair[1], 0.00005)), 0);
        EXPECT_EQ(failing_line(identity_with(pair[0], pair[1], not_a_number)), 156);
    }
}

TEST(DecomposeLw, MeasuresSkewOnNormalisedRows) {
    // The dot product is 0.00005 * 1000 unnormalised, 0.00005 normalised.
    DblMatrix4 m = DblMatrix4::the_identity();
    m(0, 0) = 1000;
    m(1, 0) = 0.00005;
    EXPECT_EQ(failing_line(m), 0);
    m(0, 0) = 0.001;
    m(1, 0) = 0.0002;
    EXPECT_EQ(failing_line(m), 156);
}

TEST(DecomposeLw, ARowOfZerosHasNoDirection) {
    for (int row = 0; row < 3; row++)
        EXPECT_EQ(failing_line(identity_with(row, row, 0)), 156);
}

TEST(DecomposeLw, TheAffineCheckComesFirst) {
    DblMatrix4 m = identity_with(0, 1, 0.5);
    m(0, 3) = 1;
    EXPECT_EQ(failing_line(m), 133);
}
