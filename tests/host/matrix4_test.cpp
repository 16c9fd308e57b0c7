// SPDX-License-Identifier: BSD-3-Clause
#include <array>
#include <cmath>
#include <DDImage/Matrix4.h>
#include <gtest/gtest.h>
#include <sstream>

using DD::Image::Matrix4;
using DD::Image::Vector3;
using DD::Image::Vector4;

// A few roundings in single precision of numbers up to about ten.
static const float rounding = 4e-6f;

static const float right_angle = 1.5707964f;

static Matrix4 columns(const std::array<float, 16>& elements) {
    return Matrix4(elements.data());
}

TEST(Matrix4, AppliesTheRightFactorFirst) {
    const Matrix4 scale = columns({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1});
    const Matrix4 move = columns({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1});
    const Matrix4 moved_then_scaled = columns({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 10, 18, 28, 1});
    const Matrix4 scaled_then_moved = columns({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 5, 6, 7, 1});
    EXPECT_EQ(scale * move, moved_then_scaled);
    EXPECT_EQ(move * scale, scaled_then_moved);
}

TEST(Matrix4, TakesRowsByColumnsInAllSixteenPlaces) {
    // Of matrices p qᵀ and r sᵀ the product is (q · r) p sᵀ, in whole numbers without rounding.
    Matrix4 left, right, expected;
    const float p[4] = {1, 2, 3, 5}, q[4] = {1, -1, 2, 4}, r[4] = {3, 1, 2, -1},
                s[4] = {2, 7, 1, 8};
    const float dot = 1 * 3 - 1 * 1 + 2 * 2 - 4 * 1; // q · r
    for (int column = 0; column < 4; column++) {
        for (int row = 0; row < 4; row++) {
            left[column][row] = p[row] * q[column];
            right[column][row] = r[row] * s[column];
            expected[column][row] = p[row] * dot * s[column];
        }
    }
    EXPECT_EQ(left * right, expected);
}

