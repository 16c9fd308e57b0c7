// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/checks.h"

#include <cstring>
#include <DDImage/Row.h>
#include <gtest/gtest.h>

using namespace DD::Image;

TEST(Row, IsZeroInAllChannelsAtFirst) {
    const Row row(3, 7);
    EXPECT_EQ(row.getLeft(), 3);
    EXPECT_EQ(row.getRight(), 7);
    EXPECT_TRUE(row.writable_channels().empty());
    for (const Channel z : {Chan_Red, Chan_Z, Chan_Last}) {
        EXPECT_TRUE(row.is_zero(z));
        for (int x = 3; x < 7; x++)
            EXPECT_EQ(row[z][x], 0);
    }
}

TEST(Row, CountsColumnsAbsolutely) {
    for (const int left : {-5, 0, 100000}) {
        Row row(left, left + 4);
        float* const samples = row.writable(Chan_Green);
        for (int x = left; x < left + 4; x++)
            samples[x] = float(x);
        for (int x = left; x < left + 4; x++)
            EXPECT_EQ(row[Chan_Green][x], float(x));
    }
}

TEST(Row, KeepsItsChannelsApart) {
    Row row(0, 2);
    row.writableConstant(1, Chan_Red);
    row.writableConstant(2, Chan_Blue);
    EXPECT_EQ(row[Chan_Red][1], 1);
    EXPECT_EQ(row[Chan_Blue][1], 2);
    EXPECT_EQ(row[Chan_Green][1], 0);
    EXPECT_EQ(row.writable_channels(), ChannelSet(Mask_Red) + Mask_Blue);
}

TEST(Row, FillsTheWholeSpanWithAConstant) {
    Row row(-2, 3);
    const float* const samples = row.writableConstant(0.5f, Chan_Alpha);
    EXPECT_EQ(samples, row[Chan_Alpha]);
    for (int x = -2; x < 3; x++)
        EXPECT_EQ(samples[x], 0.5f);
}

TEST(Row, IsZeroAgainWhereItIsErased) {
    Row row(0, 2);
    for (const Channel z : {Chan_Red, Chan_Green, Chan_Blue, Chan_Alpha})
        row.writableConstant(1, z);
    row.erase(Chan_Red);
    row.erase(ChannelSet(Mask_Blue) + Mask_Z);
    EXPECT_TRUE(row.is_zero(Chan_Red));
    EXPECT_EQ(row[Chan_Red][0], 0);
    EXPECT_TRUE(row.is_zero(Chan_Blue));
    EXPECT_FALSE(row.is_zero(Chan_Green));
    EXPECT_EQ(row[Chan_Green][0], 1);
    EXPECT_EQ(row.writable_channels(), ChannelSet(Mask_Green) + Mask_Alpha);
}

TEST(Row, CopiesASpanOfChosenChannels) {
    Row source(0, 10), row(2, 8);
    float* const red = source.writable(Chan_Red);
    for (int x = 0; x < 10; x++)
        red[x] = float(x);
    source.writableConstant(7, Chan_Green);
    row.writableConstant(-1, Chan_Red);
    row.writableConstant(-1, Chan_Green);
    row.writableConstant(-1, Chan_Blue);
    row.copy(source, ChannelSet(Mask_Red) + Mask_Blue, 4, 6);
    const float expected[] = {-1, -1, 4, 5, -1, -1};
    for (int x = 2; x < 8; x++) {
        EXPECT_EQ(row[Chan_Red][x], expected[x - 2]);
        EXPECT_EQ(row[Chan_Green][x], -1);
        EXPECT_EQ(row[Chan_Blue][x], x == 4 || x == 5 ? 0 : -1); // zero in the source
    }
}

TEST(Row, StartsAnewOverAnotherSpan) {
    Row row(0, 2);
    row.writableConstant(1, Chan_Red);
    EXPECT_EQ(row[Chan_Z][1], 0);
    row.range(10, 13);
    EXPECT_EQ(row.getLeft(), 10);
    EXPECT_EQ(row.getRight(), 13);
    EXPECT_TRUE(row.is_zero(Chan_Red));
    EXPECT_EQ(row[Chan_Z][12], 0);
    row.writableConstant(2, Chan_Red);
    EXPECT_EQ(row[Chan_Red][12], 2);
}

TEST(Row, HasNoColumnsWhenItEndsBeforeItStarts) {
    Row row(5, 3);
    EXPECT_EQ(row.getLeft(), 5);
    EXPECT_EQ(row.getRight(), 5);
    row.writableConstant(1, Chan_Red);
    EXPECT_FALSE(row.is_zero(Chan_Red));
}

// ---- while plug-ins are checked ----------------------------------------------------------------

class WatchedRow : public testing::Test {
protected:
    WatchedRow() { velmora::host::set_checks_plugins(true); }
    ~WatchedRow() override { velmora::host::set_checks_plugins(before); }

private:
    const bool before = velmora::host::checks_plugins();
};

TEST_F(WatchedRow, FindsNothingWhenTheSpanIsKeptTo) {
    Row row(10, 20);
    EXPECT_EQ(row.written_beside(), Chan_Black);
    for (const Channel z : {Chan_Red, Chan_Alpha}) {
        float* const samples = row.writable(z);
        for (int x = 10; x < 20; x++)
            samples[x] = float(x);
    }
    EXPECT_EQ(row.written_beside(), Chan_Black);
}

TEST_F(WatchedRow, FindsTheChannelThatWasWrittenBesideTheSpan) {
    for (const int column : {9, 20, -22, 51}) { // up to 32 columns before and after
        Row row(10, 20);
        row.writableConstant(1, Chan_Red);
        row.writable(Chan_Alpha)[column] = 1;
        EXPECT_EQ(row.written_beside(), Chan_Alpha) << column;
    }
}

TEST_F(WatchedRow, FindsZerosAndNumbersThatAreNone) {
    for (const unsigned bits : {0u, 0x7fc00000u, 0xffffffffu}) {
        Row row(0, 4);
        std::memcpy(row.writable(Chan_Blue) + 4, &bits, sizeof bits);
        EXPECT_EQ(row.written_beside(), Chan_Blue) << bits;
    }
}

TEST_F(WatchedRow, RemembersWhatWasErased) {
    Row row(0, 4);
    row.writable(Chan_Red)[4] = 1;
    row.erase(Chan_Red);
    EXPECT_EQ(row.written_beside(), Chan_Red);
    row.range(0, 4);
    EXPECT_EQ(row.written_beside(), Chan_Black);
}
