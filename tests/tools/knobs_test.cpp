// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/knobs.h"

#include "host/knobs/axis_knob.h"
#include "tools/comp/star_node.h"
#include "tools/failure.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

// The node of the plug-in, in a comp of the command line's format.
class Knobs : public testing::Test {
protected:
    Graph graph{plugin_path()};
    Node& node = create_star_node(graph);

    Knobs() { graph.set_format(default_format); }

    std::string text_of(const char* name) const { return knob_text(*node.knob(name), 1); }
    double number_of(const char* name, int i = 0) const {
        return node.knob(name)->get_value_at(1, i);
    }

    std::string failure_of(const std::string& name, const std::string& text) {
        try {
            set_knob(node, name, text);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status, EXIT_USAGE);
            return failure.what();
        }
        return "no failure";
    }
};

TEST_F(Knobs, StandInTheOrderOfTheNodesPanel) {
    const char* const names[] = {
        "format",     "brightness",     "bias",           "saturation", "tint_strength",
        "tint_color", "lum_max",        "lum_threshold",  "star_size",  "star_aspect",
        "blur_segs",  "shutter",        "shutter_offset", "projection", "threed",
        "parallax",   "anamorphic_dof", "starfile",       "transform",
    };
    const std::vector<HostKnob*> knobs = own_knobs(node);
    ASSERT_EQ(knobs.size(), std::size(names));
    for (std::size_t i = 0; i < std::size(names); i++)
        EXPECT_EQ(knobs[i]->name(), names[i]);
}

TEST_F(Knobs, HaveTheNodesDefaults) {
    const std::pair<const char*, const char*> defaults[] = {
        {"format", "1920x1080"},
        {"brightness", "5"},
        {"bias", "1"},
        {"saturation", "0.4"},
        {"tint_strength", "0"},
        {"tint_color", "0 0 0"},
        {"lum_max", "0.5"},
        {"lum_threshold", "0.0001"},
        {"star_size", "2.5"},
        {"star_aspect", "1"},
        {"blur_segs", "1"},
        {"shutter", "0.5"},
        {"shutter_offset", "0"},
        {"projection", "Perspective"},
        {"threed", "true"},
        {"parallax", "100"},
        {"anamorphic_dof", "false"},
        {"starfile", ""},
        {"transform", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"},
    };
    for (const auto& [name, text] : defaults)
        EXPECT_EQ(text_of(name), text) << name;
}

TEST_F(Knobs, ReadBackTheTextThatTheyGive) {
    const std::pair<const char*, const char*> settings[] = {
        {"format", "640x360"},
        {"brightness", "0.1"},
        {"bias", "0"},
        {"saturation", "-1.5"},
        {"tint_strength", "1"},
        {"tint_color", "0.25 0.5 1"},
        {"lum_max", "1e-05"},
        {"lum_threshold", "0"},
        {"star_size", "10"},
        {"star_aspect", "4"},
        {"blur_segs", "-3"},
        {"shutter", "2"},
        {"shutter_offset", "-1"},
        {"projection", "Azimuthal Equidistant"},
        {"threed", "false"},
        {"parallax", "0"},
        {"anamorphic_dof", "true"},
        {"starfile", "a b/c=d.velmora"},
        {"transform", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16"},
    };
    for (const auto& [name, text] : settings) {
        set_knob(node, name, text);
        EXPECT_EQ(text_of(name), text) << name;
    }
}

TEST_F(Knobs, TakeTheirOtherSpellings) {
    set_knob(node, "projection", "1");
    EXPECT_EQ(text_of("projection"), "Hemispherical");
    set_knob(node, "threed", "0");
    EXPECT_EQ(text_of("threed"), "false");
    set_knob(node, "tint_color", "{1, 0.5,0}");
    EXPECT_EQ(text_of("tint_color"), "1 0.5 0");
    set_knob(node, "tint_color", "0.75");
    EXPECT_EQ(text_of("tint_color"), "0.75 0.75 0.75");
    set_knob(node, "brightness", "+3");
    EXPECT_EQ(number_of("brightness"), 3);
}

// In memory the host's matrices are column by column.
TEST_F(Knobs, TakeTheTransformRowByRow) {
    set_knob(node, "transform", "1 0 0 7  0 1 0 8  0 0 1 9  0 0 0 1");
    EXPECT_EQ(number_of("transform", 12), 7);
    EXPECT_EQ(number_of("transform", 13), 8);
    EXPECT_EQ(number_of("transform", 14), 9);
    EXPECT_EQ(number_of("transform", 3), 0);
}

TEST_F(Knobs, SayWhatTheyTakeInstead) {
    const char* const number = "takes a number";
    const struct {
        const char *name, *text;
        std::string why;
    } cases[] = {
        {"brightnes", "3", "the node has no such knob (velmora info lists them)"},
        {"", "3", "the node has no such knob (velmora info lists them)"},
        {"brightness", "", number},
        {"brightness", "bright", number},
        {"brightness", "5,0", number},
        {"brightness", "5 ", number},
        {"brightness", "nan", number},
        {"brightness", "inf", number},
        {"brightness", "1e999", number},
        {"blur_segs", "1.5", "takes a whole number up to 10000"},
        {"blur_segs", "10001", "takes a whole number up to 10000"},
        {"blur_segs", "99999999999", "takes a whole number up to 10000"},
        {"threed", "yes", "takes true or false"},
        {"tint_color", "1 2", "takes three numbers (red, green, blue) or one for all"},
        {"tint_color", "1 2 x", "takes three numbers (red, green, blue) or one for all"},
        {"projection", "Fisheye", "takes Perspective, Hemispherical or Azimuthal Equidistant"},
        {"projection", "3", "takes Perspective, Hemispherical or Azimuthal Equidistant"},
        {"transform", "1 0 0 0", "takes sixteen numbers, the rows of a matrix for column vectors"},
        {"transform", "1e39 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1",
         "takes sixteen numbers, the rows of a matrix for column vectors"},
        {"format", "HD", "takes <width>x<height> in pixels"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failure_of(c.name, c.text),
                  "--knob " + std::string(c.name) + "=" + c.text + ": " + c.why);
}

TEST_F(Knobs, RefuseAFormatThatIsNone) {
    for (const char* text : {"", "x", "1920", "1920x", "x1080", "0x10", "10x0", "-5x5", "1.5x2",
                             "1920X1080", "1920x1080x1", "99999999999x1"}) {
        try {
            parse_format(text);
            FAIL() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(std::string(failure.what()),
                      "format '" + std::string(text) + "': takes <width>x<height> in pixels");
        }
    }
}

// 16 bytes per pixel, counted in 32 bits: 2^28 pixels are one too many.
TEST_F(Knobs, RefuseAFormatWhoseBytesWrap) {
    set_knob(node, "format", "16384x16383");
    check_sizes(node, 1, "");
    set_knob(node, "format", "16384x16384");
    try {
        check_sizes(node, 1, "");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "format '16384x16384': an image takes 16 bytes per pixel and "
                                     "must stay below 4 GiB");
    }
}

TEST_F(Knobs, RefuseMoreSegmentsThanAnybodyUses) {
    node.knob("blur_segs")->set_value(10001);
    try {
        check_sizes(node, 1, "Stars1: ");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "Stars1: blur_segs: takes a whole number up to 10000");
    }
}