TEST(Matrix4, AddsFromTheFirstProductToTheLastInSinglePrecision) {
    // In float 1e8 + 1 is 1e8: only this order keeps the last 1.
    const Matrix4 a = columns({1e8f, 0, 0, 0, 1, 0, 0, 0, -1e8f, 0, 0, 0, 1, 0, 0, 0});
    const Matrix4 b = columns({1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ((a * b).a00, 1);
}

// a<row><column> counts 10 * row + column.
static Matrix4 numbered() {
    Matrix4 m;
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            m[column][row] = float(10 * row + column);
    return m;
}

static void expect_near(const Vector3& a, const Vector3& b) {
    EXPECT_NEAR(a.x, b.x, rounding);
    EXPECT_NEAR(a.y, b.y, rounding);
    EXPECT_NEAR(a.z, b.z, rounding);
}

static void expect_near(const Matrix4& a, const Matrix4& b) {
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(a.array()[i], b.array()[i], rounding) << "element " << i;
}

TEST(Matrix4, LiesInMemoryColumnByColumn) {
    const Matrix4 m = numbered();
    EXPECT_EQ(m.a00, 0);
    EXPECT_EQ(m.a10, 10);
    EXPECT_EQ(m.a32, 32);
    EXPECT_EQ(m.a03, 3);
    EXPECT_EQ(m.array()[1], 10);  // a10
    EXPECT_EQ(m.array()[4], 1);   // a01
    EXPECT_EQ(m.array()[14], 23); // a23
    EXPECT_EQ(m.translation(), Vector3(3, 13, 23));
    EXPECT_EQ(m.x_axis(), Vector3(0, 10, 20));
    EXPECT_EQ(m.y_axis(), Vector3(1, 11, 21));
    EXPECT_EQ(m.z_axis(), Vector3(2, 12, 22));
    float columns_of_m[16];
    std::copy(m.array(), m.array() + 16, columns_of_m);
    EXPECT_EQ(Matrix4(columns_of_m), m);
}

TEST(Matrix4, BecomesTheIdentity) {
    Matrix4 m = numbered();
    m.makeIdentity();
    EXPECT_EQ(m, columns({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(m, Matrix4::identity());
}

TEST(Matrix4, AddsSubtractsAndScalesEveryElement) {
    const Matrix4 m = numbered();
    EXPECT_EQ(m + m, m * 2);
    EXPECT_EQ(m * 3 - m, m * 2);
    EXPECT_EQ((m * 2).a31, 62);
    EXPECT_NE(m + m, m);
}

TEST(Matrix4, TransformsPointsDirectionsAndNormals) {
    // Scales by (2, 3, 4) and then moves by (10, 20, 30).
    const Matrix4 m = columns({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 10, 20, 30, 1});
    EXPECT_EQ(m.transform(Vector3(1, 1, 1)), Vector3(12, 23, 34));
    EXPECT_EQ(m.vtransform(Vector3(1, 1, 1)), Vector3(2, 3, 4));
    EXPECT_EQ(m * Vector4(1, 1, 1, 2), Vector4(22, 43, 64, 2));
    EXPECT_EQ(m.transform(Vector3(1, 1, 1), 2), Vector4(22, 43, 64, 2));
    // A plane's normal is transformed by the transposed inverse.
    const Vector3 on_plane(6, -2, 0), normal(1, 3, 5); // at right angles
    EXPECT_EQ(normal.dot(on_plane), 0);
    const Vector3 moved = m.inverse().ntransform(normal);
    EXPECT_NEAR(moved.dot(m.vtransform(on_plane)), 0, rounding);
    EXPECT_EQ(numbered().ntransform(Vector3(1, 2, 3)),
              Vector3(0 + 20 + 60, 1 + 22 + 63, 2 + 24 + 66));
}

TEST(Matrix4, TurnsRowsIntoColumns) {
    const Matrix4 m = numbered(), t = m.transpose();
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            EXPECT_EQ(t[column][row], m[row][column]);
}

TEST(Matrix4, HasTheDeterminantOfItsRows) {
    // Of a triangular matrix it is the product of the diagonal.
    EXPECT_EQ(columns({2, 0, 0, 0, 5, 3, 0, 0, 1, 1, 4, 0, 9, 8, 7, 5}).determinant(), 120);
    // Swapping two columns changes the sign.
    EXPECT_EQ(columns({5, 3, 0, 0, 2, 0, 0, 0, 1, 1, 4, 0, 9, 8, 7, 5}).determinant(), -120);
    EXPECT_EQ(numbered().determinant(), 0); // neighbouring rows differ by the same row
    EXPECT_EQ(Matrix4::identity().determinant(), 1);
}

TEST(Matrix4, IsUndoneByItsInverse) {
    // Scaled by (2, 4, 8), x and y exchanged, moved: the inverse has exact elements.
    const Matrix4 m = columns({0, 2, 0, 0, 4, 0, 0, 0, 0, 0, 8, 0, 1, 2, 3, 1});
    const Matrix4 expected =
        columns({0, 0.25f, 0, 0, 0.5f, 0, 0, 0, 0, 0, 0.125f, 0, -1, -0.25f, -0.375f, 1});
    EXPECT_EQ(m.inverse(), expected);
    EXPECT_EQ(m * m.inverse(), Matrix4::identity());
    // Also with another last row.
    const Matrix4 general = columns({2, 1, 0, 1, 0, 3, 1, 0, 1, 0, 2, 1, 0, 1, 0, 1});
    expect_near(general.inverse() * general, Matrix4::identity());
    expect_near(general * general.inverse(), Matrix4::identity());
}

TEST(Matrix4, HasNoFiniteInverseWhenItIsSingular) {
    const Matrix4 inverse = numbered().inverse();
    for (int i = 0; i < 16; i++)
        EXPECT_FALSE(std::isfinite(inverse.array()[i])) << "element " << i;
}

TEST(Matrix4, BecomesATransformation) {
    Matrix4 m = numbered();
    m.translation(1, 2, 3);
    EXPECT_EQ(m, columns({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}));
    m.translation(Vector3(4, 5, 6));
    EXPECT_EQ(m, columns({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 5, 6, 1}));
    m.scaling(2, 3, 4);
    EXPECT_EQ(m, columns({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
    m.scaling(5);
    EXPECT_EQ(m, columns({5, 0, 0, 0, 0, 5, 0, 0, 0, 0, 5, 0, 0, 0, 0, 1}));
}

TEST(Matrix4, TurnsEachAxisTowardsTheNextOne) {
    Matrix4 about_x = numbered(), about_y = numbered(), about_z = numbered();
    about_x.rotationX(right_angle);
    about_y.rotationY(right_angle);
    about_z.rotationZ(right_angle);
    const Vector3 x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    expect_near(about_x.transform(y), z);
    expect_near(about_x.transform(z), -y);
    expect_near(about_x.transform(x), x);
    expect_near(about_y.transform(z), x);
    expect_near(about_y.transform(x), -z);
    expect_near(about_z.transform(x), y);
    expect_near(about_z.transform(y), -x);
}

TEST(Matrix4, MultipliesOnFromTheRight) {
    // The last factor applies first: scaled, then translated, then rotated.
    Matrix4 m;
    m.makeIdentity();
    m.rotateZ(right_angle);
    m.translate(10, 0, 0);
    m.scale(2, 3, 4);
    expect_near(m.transform(Vector3(1, 1, 1)), Vector3(-3, 12, 4)); // (2,3,4) (12,3,4) (-3,12,4)

    Matrix4 same;
    same.makeIdentity();
    same.rotate(right_angle);
    same.translate(Vector3(10, 0, 0));
    same.scale(Vector3(2, 3, 4));
    EXPECT_EQ(same, m);

    Matrix4 turned;
    turned.makeIdentity();
    turned.rotateX(right_angle);
    turned.rotateY(right_angle);
    expect_near(turned.transform(Vector3(1, 0, 0)), Vector3(0, 1, 0)); // x to -z, and that to y
    turned.scale(2);
    expect_near(turned.transform(Vector3(1, 0, 0)), Vector3(0, 2, 0));
}

TEST(Matrix4, SkewsXByY) {
    Matrix4 m;
    m.makeIdentity();
    m.skew(right_angle / 2); // of tangent 1
    expect_near(m.transform(Vector3(1, 2, 3)), Vector3(3, 2, 3));
}

static Vector3 projected(const Matrix4& projection, float x, float y, float z) {
    return projection.transform(Vector3(x, y, z), 1).divide_w();
}

TEST(Matrix4, ProjectsWhatACameraSeesOntoASquare) {
    // A 50 mm lens before an aperture 25 mm wide sees a quarter to each side at distance 1.
    Matrix4 m;
    m.projection(50.f / 25, 2, 10);
    expect_near(projected(m, 0.5f, 0.25f, -2), Vector3(1, 0.5f, -1));
    expect_near(projected(m, -2.5f, 0, -10), Vector3(-1, 0, 1));
    // Depths go by a - b / distance: with -1 at 2 and 1 at 10, a is 1.5 and b is 5.
    expect_near(projected(m, 0, -1, -4), Vector3(0, -1, 0.25f));
}

TEST(Matrix4, ProjectsInParallelToo) {
    Matrix4 m;
    m.projection(0.5f, 2, 10, false);
    for (const float z : {-2.f, -6.f, -10.f})
        expect_near(projected(m, 1, -0.5f, z), Vector3(1, -0.5f, (-z - 6) / 4));
}

TEST(Matrix4, KeepsOnlyOnePartOfATransformation) {
    Matrix4 m;
    m.makeIdentity();
    m.translate(1, 2, 3);
    m.rotateZ(right_angle);
    m.scale(2, 3, 4);
    Matrix4 moved = m, turned = m, scaled = m, expected;
    moved.translationOnly();
    expected.translation(1, 2, 3);
    EXPECT_EQ(moved, expected);
    turned.rotationOnly();
    expected.rotationZ(right_angle);
    expect_near(turned, expected);
    scaled.scaleOnly();
    expected.scaling(2, 3, 4);
    expect_near(scaled, expected);
}

TEST(Matrix4, LeavesAxesWithoutLengthAlone) {
    Matrix4 m = columns({0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 7, 8, 9, 1});
    m.rotationOnly();
    EXPECT_EQ(m, columns({0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(Matrix4, HashesEveryElement) {
    const Matrix4 m = numbered();
    DD::Image::Hash of_m;
    m.append(of_m);
    for (int i = 0; i < 16; i++) {
        Matrix4 other = m;
        other[0][i] += 1;
        DD::Image::Hash of_other;
        other.append(of_other);
        EXPECT_NE(of_m, of_other) << "element " << i;
    }
}

TEST(Matrix4, PrintsRowByRow) {
    std::ostringstream out;
    out << numbered();
    EXPECT_EQ(out.str(), "0 1 2 3\n10 11 12 13\n20 21 22 23\n30 31 32 33\n");
}
