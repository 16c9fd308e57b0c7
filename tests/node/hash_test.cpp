// SPDX-License-Identifier: BSD-3-Clause

// What makes the host compute the picture again.
#include "tests/node/comp.h"

using namespace node_test;
using DD::Image::Hash;

static Hash hash_of(Comp& comp, double frame = 1) {
    return comp.tree.at(frame).hash();
}

TEST(NodeHash, ChangesWithEveryKnobAndComesBackWithIt) {
    const struct {
        const char* knob;
        const char* value;
    } changes[] = {
        {"format", "\"64 48 test\""},
        {"brightness", "6"},
        {"bias", "2"},
        {"saturation", "0.5"},
        {"tint_strength", "0.25"},
        {"tint_color", "0 0 1"},
        {"lum_max", "1"},
        {"lum_threshold", "0.01"},
        {"star_size", "3"},
        {"star_aspect", "2"},
        {"blur_segs", "2"},
        {"shutter", "0.75"},
        {"shutter_offset", "-0.25"},
        {"projection", "Hemispherical"},
        {"threed", "false"},
        {"parallax", "50"},
        {"anamorphic_dof", "true"},
        {"starfile", "/no/such/file"},
        {"translate", "0 0 1"},
    };
    ASSERT_EQ(std::size(changes), 19u) << "one for each knob";
    Comp unchanged;
    const Hash plain = hash_of(unchanged);
    std::vector<Hash> seen = {plain};
    for (const auto& change : changes) {
        SCOPED_TRACE(change.knob);
        Comp comp;
        ASSERT_NE(comp.stars.knob(change.knob), nullptr);
        const std::string before = comp.stars.knob(change.knob)->to_script();
        comp.set(change.knob, change.value);
        const Hash changed = hash_of(comp);
        for (const Hash& other : seen)
            EXPECT_NE(changed, other);
        seen.push_back(changed);
        comp.set(change.knob, before);
        EXPECT_EQ(hash_of(comp), plain);
    }
}

// What the node adds by itself: the matrix column by column. The host's knobs hold it by rows.
TEST(NodeHash, IsGivenTheSixteenFloatsOfTheTransform) {
    Comp comp;
    comp.set("useMatrix", "true");
    comp.set("matrix", "{1 2 3 4} {5 6 7 8} {9 10 11 12} {13 14 15 16}");
    Hash expected(77), given(77);
    for (int column = 1; column <= 4; column++)
        for (int row = 0; row < 4; row++)
            expected.append(float(4 * row + column));
    comp.tree.at(1).append(given);
    EXPECT_EQ(given, expected);
}

TEST(NodeHash, ChangesWithEachOfTheSixteenFloats) {
    std::vector<Hash> seen;
    for (int i = 0; i < 16; i++) {
        Comp comp;
        comp.set("useMatrix", "true");
        comp.stars.knob("matrix")->set_value(7, i);
        Hash given;
        comp.tree.at(1).append(given);
        for (const Hash& other : seen)
            EXPECT_NE(given, other) << i;
        seen.push_back(given);
    }
}

TEST(NodeHash, IsOneForAllFramesOfAStillComp) {
    Comp comp;
    const Hash first = hash_of(comp, 1);
    EXPECT_EQ(hash_of(comp, 2), first);
    comp.set("brightness", "{curve x1 1 x11 2}");
    EXPECT_NE(hash_of(comp, 1), hash_of(comp, 2));
}

TEST(NodeHash, ChangesWithTheCamera) {
    Comp comp;
    const Hash alone = hash_of(comp);
    Node& camera = comp.connect_camera();
    const Hash connected = hash_of(comp);
    EXPECT_NE(connected, alone);
    set(camera, "focal", "35");
    EXPECT_NE(hash_of(comp), connected);
    comp.stars.set_input(1, nullptr);
    EXPECT_EQ(hash_of(comp), alone);
}
