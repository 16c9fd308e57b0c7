#include "tools/knobs.h"

#include "tools/failure.h"

#include <gtest/gtest.h>

using namespace velmora;

static std::string failure_of(const std::string& name, const std::string& text) {
    KnobValues values;
    try {
        set_knob(values, name, text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status, EXIT_USAGE);
        return failure.what();
    }
    return "no failure";
}

TEST(Knobs, StandInTheOrderOfTheNodesPanel) {
    const char* const names[] = {
        "format",     "brightness",     "bias",           "saturation", "tint_strength",
        "tint_color", "lum_max",        "lum_threshold",  "star_size",  "star_aspect",
        "blur_segs",  "shutter",        "shutter_offset", "projection", "threed",
        "parallax",   "anamorphic_dof", "starfile",       "transform",
    };
    ASSERT_EQ(knob_descriptions().size(), std::size(names));
    for (std::size_t i = 0; i < std::size(names); i++)
        EXPECT_STREQ(knob_descriptions()[i].name, names[i]);
}

TEST(Knobs, HaveTheNodesDefaults) {
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
    const KnobValues values;
    for (const auto& [name, text] : defaults)
        EXPECT_EQ(knob_text(values, name), text) << name;
}

TEST(Knobs, ReadBackTheTextThatTheyGive) {
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
    KnobValues values;
    for (const auto& [name, text] : settings) {
        set_knob(values, name, text);
        EXPECT_EQ(knob_text(values, name), text) << name;
    }
}

TEST(Knobs, TakeTheirOtherSpellings) {
    KnobValues values;
    set_knob(values, "projection", "1");
    EXPECT_EQ(values.projection, 1);
    set_knob(values, "threed", "0");
    EXPECT_FALSE(values.threed);
    set_knob(values, "tint_color", "{1, 0.5,0}");
    EXPECT_EQ(values.tint_color, (std::array<double, 3>{1, 0.5, 0}));
    set_knob(values, "tint_color", "0.75");
    EXPECT_EQ(values.tint_color, (std::array<double, 3>{0.75, 0.75, 0.75}));
    set_knob(values, "brightness", "+3");
    EXPECT_EQ(values.brightness, 3);
}

TEST(Knobs, KeepTheTransformColumnByColumn) {
    KnobValues values;
    set_knob(values, "transform", "1 0 0 7  0 1 0 8  0 0 1 9  0 0 0 1");
    EXPECT_EQ(values.transform[12], 7);
    EXPECT_EQ(values.transform[13], 8);
    EXPECT_EQ(values.transform[14], 9);
    EXPECT_EQ(values.transform[3], 0);
}

TEST(Knobs, SayWhatTheyTakeInstead) {
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

TEST(Knobs, RefuseAFormatThatIsNone) {
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
TEST(Knobs, RefuseAFormatWhoseBytesWrap) {
    EXPECT_EQ(parse_format("16384x16383").height, 16383);
    try {
        parse_format("16384x16384");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "format '16384x16384': an image takes 16 bytes per pixel and "
                                     "must stay below 4 GiB");
    }
}

TEST(Knobs, FillTheRenderersParameters) {
    KnobValues values;
    values.star_size = 3;
    values.star_aspect = 0.5;
    values.bias = 4;
    values.tint_color = {0.1, 0.2, 0.3};
    values.projection = 2;
    values.threed = false;
    StarRendererData data;
    fill_render_data(values, data);
    EXPECT_EQ(data.spot_width, 1.5);
    EXPECT_EQ(data.star_size, 3);
    EXPECT_EQ(data.lum_threshold, 0.0001);
    EXPECT_EQ(data.lum_max, 0.5);
    EXPECT_EQ(data.brightness, 5);
    EXPECT_EQ(data.saturation, 0.4);
    EXPECT_EQ(data.bias_exponent, 0.25);
    EXPECT_EQ(data.tint_strength, 0);
    EXPECT_EQ(data.parallax, 100);
    EXPECT_EQ(data.tint_color[0], 0.1f);
    EXPECT_EQ(data.tint_color[2], 0.3f);
    EXPECT_EQ(data.projection, OP_STARS_AZIMUTHAL_EQUIDISTANT);
    EXPECT_EQ(data.lines, OP_STARS_LINES_ALL);
    EXPECT_FALSE(data.threed);
}
