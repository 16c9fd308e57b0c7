#include <array>
#include <DDImage/Matrix4.h>
#include <gtest/gtest.h>

using DD::Image::Matrix4;

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
    // In float 1e8 + 1 is 1e8, so only this order leaves the last 1.
    const Matrix4 a = columns({1e8f, 0, 0, 0, 1, 0, 0, 0, -1e8f, 0, 0, 0, 1, 0, 0, 0});
    const Matrix4 b = columns({1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ((a * b).a00, 1);
}
