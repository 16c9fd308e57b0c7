// SPDX-License-Identifier: BSD-3-Clause
#include "stars/host_camera.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace velmora;

namespace {

const float host_identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// p · m.
VectorN<double, 4> times(const VectorN<double, 4>& p, const DblMatrix4& m) {
    VectorN<double, 4> out;
    for (int j = 0; j < 4; j++)
        out[j] = p[0] * m(0, j) + p[1] * m(1, j) + p[2] * m(2, j) + p[3] * m(3, j);
    return out;
}

} // namespace

TEST(HostCamera, LeavesTheCameraOfAnIdentityAtTheOrigin) {
    const camera c = camera_of_host(host_identity, 50);
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(c.matrix(i, j), i == j) << i << ", " << j;
    EXPECT_EQ(c.focal, 50);
    EXPECT_EQ(c.near, 0.10000000149011612);
    EXPECT_EQ(c.far, -1.0);
}

TEST(HostCamera, HasAFocalLengthForViewsWithoutCamera) {
    EXPECT_EQ(focal_without_camera, 3.2000000476837158);
}

// The host's matrix is translation (1, 2, 3) x a quarter turn about y x scale (2, 4, 8). The turn
// takes x to -z and z to x, so, column by column:
//
//     | 0 0 8 1 |       read row by row:  | 0 0 -2 0 |   z reversed:  |  0 0  2 0 |
//     | 0 4 0 2 |                         | 0 4  0 0 |                |  0 4  0 0 |
//     |-2 0 0 3 |                         | 8 0  0 0 |                | -8 0  0 0 |
//     | 0 0 0 1 |                         | 1 2  3 1 |                |  1 2 -3 1 |
//
// The inverse of the 3 x 3 block B has rows (0, 0, -1/8), (0, 1/4, 0), (1/2, 0, 0), and its last
// row is -(1, 2, -3) · B^-1 = -(-3/2, 1/2, -1/8). Powers of two: every step is exact.
TEST(HostCamera, InvertsTheHostsMatrixWithZReversedOnBothSides) {
    const float columns[16] = {0, 0, -2, 0, 0, 4, 0, 0, 8, 0, 0, 0, 1, 2, 3, 1};
    const double expected[4][4] = {
        {0, 0, -0.125, 0}, {0, 0.25, 0, 0}, {0.5, 0, 0, 0}, {1.5, -0.5, 0.125, 1}};
    const camera c = camera_of_host(columns, 35);
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(c.matrix(i, j), expected[i][j]) << i << ", " << j;
    EXPECT_EQ(c.focal, 35);
}

// Five units in front of the host's camera, along its -z, lies 5 along +z of the renderer's.
TEST(HostCamera, LooksAlongPlusZWhereTheHostLooksAlongMinusZ) {
    const float columns[16] = {0, 0, -2, 0, 0, 4, 0, 0, 8, 0, 0, 0, 1, 2, 3, 1};
    const double host_point[3] = {8 * -5.0 + 1, 2, 3}; // the matrix times (0, 0, -5, 1)
    const VectorN<double, 4> p = {{host_point[0], host_point[1], -host_point[2], 1}};
    const VectorN<double, 4> seen = times(p, camera_of_host(columns, 1).matrix);
    EXPECT_EQ(seen[0], 0);
    EXPECT_EQ(seen[1], 0);
    EXPECT_EQ(seen[2], 5);
    EXPECT_EQ(seen[3], 1);
}

// A matrix with every element set, to distinguish the third row and column from the rest: what comes
// out must undo the widened, transposed and reversed matrix.
TEST(HostCamera, ReversesTheThirdRowAndColumnOfAnyMatrix) {
    const float columns[16] = {2, 1, 3, 0.5f, -1, 4, 1, 0.25f, 5, 2, 7, 0.75f, 3, 6, 2, 9};
    const camera c = camera_of_host(columns, 1);
    for (int i = 0; i < 4; i++) {
        VectorN<double, 4> row;
        for (int j = 0; j < 4; j++)
            row[j] = double(columns[4 * i + j]) * ((i == 2) != (j == 2) ? -1 : 1);
        const VectorN<double, 4> product = times(row, c.matrix);
        for (int j = 0; j < 4; j++) // a few roundings of numbers near 1
            EXPECT_NEAR(product[j], i == j, 1e-13) << i << ", " << j;
    }
}

TEST(HostCamera, WarnsOfASingularMatrixAndCarriesOn) {
    const float flat[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    testing::internal::CaptureStderr();
    const camera c = camera_of_host(flat, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "warning: matrix appears to be singular; inverse may not be reliable in "
              "<Matrix4<real> Matrix4<real>::inverse() const [with real = double]>\n");
    EXPECT_FALSE(std::isfinite(c.matrix(2, 2)));
}
