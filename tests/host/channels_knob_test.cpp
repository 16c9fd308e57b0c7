// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/channels_knob.h"

#include "tests/host/panel.h"

using namespace velmora;
using namespace DD::Image;

class ChannelsKnobTest : public PanelTest {};

TEST_F(ChannelsKnobTest, StartsWithTheSetThatItsOpHas) {
    EXPECT_EQ(stored()->channels, ChannelSet(Mask_RGB));
    EXPECT_EQ(knob("channels").to_script(), "rgb");
    EXPECT_FALSE(knob("channels").not_default());
}

TEST_F(ChannelsKnobTest, ReadsSetsAndListsOfChannels) {
    const struct {
        const char* text;
        ChannelSet set;
    } cases[] = {
        {"all", Mask_All},
        {"none", Mask_None},
        {"rgb", Mask_RGB},
        {"rgba", Mask_RGBA},
        {"alpha", Mask_Alpha},
        {"depth", Mask_Z},
        {"rgba.red", Mask_Red},
        {"red", Mask_Red},
        {"{rgba.red rgba.blue}", ChannelSet(Mask_Red) + Mask_Blue},
        {"{rgba.red -rgba.green rgba.blue -rgba.alpha}", ChannelSet(Mask_Red) + Mask_Blue},
        {"{rgb depth.Z}", ChannelSet(Mask_RGB) + Mask_Z},
        {"{}", Mask_None},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(read_error("channels", c.text), "no error") << c.text;
        EXPECT_EQ(stored()->channels, c.set) << c.text;
    }
}

TEST_F(ChannelsKnobTest, RefusesChannelsThatThereAreNot) {
    EXPECT_EQ(read_error("channels", "{rgba.red rgba.rde}"),
              "shot.nk:1:12: there is no channel 'rgba.rde'");
    EXPECT_EQ(read_error("channels", "RGB"), "shot.nk:1:2: there is no channel 'RGB'");
}

TEST_F(ChannelsKnobTest, WritesWhatItReads) {
    for (const char* const text : {"all", "none", "rgb", "rgba", "alpha", "depth", "{rgba.red}",
                                   "{rgba.red rgba.blue depth.Z}"}) {
        EXPECT_TRUE(knob("channels").from_script(text)) << text;
        EXPECT_EQ(knob("channels").to_script(), text);
    }
    EXPECT_TRUE(knob("channels").not_default());
}

TEST_F(ChannelsKnobTest, HashesTheSet) {
    const Hash before = hash_at(1);
    ASSERT_TRUE(knob("channels").from_script("rgba"));
    EXPECT_NE(hash_at(1), before);
    ASSERT_TRUE(knob("channels").from_script("{red green blue}"));
    EXPECT_EQ(hash_at(1), before);
}
