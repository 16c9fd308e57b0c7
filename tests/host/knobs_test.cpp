// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Knobs.h>
#include <gtest/gtest.h>
#include <vector>

using namespace DD::Image;

namespace {

// Keeps each declaration and makes a plain knob of it.
class Declarations : public Knob_Closure {
public:
    struct Kept {
        KnobType type;
        StoreType store;
        void* data;
        std::string name;
        bool has_label;
        int count;
        const char* const* items;
    };
    std::vector<Kept> kept;
    std::vector<std::unique_ptr<Knob>> made;
    bool making = true;

    bool makeKnobs() const override { return making; }
    int getKnobCount() const override { return int(kept.size()); }
    Knob* made_last() override { return making && !made.empty() ? made.back().get() : nullptr; }
    Knob* declare(const KnobSpec& spec) override {
        kept.push_back({spec.type, spec.store, spec.data, spec.name, spec.label != nullptr,
                        spec.count, spec.items});
        made.push_back(std::make_unique<Knob>(spec.name, spec.label, spec.type));
        if (spec.range)
            made.back()->set_range(spec.range->minimum, spec.range->maximum);
        return made.back().get();
    }
};

struct Values {
    int whole = 0;
    float single[4] = {};
    double real[4] = {};
    bool on = false;
    const char* text = nullptr;
    std::string words;
    FormatPair formats;
    ChannelSet channels;
    Matrix4 matrix;
};

} // namespace

static const char* const items[] = {"one", "two", nullptr};

static void declare_everything(Knob_Callback f, Values& v) {
    Int_knob(f, &v.whole, "int");
    Float_knob(f, v.single, "float");
    Float_knob(f, v.real, "float of double");
    Double_knob(f, v.real, "double");
    Bool_knob(f, &v.on, "bool");
    Color_knob(f, v.single, "color");
    Color_knob(f, v.real, "color of double");
    AColor_knob(f, v.single, "acolor");
    AColor_knob(f, v.real, "acolor of double");
    XY_knob(f, v.single, "xy");
    XY_knob(f, v.real, "xy of double");
    XYZ_knob(f, v.single, "xyz");
    XYZ_knob(f, v.real, "xyz of double");
    WH_knob(f, v.single, "wh");
    WH_knob(f, v.real, "wh of double");
    Enumeration_knob(f, &v.whole, items, "enumeration");
    File_knob(f, &v.text, "file", nullptr, Geo_File);
    String_knob(f, &v.text, "string");
    String_knob(f, &v.words, "string of std");
    Format_knob(f, &v.formats, "format");
    Input_ChannelMask_knob(f, &v.channels, 0, "channels");
    Axis_knob(f, &v.matrix, "transform");
}

TEST(Knobs, AreDeclaredWithTheirTypesAndWhatTheyStoreInto) {
    Declarations f;
    Values v;
    declare_everything(f, v);
    const struct {
        const char* name;
        KnobType type;
        StoreType store;
        void* data;
        int count;
    } rows[] = {
        {"int", INT_KNOB, IntPtr, &v.whole, 1},
        {"float", FLOAT_KNOB, FloatPtr, v.single, 1},
        {"float of double", FLOAT_KNOB, DoublePtr, v.real, 1},
        {"double", DOUBLE_KNOB, DoublePtr, v.real, 1},
        {"bool", BOOL_KNOB, BoolPtr, &v.on, 1},
        {"color", COLOR_KNOB, FloatPtr, v.single, 3},
        {"color of double", COLOR_KNOB, DoublePtr, v.real, 3},
        {"acolor", ACOLOR_KNOB, FloatPtr, v.single, 4},
        {"acolor of double", ACOLOR_KNOB, DoublePtr, v.real, 4},
        {"xy", XY_KNOB, FloatPtr, v.single, 2},
        {"xy of double", XY_KNOB, DoublePtr, v.real, 2},
        {"xyz", XYZ_KNOB, FloatPtr, v.single, 3},
        {"xyz of double", XYZ_KNOB, DoublePtr, v.real, 3},
        {"wh", WH_KNOB, FloatPtr, v.single, 2},
        {"wh of double", WH_KNOB, DoublePtr, v.real, 2},
        {"enumeration", ENUMERATION_KNOB, IntPtr, &v.whole, 1},
        {"file", FILE_KNOB, StringPtr, &v.text, 1},
        {"string", STRING_KNOB, StringPtr, &v.text, 1},
        {"string of std", STRING_KNOB, StdStringPtr, &v.words, 1},
        {"format", FORMAT_KNOB, FormatPairPtr, &v.formats, 1},
        {"channels", CHANNEL_MASK_KNOB, ChannelSetPtr, &v.channels, 1},
        {"transform", AXIS_KNOB, MatrixPtr, &v.matrix, 1},
    };
    ASSERT_EQ(f.kept.size(), std::size(rows));
    EXPECT_EQ(f.getKnobCount(), int(std::size(rows)));
    for (std::size_t i = 0; i < std::size(rows); i++) {
        EXPECT_EQ(f.kept[i].name, rows[i].name);
        EXPECT_EQ(f.kept[i].type, rows[i].type) << rows[i].name;
        EXPECT_EQ(f.kept[i].store, rows[i].store) << rows[i].name;
        EXPECT_EQ(f.kept[i].data, rows[i].data) << rows[i].name;
        EXPECT_EQ(f.kept[i].count, rows[i].count) << rows[i].name;
        EXPECT_FALSE(f.kept[i].has_label) << rows[i].name;
        EXPECT_EQ(f.made[i]->label(), rows[i].name); // by default the name
        EXPECT_FALSE(f.made[i]->has_range()) << rows[i].name;
        EXPECT_EQ(f.kept[i].items, rows[i].type == ENUMERATION_KNOB ? items : nullptr);
    }
}

