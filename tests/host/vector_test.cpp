// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Vector2.h>
#include <DDImage/Vector4.h>
#include <gtest/gtest.h>

using DD::Image::Vector2;
using DD::Image::Vector3;
using DD::Image::Vector4;

TEST(Vector2, CountsWithPairs) {
    EXPECT_EQ(Vector2(), Vector2(0, 0));
    EXPECT_EQ(Vector2(1, 2) + Vector2(10, 20), Vector2(11, 22));
    EXPECT_EQ(Vector2(1, 2) - Vector2(10, 20), Vector2(-9, -18));
    EXPECT_EQ(Vector2(1, 2) * 4, Vector2(4, 8));
    EXPECT_EQ(Vector2(4, 8) / 4, Vector2(1, 2));
    EXPECT_EQ(Vector2(1, 2).dot(Vector2(3, 5)), 13);
    EXPECT_EQ(Vector2(3, 4).length(), 5);
    EXPECT_EQ(Vector2(3, 4).lengthSquared(), 25);
    Vector2 v(1, 2);
    v += Vector2(1, 1);
    v *= 3;
    v -= Vector2(0, 1);
    EXPECT_EQ(v, Vector2(6, 8));
    v[1] = 7;
    EXPECT_EQ(v, Vector2(6, 7));
    v.set(0, 9);
    EXPECT_NE(v, Vector2());
    EXPECT_EQ(v[1], 9);
}

TEST(Vector3, CountsWithTriples) {
    EXPECT_EQ(Vector3(2), Vector3(2, 2, 2));
    EXPECT_EQ(-Vector3(1, 2, 3), Vector3(-1, -2, -3));
    EXPECT_EQ(Vector3(1, 2, 3) + Vector3(10, 20, 30), Vector3(11, 22, 33));
    EXPECT_EQ(Vector3(1, 2, 3) - Vector3(10, 20, 30), Vector3(-9, -18, -27));
    EXPECT_EQ(Vector3(1, 2, 3) * 2, Vector3(2, 4, 6));
    EXPECT_EQ(Vector3(2, 4, 6) / 2, Vector3(1, 2, 3));
    EXPECT_EQ(Vector3(1, 2, 3).dot(Vector3(4, 5, 6)), 32);
    EXPECT_EQ(Vector3(1, 0, 0).cross(Vector3(0, 1, 0)), Vector3(0, 0, 1));
    EXPECT_EQ(Vector3(1, 2, 3).cross(Vector3(4, 5, 6)), Vector3(-3, 6, -3));
    EXPECT_EQ(Vector3(2, 3, 6).length(), 7);
    EXPECT_EQ(Vector3(2, 3, 6).lengthSquared(), 49);
    Vector3 v(1, 2, 3);
    v += Vector3(1);
    v -= Vector3(0, 0, 1);
    v *= 6;
    v /= 3;
    EXPECT_EQ(v, Vector3(4, 6, 6));
    v.set(0, 0, 5);
    v[0] = 12;
    EXPECT_EQ(v[0], 12);
    EXPECT_EQ(v.normalize(), 13);
    EXPECT_FLOAT_EQ(v.x, 12.f / 13);
    EXPECT_FLOAT_EQ(v.z, 5.f / 13);
}

TEST(Vector3, HasNoDirectionWithoutLength) {
    Vector3 v;
    EXPECT_EQ(v.normalize(), 0);
    EXPECT_EQ(v, Vector3(0, 0, 0));
}

TEST(Vector4, IsAHomogeneousPoint) {
    EXPECT_EQ(Vector4(Vector3(1, 2, 3), 4), Vector4(1, 2, 3, 4));
    EXPECT_EQ(Vector4(2, 4, 6, 2).divide_w(), Vector3(1, 2, 3));
    EXPECT_EQ(Vector4(2, 4, 6, 2).truncate_w(), Vector3(2, 4, 6));
    EXPECT_EQ(Vector4(1, 2, 3, 4) + Vector4(1, 1, 1, 1), Vector4(2, 3, 4, 5));
    EXPECT_EQ(Vector4(1, 2, 3, 4) - Vector4(1, 1, 1, 1), Vector4(0, 1, 2, 3));
    EXPECT_EQ(Vector4(1, 2, 3, 4) * 2, Vector4(2, 4, 6, 8));
    Vector4 v;
    for (int i = 0; i < 4; i++)
        v[i] = float(i);
    EXPECT_EQ(v, Vector4(0, 1, 2, 3));
    EXPECT_NE(v, Vector4());
}
