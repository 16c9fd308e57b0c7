// SPDX-License-Identifier: BSD-3-Clause

// The knob table, as the node declares it and as the host then has it.
#include "tests/node/comp.h"

#include <memory>

using namespace node_test;
using DD::Image::Knob;
using DD::Image::KnobSpec;

namespace {

struct Range {
    double low, high;
    bool operator==(const Range& other) const { return low == other.low && high == other.high; }
};

struct KnobRow {
    const char* name;
    const char* label; // null where none is given
    DD::Image::KnobType type;
    DD::Image::StoreType store;
    const void* member;
    std::vector<double> defaults; // empty where the value is not a number
    std::vector<Range> range;     // none or one
    Knob::FlagMask flags = 0;
};

const Knob::FlagMask logarithmic = 4, early = 0x80000000;

std::vector<KnobRow> table_of(const VelmoraNK& n) {
    using namespace DD::Image;
    // clang-format off
    return {
        {"format", nullptr, KnobType(17), StoreType(9), &n.formats, {}, {}},
        {"brightness", "Star Brightness", KnobType(8), StoreType(0), &n.brightness, {5}, {{0, 20}}},
        {"bias", "Brightness Bias", KnobType(8), StoreType(0), &n.bias, {1}, {{0, 5}}},
        {"saturation", "Star Saturation", KnobType(8), StoreType(0), &n.saturation, {0.4}, {{0, 1}}, logarithmic},
        {"tint_strength", "Tint Strength", KnobType(8), StoreType(0), &n.tint_strength, {0}, {{0, 1}}, logarithmic},
        {"tint_color", "Tint Color", KnobType(18), StoreType(0), &n.tint_color, {0, 0, 0}, {}},
        {"lum_max", "Maximum Luminance", KnobType(8), StoreType(0), &n.lum_max, {0.5}, {{0, 2}}},
        {"lum_threshold", "Luminance Threshold", KnobType(8), StoreType(0), &n.lum_threshold, {0.0001}, {{0, 0.1}}},
        {"star_size", "Star Spot Size", KnobType(8), StoreType(0), &n.star_size, {2.5}, {{0, 10}}},
        {"star_aspect", "Star Aspect Ratio", KnobType(8), StoreType(0), &n.star_aspect, {1}, {{0, 4}}, logarithmic},
        {"blur_segs", "Motion Blur Segments", KnobType(3), StoreType(3), &n.blur_segs, {1}, {{0, 10}}, early},
        {"shutter", "Shutter Duration", KnobType(8), StoreType(0), &n.shutter, {0.5}, {{0, 2}}, early},
        {"shutter_offset", "Shutter Open Offset", KnobType(8), StoreType(0), &n.shutter_offset, {0}, {{-1, 1}}, early},
        {"projection", "Projection", KnobType(4), StoreType(3), &n.projection, {0}, {}},
        {"threed", "Enable 3D Stars", KnobType(6), StoreType(5), &n.threed, {1}, {}},
        {"parallax", "Parallax Crush", KnobType(8), StoreType(0), &n.parallax, {100}, {{0, 100}}, logarithmic},
        {"anamorphic_dof", "Anamorphic DOF", KnobType(6), StoreType(5), &n.anamorphic_dof, {0}, {}},
        {"starfile", "Star Database File", KnobType(2), StoreType(2), &n.starfile, {}, {}},
        {"transform", nullptr, KnobType(29), StoreType(10), &n.transform, {}, {}},
    };
    // clang-format on
}

// A host that writes down what is declared to it, and what has been done to a knob each time that
// its flags, its range or its tooltip are about to be set.
class Recorder : public DD::Image::Knob_Closure {
public:
    struct Before {
        bool has_range;
        Knob::FlagMask flags;
    };

    struct Declared {
        KnobSpec spec;
        std::string name;
        bool labelled;
        std::string label;
        std::vector<std::string> items;
        std::unique_ptr<Knob> knob;
        std::vector<Before> settings;
    };
    std::vector<Declared> all;

    bool makeKnobs() const override { return true; }
    int getKnobCount() const override { return int(all.size()); }

    Knob* declare(const KnobSpec& spec) override {
        Declared declared = {
            spec, spec.name, spec.label != nullptr, spec.label ? spec.label : "", {}, nullptr, {}};
        for (const char* const* item = spec.items; item && *item; item++)
            declared.items.push_back(*item);
        declared.knob = std::make_unique<Knob>(spec.name, spec.label, spec.type);
        all.push_back(std::move(declared));
        return all.back().knob.get();
    }

    Knob* made_last() override {
        Declared& last = all.back();
        last.settings.push_back({last.knob->has_range(), last.knob->flags()});
        return last.knob.get();
    }
};

class NodeKnobs : public testing::Test {
protected:
    Comp comp;
    const VelmoraNK& node = inside(comp.stars.prototype());
    const std::vector<KnobRow> table = table_of(node);
    Recorder recorder;

    NodeKnobs() { comp.stars.prototype().knobs(recorder); }
};

} // namespace

TEST_F(NodeKnobs, AreDeclaredInTheOrderOfTheTable) {
    ASSERT_EQ(table.size(), 19u);
    std::vector<std::string> wanted, declared;
    for (const KnobRow& row : table)
        wanted.push_back(row.name);
    wanted.push_back("channels"); // the wrapper's
    for (const Recorder::Declared& knob : recorder.all)
        declared.push_back(knob.name);
    EXPECT_EQ(declared, wanted);
}