// The codes that plug-ins and scripts may rely on.
TEST(Knobs, HaveTheHostsNumbers) {
    EXPECT_EQ(STRING_KNOB, 1);
    EXPECT_EQ(FILE_KNOB, 2);
    EXPECT_EQ(INT_KNOB, 3);
    EXPECT_EQ(ENUMERATION_KNOB, 4);
    EXPECT_EQ(BOOL_KNOB, 6);
    EXPECT_EQ(DOUBLE_KNOB, 7);
    EXPECT_EQ(FLOAT_KNOB, 8);
    EXPECT_EQ(CHANNEL_MASK_KNOB, 10);
    EXPECT_EQ(XY_KNOB, 12);
    EXPECT_EQ(XYZ_KNOB, 13);
    EXPECT_EQ(WH_KNOB, 14);
    EXPECT_EQ(FORMAT_KNOB, 17);
    EXPECT_EQ(COLOR_KNOB, 18);
    EXPECT_EQ(ACOLOR_KNOB, 19);
    EXPECT_EQ(TAB_KNOB, 20);
    EXPECT_EQ(AXIS_KNOB, 29);
    EXPECT_EQ(DoublePtr, 0);
    EXPECT_EQ(FloatPtr, 1);
    EXPECT_EQ(StringPtr, 2);
    EXPECT_EQ(IntPtr, 3);
    EXPECT_EQ(BoolPtr, 5);
    EXPECT_EQ(FormatPairPtr, 9);
    EXPECT_EQ(MatrixPtr, 10);
}

TEST(Knobs, TakeARangeWithTheirDeclaration) {
    Declarations f;
    Values v;
    const IRange range(-2, 7.5);
    Int_knob(f, &v.whole, range, "int");
    Float_knob(f, v.single, range, "float");
    Float_knob(f, v.real, range, "float of double");
    Double_knob(f, v.real, range, "double");
    Color_knob(f, v.single, range, "color");
    Color_knob(f, v.real, range, "color of double");
    for (const auto& knob : f.made) {
        EXPECT_TRUE(knob->has_range()) << knob->name();
        EXPECT_EQ(knob->minimum(), -2) << knob->name();
        EXPECT_EQ(knob->maximum(), 7.5) << knob->name();
    }
}

TEST(Knobs, KeepTheirLabels) {
    Declarations f;
    Values v;
    Int_knob(f, &v.whole, "count", "How many");
    EXPECT_EQ(f.made[0]->name(), "count");
    EXPECT_EQ(f.made[0]->label(), "How many");
    EXPECT_TRUE(f.made[0]->is("count"));
    EXPECT_FALSE(f.made[0]->is("How many"));
}

TEST(Knobs, AreDescribedByTheCallsBehindThem) {
    Declarations f;
    Values v;
    Int_knob(f, &v.whole, "first");
    Double_knob(f, v.real, "second");
    Tooltip(f, "What it does.");
    SetFlags(f, Knob::EARLY_STORE | Knob::LOG_SLIDER);
    SetFlags(f, Knob::NO_ANIMATION);
    ClearFlags(f, Knob::LOG_SLIDER);
    SetRange(f, 1, 2);
    EXPECT_EQ(f.made[1]->tooltip(), "What it does.");
    EXPECT_EQ(f.made[1]->flags(), Knob::EARLY_STORE | Knob::NO_ANIMATION);
    EXPECT_EQ(f.made[1]->minimum(), 1);
    EXPECT_EQ(f.made[1]->maximum(), 2);
    SetRange(f, IRange(3, 4));
    EXPECT_EQ(f.made[1]->minimum(), 3);
    Tooltip(f, std::string("More."));
    EXPECT_EQ(f.made[1]->tooltip(), "More.");
    EXPECT_EQ(f.made[0]->tooltip(), "");
    EXPECT_EQ(f.made[0]->flags(), 0u);
    EXPECT_FALSE(f.made[0]->has_range());
}

TEST(Knobs, AreDescribedOnlyWhileTheyAreMade) {
    Declarations f;
    Values v;
    Tooltip(f, "There is no knob yet.");
    Int_knob(f, &v.whole, "whole");
    f.making = false;
    Tooltip(f, "Too late.");
    SetFlags(f, Knob::DISABLED);
    SetRange(f, 1, 2);
    EXPECT_EQ(f.made[0]->tooltip(), "");
    EXPECT_EQ(f.made[0]->flags(), 0u);
    EXPECT_FALSE(f.made[0]->has_range());
}

