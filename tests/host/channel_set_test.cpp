// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <DDImage/ChannelSet.h>
#include <gtest/gtest.h>
#include <vector>

using namespace DD::Image;

static std::vector<int> members_of(ChannelMask channels) {
    std::vector<int> members;
    foreach (z, channels)
        members.push_back(z);
    return members;
}

typedef std::vector<int> Numbers;

TEST(Channel, HasFixedNumbersAndNames) {
    const char* const names[] = {"rgba.red",  "rgba.green", "rgba.blue",  "rgba.alpha", "depth.Z",
                                 "forward.u", "forward.v",  "backward.u", "backward.v", "mask.a"};
    int number = 1;
    for (const char* const name : names) {
        EXPECT_STREQ(getName(Channel(number)), name);
        EXPECT_EQ(findChannel(name), Channel(number)) << name;
        EXPECT_EQ(channel(name), Channel(number)) << name;
        number++;
    }
    EXPECT_EQ(Chan_Red, 1);
    EXPECT_EQ(Chan_Alpha, 4);
    EXPECT_EQ(Chan_Z, 5);
    EXPECT_EQ(Chan_Mask, 10);
    EXPECT_FALSE(Chan_Black);
    EXPECT_EQ(getName(Chan_Last), nullptr);
}

TEST(Channel, IsOfTheLayerOfColoursWithoutALayer) {
    EXPECT_EQ(findChannel("red"), Chan_Red);
    EXPECT_EQ(findChannel("Z"), Chan_Black);
    EXPECT_EQ(findChannel(nullptr), Chan_Black);
}

TEST(Channel, IsMadeByItsName) {
    EXPECT_EQ(findChannel("glow.size"), Chan_Black);
    const Channel made = channel("glow.size");
    EXPECT_GT(made, Chan_Mask);
    EXPECT_EQ(channel("glow.size"), made);
    EXPECT_EQ(findChannel("glow.size"), made);
    EXPECT_STREQ(getName(made), "glow.size");
    EXPECT_NE(channel("glow.tint"), made);
}

TEST(Channel, RunsOutOfNumbersWithoutHarm) {
    Channel last = Chan_Black;
    for (int i = 0; i < 2000; i++)
        if (const Channel made = channel(("many.c" + std::to_string(i)).c_str()))
            last = made;
    EXPECT_EQ(last, Chan_Last);
    EXPECT_EQ(channel("one.more"), Chan_Black);
    EXPECT_EQ(channel("rgba.blue"), Chan_Blue);
    EXPECT_TRUE(ChannelSet(last).contains(last));
}

TEST(Channel, CountsColoursByFours) {
    EXPECT_EQ(colourIndex(Chan_Red), 0);
    EXPECT_EQ(colourIndex(Chan_Green), 1);
    EXPECT_EQ(colourIndex(Chan_Blue), 2);
    EXPECT_EQ(colourIndex(Chan_Alpha), 3);
    EXPECT_EQ(colourIndex(Channel(5)), 0);
    EXPECT_EQ(colourIndex(Channel(12)), 3);
}

TEST(ChannelSet, IsMadeOfSetsChannelsAndLists) {
    EXPECT_EQ(members_of(ChannelSet()), Numbers());
    EXPECT_EQ(members_of(Mask_None), Numbers());
    EXPECT_EQ(members_of(Mask_Red), Numbers({1}));
    EXPECT_EQ(members_of(Mask_Green), Numbers({2}));
    EXPECT_EQ(members_of(Mask_Blue), Numbers({3}));
    EXPECT_EQ(members_of(Mask_Alpha), Numbers({4}));
    EXPECT_EQ(members_of(Mask_Z), Numbers({5}));
    EXPECT_EQ(members_of(Mask_RGB), Numbers({1, 2, 3}));
    EXPECT_EQ(members_of(Mask_RGBA), Numbers({1, 2, 3, 4}));
    EXPECT_EQ(members_of(Chan_Z), Numbers({5}));
    const Channel list[] = {Chan_Z, Chan_Red, Chan_Z, Chan_Black};
    EXPECT_EQ(members_of(ChannelSet(list, 4)), Numbers({1, 5}));
}

TEST(ChannelSet, HoldsEveryChannelThatThereCanBe) {
    const ChannelSet all = Mask_All;
    EXPECT_TRUE(all.all());
    EXPECT_EQ(all.size(), 1023u);
    EXPECT_EQ(all.first(), Chan_Red);
    EXPECT_EQ(all.next(Chan_Last), Chan_Black);
    EXPECT_FALSE(all.contains(Chan_Black));
    EXPECT_FALSE(ChannelSet(Mask_RGBA).all());
}

