// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/axis_knob.h"

#include "tests/host/panel.h"

using namespace velmora;
using namespace velmora::host;
using DD::Image::Matrix4;

class AxisKnobTest : public PanelTest {
protected:
    AxisKnob& transform = dynamic_cast<AxisKnob&>(knob("transform"));
};

static Matrix4 moved(float x, float y, float z) {
    Matrix4 m;
    m.translation(x, y, z);
    return m;
}

TEST_F(AxisKnobTest, HasPartsThatAreKnobsOfTheNode) {
    const struct {
        const char* name;
        DD::Image::KnobType type;
        std::vector<double> values;
    } rows[] = {
        {"xform_order", DD::Image::ENUMERATION_KNOB, {0}},
        {"rot_order", DD::Image::ENUMERATION_KNOB, {4}},
        {"translate", DD::Image::XYZ_KNOB, {0, 0, 0}},
        {"rotate", DD::Image::XYZ_KNOB, {0, 0, 0}},
        {"scaling", DD::Image::XYZ_KNOB, {1, 1, 1}},
        {"uniform_scale", DD::Image::DOUBLE_KNOB, {1}},
        {"skew", DD::Image::XYZ_KNOB, {0, 0, 0}},
        {"pivot", DD::Image::XYZ_KNOB, {0, 0, 0}},
        {"useMatrix", DD::Image::BOOL_KNOB, {0}},
        {"matrix", DD::Image::MATRIX_KNOB, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    };
    for (const auto& row : rows) {
        const HostKnob* const part = node.knob(row.name);
        ASSERT_TRUE(part) << row.name;
        EXPECT_EQ(part->ClassID(), row.type) << row.name;
        ASSERT_EQ(part->size(), int(row.values.size())) << row.name;
        for (int i = 0; i < part->size(); i++)
            EXPECT_EQ(part->get_value(i), row.values[std::size_t(i)]) << row.name << " " << i;
        EXPECT_FALSE(part->not_default()) << row.name;
        EXPECT_FALSE(part->declared()) << row.name;
        EXPECT_TRUE(node.knob(std::string("second_") + row.name)) << row.name;
    }
    EXPECT_STREQ(knob("xform_order").get_text(), "SRT");
    EXPECT_STREQ(knob("rot_order").get_text(), "ZXY");
    EXPECT_TRUE(transform.declared());
}

TEST_F(AxisKnobTest, StartsWithTheMatrixThatItsOpHas) {
    EXPECT_EQ(stored()->transform, Matrix4::identity());
    EXPECT_EQ(stored()->second, moved(1, 2, 3));
    EXPECT_EQ(knob("second_useMatrix").get_value(), 1);
    EXPECT_EQ(knob("second_matrix").get_value(3), 1); // rows: the first one's last
    EXPECT_FALSE(knob("second_matrix").not_default());
}

TEST_F(AxisKnobTest, StoresWhatItsPartsComeTo) {
    ASSERT_TRUE(knob("translate").set_value(5, 0));
    ASSERT_TRUE(knob("uniform_scale").set_value(2));
    const Matrix4 m = stored()->transform;
    EXPECT_EQ(m.translation(), DD::Image::Vector3(5, 0, 0));
    EXPECT_EQ(m.x_axis(), DD::Image::Vector3(2, 0, 0));
    EXPECT_EQ(m.z_axis(), DD::Image::Vector3(0, 0, 2));
    EXPECT_EQ(stored()->second, moved(1, 2, 3)); // has parts of its own
}

TEST_F(AxisKnobTest, TellsItsMatrixInMemoryOrder) {
    ASSERT_TRUE(knob("translate").set_value(5, 1));
    EXPECT_EQ(transform.size(), 16);
    EXPECT_EQ(transform.get_value(13), 5);
    EXPECT_EQ(transform.get_value(0), 1);
    EXPECT_EQ(transform.get_value(16), 0);
    EXPECT_EQ(transform.get_value(-1), 0);
}

TEST_F(AxisKnobTest, IsAMatrixInPlaceOfItsPartsWhenItIsToldSo) {
    ASSERT_TRUE(knob("translate").set_value(5, 0));
    ASSERT_TRUE(knob("matrix").from_script("{{1 0 0 7} {0 1 0 8} {0 0 1 9} {0 0 0 1}}"));
    EXPECT_EQ(stored()->transform, moved(5, 0, 0));
    ASSERT_TRUE(knob("useMatrix").set_value(1));
    EXPECT_EQ(stored()->transform, moved(7, 8, 9));
    ASSERT_TRUE(knob("useMatrix").set_value(0));
    EXPECT_EQ(stored()->transform, moved(5, 0, 0));
}

TEST_F(AxisKnobTest, TakesAMatrixFromAProgram) {
    HostMatrix columns;
    for (int i = 0; i < 16; i++)
        columns[std::size_t(i)] = float(i + 1);
    transform.set_matrix(columns);
    EXPECT_EQ(stored()->transform, Matrix4(columns.data()));
    EXPECT_EQ(knob("matrix").get_value(1), 5); // the first row's second
    EXPECT_EQ(knob("useMatrix").get_value(), 1);
}

TEST_F(AxisKnobTest, IsTheMatrixOfItsTime) {
    EXPECT_FALSE(transform.is_animated());
    for (const char* const part : {"translate", "rotate", "scaling", "uniform_scale", "pivot"}) {
        ASSERT_TRUE(knob(part).from_script("{{curve K x1 1 x5 2}}")) << part;
        EXPECT_TRUE(transform.is_animated()) << part;
        ASSERT_TRUE(knob(part).set_value(part == std::string("translate") ? 0 : 1)) << part;
        EXPECT_FALSE(transform.is_animated()) << part;
    }
    ASSERT_TRUE(knob("rotate").set_value(0));
    ASSERT_TRUE(knob("translate").from_script("{{curve K x1 1 x5 2} 0 0}"));
    EXPECT_EQ(stored(1)->transform.a03, 1);
    EXPECT_EQ(stored(5)->transform.a03, 2);
    EXPECT_EQ(transform.matrix_at(5)[12], 2);
}

TEST_F(AxisKnobTest, HashesTheMatrix) {
    const DD::Image::Hash before = hash_at(1);
    const struct {
        const char* part;
        double other, back;
    } parts[] = {
        {"translate", 2, 0}, {"rotate", 30, 0}, {"scaling", 2, 1}, {"uniform_scale", 3, 1}};
    for (const auto& p : parts) {
        ASSERT_TRUE(knob(p.part).set_value(p.other)) << p.part;
        EXPECT_NE(hash_at(1), before) << p.part;
        ASSERT_TRUE(knob(p.part).set_value(p.back)) << p.part;
        EXPECT_EQ(hash_at(1), before) << p.part;
    }
    ASSERT_TRUE(knob("pivot").set_value(7)); // no effect without rotation and scale
    EXPECT_EQ(stored()->transform, Matrix4::identity());
    ASSERT_TRUE(knob("scaling").set_value(2, 0));
    const DD::Image::Hash about_seven = hash_at(1);
    ASSERT_TRUE(knob("pivot").set_value(0));
    EXPECT_NE(hash_at(1), about_seven);
}

TEST_F(AxisKnobTest, RefusesASkew) {
    const char* const error = "shot.nk:1:2: knob 'skew': a skew is not supported";
    EXPECT_EQ(read_error("skew", "{0 0 0}"), "no error");
    EXPECT_EQ(read_error("skew", "{0 0 1}"), error);
    EXPECT_EQ(read_error("skew", "0.1"), error);
    EXPECT_EQ(read_error("skew", "{{curve x1 0 x2 1} 0 0}"), error);
    EXPECT_FALSE(knob("skew").set_value(1));
    EXPECT_TRUE(knob("skew").set_value(0));
    EXPECT_FALSE(knob("skew").not_default());
}

TEST_F(AxisKnobTest, HasNoValueInScriptsOfItsOwn) {
    EXPECT_EQ(read_error("transform", "1"), "shot.nk:1:2: knob 'transform' has no value");
}