TEST(Knobs, OfThePanelStoreNothing) {
    Declarations f;
    Tab_knob(f, "Tab");
    Text_knob(f, "just text");
    Text_knob(f, "label", "text");
    Named_Text_knob(f, "name", "text");
    Divider(f);
    Divider(f, "part");
    Newline(f);
    Button(f, "press", "Press me");
    BeginGroup(f, "group", "Group");
    BeginClosedGroup(f, "closed");
    EndGroup(f);
    const struct {
        KnobType type;
        const char *name, *label;
    } rows[] = {
        {TAB_KNOB, "", "Tab"},
        {TEXT_KNOB, "", "just text"},
        {TEXT_KNOB, "", "label"},
        {TEXT_KNOB, "name", "text"},
        {DIVIDER_KNOB, "", ""},
        {DIVIDER_KNOB, "", "part"},
        {NEWLINE_KNOB, "", ""},
        {BUTTON_KNOB, "press", "Press me"},
        {BEGIN_GROUP_KNOB, "group", "Group"},
        {BEGIN_GROUP_KNOB, "closed", "closed"},
        {END_GROUP_KNOB, "", ""},
    };
    ASSERT_EQ(f.kept.size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); i++) {
        EXPECT_EQ(f.kept[i].type, rows[i].type) << i;
        EXPECT_EQ(f.kept[i].store, NoPtr) << i;
        EXPECT_EQ(f.kept[i].data, nullptr) << i;
        EXPECT_EQ(f.made[i]->name(), rows[i].name) << i;
        EXPECT_EQ(f.made[i]->label(), rows[i].label) << i;
    }
}

// ---- one knob by itself ------------------------------------------------------------------------

TEST(Knob, IsEnabledAndVisibleUntilItIsNot) {
    Knob knob("name");
    EXPECT_TRUE(knob.enabled());
    EXPECT_TRUE(knob.isVisible());
    knob.disable();
    knob.hide();
    EXPECT_FALSE(knob.enabled());
    EXPECT_FALSE(knob.isVisible());
    EXPECT_EQ(knob.flags(), Knob::DISABLED | Knob::INVISIBLE);
    knob.enable();
    knob.show();
    EXPECT_EQ(knob.flags(), 0u);
    knob.enable(false);
    knob.visible(false);
    EXPECT_TRUE(knob.flag(Knob::DISABLED));
    EXPECT_TRUE(knob.flag(Knob::INVISIBLE));
}

TEST(Knob, HasFlagsWithTheHostsValues) {
    EXPECT_EQ(Knob::LOG_SLIDER, 0x4u);
    EXPECT_EQ(Knob::STORE_INTEGER, 0x8u);
    EXPECT_EQ(Knob::DISABLED, 0x80u);
    EXPECT_EQ(Knob::NO_ANIMATION, 0x100u);
    EXPECT_EQ(Knob::DO_NOT_WRITE, 0x200u);
    EXPECT_EQ(Knob::INVISIBLE, 0x400u);
    EXPECT_EQ(Knob::STARTLINE, 0x1000u);
    EXPECT_EQ(Knob::ENDLINE, 0x2000u);
    EXPECT_EQ(Knob::KNOB_CHANGED_ALWAYS, 0x10000u);
    EXPECT_EQ(Knob::NO_UNDO, 0x80000u);
    EXPECT_EQ(Knob::ALWAYS_SAVE, 0x100000u);
    EXPECT_EQ(Knob::SAVE_MENU, 0x2000000u);
    EXPECT_EQ(Knob::KNOB_CHANGED_RECURSIVE, 0x8000000u);
    EXPECT_EQ(Knob::READ_ONLY, 0x10000000u);
    EXPECT_EQ(Knob::NO_MULTIVIEW, 0x40000000u);
    EXPECT_EQ(Knob::EARLY_STORE, 0x80000000u);
}

TEST(Knob, HasNoValueOfItsOwn) {
    Knob knob("name", "label", BUTTON_KNOB);
    Hash hash;
    int untouched = 7;
    knob.store(IntPtr, &untouched, hash, OutputContext());
    EXPECT_EQ(untouched, 7);
    EXPECT_EQ(hash, Hash());
    EXPECT_EQ(knob.ClassID(), BUTTON_KNOB);
    EXPECT_EQ(knob.size(), 0);
    EXPECT_EQ(knob.get_value(), 0);
    EXPECT_FALSE(knob.set_value(1));
    EXPECT_FALSE(knob.isAnimated());
    EXPECT_EQ(knob.get_text(), nullptr);
    EXPECT_FALSE(knob.set_text("text"));
    EXPECT_FALSE(knob.from_script("1"));
    EXPECT_EQ(knob.to_script(), "");
    EXPECT_FALSE(knob.not_default());
}