TEST(ChannelSet, NeverHoldsBlack) {
    ChannelSet set = Chan_Black;
    EXPECT_TRUE(set.empty());
    EXPECT_FALSE(set);
    set.insert(Chan_Black);
    EXPECT_TRUE(set.empty());
    EXPECT_FALSE(set.contains(Chan_Black));
    set += Mask_All;
    set.erase(Chan_Black);
    EXPECT_TRUE(set.all());
}

TEST(ChannelSet, AddsTakesAwayAndMeets) {
    ChannelSet set = Mask_RGB;
    set += Chan_Z;
    EXPECT_EQ(members_of(set), Numbers({1, 2, 3, 5}));
    set -= Mask_Green;
    EXPECT_EQ(members_of(set), Numbers({1, 3, 5}));
    set &= Mask_RGBA;
    EXPECT_EQ(members_of(set), Numbers({1, 3}));
    EXPECT_EQ(members_of(set + Chan_Alpha), Numbers({1, 3, 4}));
    EXPECT_EQ(members_of(set - Chan_Red), Numbers({3}));
    EXPECT_EQ(members_of(set & Mask_Blue), Numbers({3}));
    EXPECT_EQ(set.size(), 2u);
    set.clear();
    EXPECT_TRUE(set.empty());
}

TEST(ChannelSet, ContainsASetThatIsWhollyInside) {
    const ChannelSet set = Mask_RGBA;
    EXPECT_TRUE(set.contains(Chan_Alpha));
    EXPECT_FALSE(set.contains(Chan_Z));
    EXPECT_TRUE(set.contains(ChannelSet(Mask_RGB)));
    EXPECT_TRUE(set.contains(ChannelSet()));
    EXPECT_FALSE(set.contains(ChannelSet(Mask_RGB) + Chan_Z));
}

TEST(ChannelSet, HasOneOrderAmongAll) {
    const std::vector<ChannelSet> sets = {Mask_None,  Mask_Red, Mask_Green, Mask_RGB,
                                          Mask_Alpha, Mask_Z,   Mask_All};
    for (const ChannelSet& a : sets)
        for (const ChannelSet& b : sets)
            EXPECT_EQ((a < b) + (b < a), a == b ? 0 : 1);
    std::vector<ChannelSet> sorted = sets;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end()));
}

TEST(ChannelSet, HashesDifferentlyForEverySet) {
    const std::vector<ChannelSet> sets = {Mask_None,  Mask_Red, Mask_Green, Mask_RGB,
                                          Mask_Alpha, Mask_Z,   Mask_All};
    for (const ChannelSet& a : sets) {
        for (const ChannelSet& b : sets) {
            Hash of_a(1), of_b(1);
            a.append(of_a);
            b.append(of_b);
            EXPECT_EQ(of_a == of_b, a == b);
        }
    }
}

TEST(ChannelSet, InsertsAndErasesListsAndSwaps) {
    const Channel list[] = {Chan_Red, Chan_Z};
    ChannelSet set = Mask_Green, other = Mask_Alpha;
    set.insert(list, 2);
    EXPECT_EQ(members_of(set), Numbers({1, 2, 5}));
    set.erase(list, 1);
    EXPECT_EQ(members_of(set), Numbers({2, 5}));
    set.swap(other);
    EXPECT_EQ(members_of(set), Numbers({4}));
    EXPECT_EQ(members_of(other), Numbers({2, 5}));
    EXPECT_EQ(members_of(other.intersection(Mask_RGBA)), Numbers({2}));
}

TEST(ChannelSet, IsWorkedOutOnceForAWalk) {
    int times = 0;
    const auto rgb = [&] {
        times++;
        return ChannelSet(Mask_RGB);
    };
    Numbers seen;
    foreach (z, rgb())
        seen.push_back(z);
    EXPECT_EQ(seen, Numbers({1, 2, 3}));
    EXPECT_EQ(times, 1);
}

TEST(ChannelSet, IsWalkedWhileItChanges) {
    ChannelSet set = Mask_RGBA;
    Numbers seen;
    foreach (z, set) {
        seen.push_back(z);
        if (z == Chan_Red)
            set -= Chan_Green;
    }
    EXPECT_EQ(seen, Numbers({1, 3, 4}));
    foreach (z, set) {
        if (z == Chan_Blue)
            break;
        foreach (y, set)
            EXPECT_NE(y, Chan_Green);
    }
}
