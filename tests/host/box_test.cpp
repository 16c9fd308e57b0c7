// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Box.h>
#include <gtest/gtest.h>

using DD::Image::Box;

static const Box picture(2, 3, 10, 7);

TEST(Box, IsOnePixelAtTheOriginAtFirst) {
    EXPECT_EQ(Box(), Box(0, 0, 1, 1));
    EXPECT_TRUE(Box().is_constant());
}

TEST(Box, CountsTheColumnsAndRowsOfAHalfOpenRectangle) {
    EXPECT_EQ(picture.w(), 8);
    EXPECT_EQ(picture.h(), 4);
    EXPECT_EQ(picture.area(), 32);
    EXPECT_EQ(picture.center_x(), 6);
    EXPECT_EQ(picture.center_y(), 5);
    EXPECT_EQ(Box(0, 0, 3, 1).center_x(), 1.5f);
}

TEST(Box, HasAreasBeyondWhatAnIntHolds) {
    EXPECT_EQ(Box(0, 0, 1 << 20, 1 << 20).area(), 1L << 40);
}

TEST(Box, SetsEachSideAlone) {
    Box box = picture;
    box.x(-1);
    box.y(-2);
    box.r(20);
    box.t(30);
    EXPECT_EQ(box, Box(-1, -2, 20, 30));
    box.set(1, 2, 3, 4);
    EXPECT_EQ(box, Box(1, 2, 3, 4));
    box.set(picture);
    EXPECT_EQ(box, picture);
    box.clear();
    EXPECT_EQ(box, Box());
}

TEST(Box, IsConstantWithOnePixelOrNone) {
    EXPECT_TRUE(Box(5, 5, 6, 6).is_constant());
    EXPECT_TRUE(Box(5, 5, 5, 5).is_constant());
    EXPECT_FALSE(Box(5, 5, 7, 6).is_constant());
    EXPECT_FALSE(Box(5, 5, 6, 7).is_constant());
}

TEST(Box, MovesAndGrows) {
    Box box = picture;
    box.move(10, -3);
    EXPECT_EQ(box, Box(12, 0, 20, 4));
    box.pad(2);
    EXPECT_EQ(box, Box(10, -2, 22, 6));
    box.pad(1, 2, 3, 4);
    EXPECT_EQ(box, Box(11, 0, 25, 10));
}

TEST(Box, MergesToWhatHoldsBoth) {
    Box box = picture;
    box.merge(Box(0, 5, 4, 20));
    EXPECT_EQ(box, Box(0, 3, 10, 20));
}

TEST(Box, MergesAPixelToo) {
    Box box = picture;
    box.merge(20, 1);
    EXPECT_EQ(box, Box(2, 1, 21, 7));
    box.merge(2, 30, 5, 33);
    EXPECT_EQ(box, Box(2, 1, 21, 33));
    Box constant;
    constant.merge(5, 6);
    EXPECT_EQ(constant, Box(5, 6, 6, 7));
}

TEST(Box, TakesConstantBoxesForNothingWhenItMerges) {
    Box box = picture;
    box.merge(Box(100, 100, 101, 101));
    EXPECT_EQ(box, picture);
    Box constant;
    constant.merge(picture);
    EXPECT_EQ(constant, picture);
}

TEST(Box, IntersectsToWhatBothHold) {
    Box box = picture;
    box.intersect(Box(4, 0, 20, 5));
    EXPECT_EQ(box, Box(4, 3, 10, 5));
    box.intersect(5, 0, 9, 9);
    EXPECT_EQ(box, Box(5, 3, 9, 5));
}

TEST(Box, IsOnePixelWhenAnIntersectionIsEmpty) {
    for (const Box& apart :
         {Box(10, 3, 12, 7), Box(0, 0, 2, 9), Box(2, 7, 10, 9), Box(2, 0, 9, 3)}) {
        Box box = picture;
        box.intersect(apart);
        EXPECT_EQ(box, Box());
    }
}

TEST(Box, ClampsToItsFirstAndLastPixel) {
    EXPECT_EQ(picture.clampx(-100), 2);
    EXPECT_EQ(picture.clampx(2), 2);
    EXPECT_EQ(picture.clampx(9), 9);
    EXPECT_EQ(picture.clampx(10), 9);
    EXPECT_EQ(picture.clampy(2), 3);
    EXPECT_EQ(picture.clampy(6), 6);
    EXPECT_EQ(picture.clampy(7), 6);
}
