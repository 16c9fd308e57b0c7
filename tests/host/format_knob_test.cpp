// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/format_knob.h"

#include "tests/host/panel.h"

using namespace velmora;
using namespace velmora::host;
using DD::Image::Format;

class FormatKnobTest : public PanelTest {
protected:
    FormatKnob& format = dynamic_cast<FormatKnob&>(knob("format"));
};

TEST_F(FormatKnobTest, IsTheProjectsUntilOneIsPicked) {
    EXPECT_EQ(stored()->formats.format(), &project.format());
    EXPECT_FALSE(format.not_default());
    project.set_format(Format(640, 480));
    EXPECT_EQ(*stored()->formats.format(), Format(640, 480));
    EXPECT_EQ(stored()->formats.fullSizeFormat(), stored()->formats.format()); // there is no proxy
    format.set_format(Format(10, 20));
    project.set_format(Format(30, 40));
    EXPECT_EQ(*stored()->formats.format(), Format(10, 20));
    EXPECT_TRUE(format.not_default());
}

TEST_F(FormatKnobTest, LeavesAnOpTheFormatThatItHas) {
    const auto op = stored();
    const Format* const given = op->formats.format();
    format.set_format(Format(10, 20));
    project.set_format(Format(30, 40));
    EXPECT_EQ(*given, Format(2048, 1556));
}

TEST_F(FormatKnobTest, HashesTheFormat) {
    const DD::Image::Hash before = hash_at(1);
    project.set_format(Format(640, 480));
    EXPECT_NE(hash_at(1), before);
    format.set_format(Format(2048, 1556));
    EXPECT_EQ(hash_at(1), before);
    format.set_format(Format(2048, 1556, 2));
    EXPECT_NE(hash_at(1), before);
}

TEST_F(FormatKnobTest, ReadsAndWritesScripts) {
    EXPECT_EQ(read_error("format", "\"640 480 0 0 640 480 2 half\""), "no error");
    EXPECT_EQ(format.format(), Format(640, 480, 2));
    EXPECT_EQ(format.to_script(), "\"640 480 0 0 640 480 2 half\"");
    EXPECT_EQ(read_error("format", "{640 0}"),
              "shot.nk:1:2: '{640 0}' is not a format: width height [x y r t] [aspect] [name]");
    EXPECT_EQ(format.format(), Format(640, 480, 2));
}
