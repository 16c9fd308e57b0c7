// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Format.h>
#include <gtest/gtest.h>

using DD::Image::Format;
using DD::Image::FormatPair;
using DD::Image::Hash;

static Hash hash_of(const Format& format) {
    Hash hash;
    format.append(hash);
    return hash;
}

TEST(Format, FillsItsWholeFileUnlessAnAreaIsGiven) {
    const Format format(1920, 1080);
    EXPECT_EQ(format.width(), 1920);
    EXPECT_EQ(format.height(), 1080);
    EXPECT_EQ(format.pixel_aspect(), 1);
    EXPECT_EQ(DD::Image::Box(format), DD::Image::Box(0, 0, 1920, 1080));
}

TEST(Format, KeepsTheAreaInsideTheFile) {
    const Format format(2048, 1556, 10, 20, 2000, 1500, 2);
    EXPECT_EQ(format.width(), 2048);
    EXPECT_EQ(format.height(), 1556);
    EXPECT_EQ(format.pixel_aspect(), 2);
    EXPECT_EQ(DD::Image::Box(format), DD::Image::Box(10, 20, 2000, 1500));
    EXPECT_EQ(format.w(), 1990);
    EXPECT_EQ(format.h(), 1480);
}

TEST(Format, SetsWidthHeightAndAspectAlone) {
    Format format;
    format.width(7);
    format.height(9);
    format.pixel_aspect(0.5);
    EXPECT_EQ(format, Format(7, 9, 0, 0, 640, 480, 0.5));
}

TEST(Format, HasNoNameUntilItGetsOne) {
    Format format(4, 3);
    EXPECT_EQ(format.name(), nullptr);
    format.name("small");
    EXPECT_STREQ(format.name(), "small");
    format.name(nullptr);
    EXPECT_EQ(format.name(), nullptr);
}

TEST(Format, IsEqualWhateverItsName) {
    Format named(4, 3);
    named.name("small");
    EXPECT_EQ(named, Format(4, 3));
    EXPECT_EQ(hash_of(named), hash_of(Format(4, 3)));
}

TEST(Format, DiffersAndHashesDifferentlyInEveryPart) {
    const Format format(100, 80, 10, 20, 90, 70, 1);
    const Format others[] = {
        {101, 80, 10, 20, 90, 70, 1},   {100, 81, 10, 20, 90, 70, 1}, {100, 80, 11, 20, 90, 70, 1},
        {100, 80, 10, 21, 90, 70, 1},   {100, 80, 10, 20, 91, 70, 1}, {100, 80, 10, 20, 90, 71, 1},
        {100, 80, 10, 20, 90, 70, 1.5},
    };
    for (const Format& other : others) {
        EXPECT_NE(other, format);
        EXPECT_NE(hash_of(other), hash_of(format));
    }
}

TEST(Format, NoneIsNoneAndNoOtherIs) {
    EXPECT_TRUE(Format::None.is_none());
    const Format copy = Format::None;
    EXPECT_FALSE(copy.is_none());
    EXPECT_FALSE(Format().is_none());
}

TEST(Format, FindsWhatWasAddedByNameSizeAndPlace) {
    const std::size_t before = Format::size();
    Format(123, 45, 1).add("plain");
    Format(123, 45, 2).add("squeezed");
    ASSERT_EQ(Format::size(), before + 2);
    EXPECT_STREQ(Format::index(before)->name(), "plain");
    EXPECT_STREQ(Format::index(before + 1)->name(), "squeezed");
    EXPECT_EQ(Format::index(before + 2), nullptr);

    EXPECT_EQ(Format::findNamed("squeezed"), Format::index(before + 1));
    EXPECT_EQ(Format::findNamed("unheard of"), nullptr);
    EXPECT_EQ(Format::findExisting(123, 45, 2), Format::index(before + 1));
    EXPECT_EQ(Format::findExisting(123, 45), Format::index(before)); // any pixel aspect
    EXPECT_EQ(Format::findExisting(123, 45, 3), nullptr);
    EXPECT_EQ(Format::findExisting(45, 123), nullptr);
}

TEST(Format, IsReplacedInTheListByOneOfItsName) {
    Format(10, 10).add("replaced");
    const Format* const listed = Format::findNamed("replaced");
    const std::size_t count = Format::size();
    Format(20, 30).add("replaced");
    EXPECT_EQ(Format::size(), count);
    EXPECT_EQ(*Format::findNamed("replaced"), Format(20, 30));
    EXPECT_EQ(*listed, Format(10, 10)); // nodes may point to it
}

TEST(Format, IsKeptOnceForEachSizeAndName) {
    Format format(77, 55);
    const Format& kept = Format::kept(format);
    EXPECT_NE(&kept, &format);
    EXPECT_EQ(&Format::kept(Format(77, 55)), &kept);
    format.name("other");
    EXPECT_NE(&Format::kept(format), &kept);
    EXPECT_STREQ(Format::kept(format).name(), "other");
    for (int width = 1; width < 500; width++) // references survive many more
        Format::kept(Format(width, 1));
    EXPECT_EQ(kept, Format(77, 55));
    EXPECT_EQ(Format::findExisting(77, 55), nullptr); // without being listed
}

TEST(FormatPair, HoldsNoFormatAtFirst) {
    FormatPair pair;
    EXPECT_EQ(pair.format(), &Format::None);
    EXPECT_EQ(pair.fullSizeFormat(), &Format::None);
    const Format half(960, 540), full(1920, 1080);
    pair.format(&half);
    pair.fullSizeFormat(&full);
    EXPECT_EQ(pair.format(), &half);
    EXPECT_EQ(pair.fullSizeFormat(), &full);
}