TEST_F(NodeKnobs, HaveTheTypesLabelsAndMembersOfTheTable) {
    ASSERT_GE(recorder.all.size(), table.size());
    for (std::size_t i = 0; i < table.size(); i++) {
        const KnobRow& row = table[i];
        const Recorder::Declared& knob = recorder.all[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(knob.spec.type, row.type);
        EXPECT_EQ(knob.spec.store, row.store);
        EXPECT_EQ(knob.spec.data, row.member);
        EXPECT_EQ(knob.spec.count, row.defaults.size() == 3 ? 3 : 1);
        EXPECT_EQ(knob.labelled, row.label != nullptr);
        EXPECT_EQ(knob.label, row.label ? row.label : "");
    }
}

TEST_F(NodeKnobs, HaveTheRangesAndFlagsOfTheTable) {
    ASSERT_GE(recorder.all.size(), table.size());
    for (std::size_t i = 0; i < table.size(); i++) {
        const KnobRow& row = table[i];
        const Recorder::Declared& knob = recorder.all[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(knob.knob->flags(), row.flags);
        ASSERT_EQ(knob.knob->has_range(), !row.range.empty());
        if (!row.range.empty()) {
            EXPECT_EQ(knob.knob->minimum(), row.range[0].low);
            EXPECT_EQ(knob.knob->maximum(), row.range[0].high);
        }
    }
}

// One setting for the range, then one for the flags: none is left over for a tooltip.
TEST_F(NodeKnobs, HaveTheirRangeSetBeforeTheirFlagsAndNoTooltip) {
    ASSERT_GE(recorder.all.size(), table.size());
    for (std::size_t i = 0; i < table.size(); i++) {
        const KnobRow& row = table[i];
        const Recorder::Declared& knob = recorder.all[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(knob.knob->tooltip(), "");
        ASSERT_EQ(knob.settings.size(), row.range.size() + (row.flags ? 1 : 0));
        if (row.flags) {
            EXPECT_TRUE(knob.settings[1].has_range);
            EXPECT_EQ(knob.settings[1].flags, 0u);
        }
    }
}

// The rule of flag 4: a range from 0 to the square of a whole number.
TEST_F(NodeKnobs, AreLogarithmicWhenTheirRangeEndsAtASquare) {
    int squares = 0;
    for (const Recorder::Declared& knob : recorder.all) {
        if (knob.spec.type != DD::Image::FLOAT_KNOB || !knob.knob->has_range() ||
            knob.knob->minimum() != 0)
            continue;
        bool square = false;
        for (int root = 1; root <= 100; root++)
            square = square || knob.knob->maximum() == root * root;
        squares += square;
        EXPECT_EQ(knob.knob->flag(4), square) << knob.name;
    }
    EXPECT_EQ(squares, 4);
}

TEST_F(NodeKnobs, OfferTheProjectionsByName) {
    ASSERT_EQ(recorder.all.size(), 20u);
    EXPECT_EQ(recorder.all[13].items,
              (std::vector<std::string>{"Perspective", "Hemispherical", "Azimuthal Equidistant"}));
    for (const Recorder::Declared& knob : recorder.all)
        EXPECT_EQ(knob.items.empty(), knob.name != "projection") << knob.name;
}

// A second pass over the knobs, as every storing is one, declares the same.
TEST_F(NodeKnobs, AreDeclaredAlikeEachTime) {
    Recorder again;
    comp.stars.prototype().knobs(again);
    ASSERT_EQ(again.all.size(), recorder.all.size());
    for (std::size_t i = 0; i < again.all.size(); i++) {
        EXPECT_EQ(again.all[i].name, recorder.all[i].name);
        EXPECT_EQ(again.all[i].spec.data, recorder.all[i].spec.data);
    }
}

TEST_F(NodeKnobs, StartAsTheTableSays) {
    for (const KnobRow& row : table) {
        SCOPED_TRACE(row.name);
        const velmora::host::HostKnob* const knob = comp.stars.knob(row.name);
        ASSERT_NE(knob, nullptr);
        EXPECT_FALSE(knob->not_default());
        for (std::size_t k = 0; k < row.defaults.size(); k++)
            EXPECT_EQ(knob->get_value_at(1, int(k)), row.defaults[k]);
    }
    EXPECT_STREQ(comp.stars.knob("starfile")->get_text(), "");
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(comp.stars.knob("transform")->get_value_at(1, i), i % 5 == 0 ? 1 : 0) << i;
}

// The members before the host has stored anything.
TEST_F(NodeKnobs, StartInMembersThatTheConstructorSets) {
    EXPECT_EQ(node.brightness, 5);
    EXPECT_EQ(node.bias, 1);
    EXPECT_EQ(node.saturation, 0.4);
    EXPECT_EQ(node.tint_strength, 0);
    for (const double component : node.tint_color)
        EXPECT_EQ(component, 0);
    EXPECT_EQ(node.lum_max, 0.5);
    EXPECT_EQ(node.lum_threshold, 0.0001);
    EXPECT_EQ(node.star_size, 2.5);
    EXPECT_EQ(node.star_aspect, 1);
    EXPECT_EQ(node.blur_segs, 1);
    EXPECT_EQ(node.shutter, 0.5);
    EXPECT_EQ(node.shutter_offset, 0);
    EXPECT_EQ(node.projection, 0);
    EXPECT_TRUE(node.threed);
    EXPECT_EQ(node.parallax, 100);
    EXPECT_FALSE(node.anamorphic_dof);
}
