// SPDX-License-Identifier: BSD-3-Clause
#include "tests/host/comp.h"

#include <cmath>
#include <DDImage/CameraOp.h>

using namespace velmora;
using namespace velmora::host;
using namespace DD::Image;

typedef std::array<double, 3> Point;

// Single precision over a few steps with numbers below 50.
static const double tolerance = 2e-5;

class AxisOpTest : public CompTest {
protected:
    Node& axis = create("Axis2", "X");
    OpTree tree{axis};

    AxisOp& at(double frame) {
        Op& op = tree.at(frame);
        validate(op);
        return dynamic_cast<AxisOp&>(op);
    }

    void script(Node& node, const char* knob, const char* value) {
        ASSERT_TRUE(node.knob(knob)->from_script(value)) << knob << " " << value;
    }
};

static void expect_near(const Vector3& a, const Point& b, const std::string& what) {
    EXPECT_NEAR(a.x, b[0], tolerance) << what;
    EXPECT_NEAR(a.y, b[1], tolerance) << what;
    EXPECT_NEAR(a.z, b[2], tolerance) << what;
}

TEST_F(AxisOpTest, LeavesEverythingWhereItIsAtFirst) {
    EXPECT_EQ(at(1).matrix(), Matrix4::identity());
    EXPECT_EQ(at(1).local(), Matrix4::identity());
    EXPECT_EQ(at(1).imatrix(), Matrix4::identity());
    EXPECT_EQ(at(1).parent(), nullptr);
    EXPECT_EQ(at(1).iop(), nullptr);
}

TEST_F(AxisOpTest, ScalesTurnsAndMovesInThatOrder) {
    script(axis, "translate", "{10 20 30}");
    script(axis, "rotate", "{0 0 90}");
    script(axis, "scaling", "{2 3 4}");
    script(axis, "uniform_scale", "0.5");
    // (1, 1, 1) is scaled to (1, 1.5, 2), turned to (-1.5, 1, 2) and moved.
    expect_near(at(1).matrix().transform(Vector3(1, 1, 1)), {8.5, 21, 32}, "SRT");
}

// Turns `p` about axis 0, 1 or 2, counterclockwise as seen from the axis's tip.
static Point turned(const Point& p, int axis, double degrees) {
    const double angle = degrees * std::acos(-1.0) / 180;
    const std::size_t next = std::size_t(axis + 1) % 3, last = std::size_t(axis + 2) % 3;
    Point result = p;
    result[next] = p[next] * std::cos(angle) - p[last] * std::sin(angle);
    result[last] = p[next] * std::sin(angle) + p[last] * std::cos(angle);
    return result;
}

TEST_F(AxisOpTest, TakesEveryOrderAsItIsWritten) {
    const Point translate = {1, 2, -3}, rotate = {20, -50, 75}, scaling = {2, 3, 0.5},
                p = {1, 2, 3};
    script(axis, "translate", "{1 2 -3}");
    script(axis, "rotate", "{20 -50 75}");
    script(axis, "scaling", "{2 3 0.5}");
    for (const std::string order : {"SRT", "STR", "RST", "RTS", "TSR", "TRS"}) {
        for (const std::string turns : {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"}) {
            set_text(axis, "xform_order", order.c_str());
            set_text(axis, "rot_order", turns.c_str());
            Point expected = p;
            for (const char step : order) {
                for (std::size_t k = 0; k < 3 && step == 'S'; k++)
                    expected[k] *= scaling[k];
                for (std::size_t k = 0; k < 3 && step == 'T'; k++)
                    expected[k] += translate[k];
                for (std::size_t k = 0; k < 3 && step == 'R'; k++) {
                    const int about = turns[k] - 'X';
                    expected = turned(expected, about, rotate[std::size_t(about)]);
                }
            }
            expect_near(at(1).matrix().transform(Vector3(1, 2, 3)), expected, order + " " + turns);
        }
    }
}

TEST_F(AxisOpTest, TurnsAndScalesAboutThePivot) {
    script(axis, "pivot", "{5 0 0}");
    script(axis, "rotate", "{0 0 90}");
    script(axis, "scaling", "2");
    expect_near(at(1).matrix().transform(Vector3(5, 0, 0)), {5, 0, 0}, "the pivot");
    // A point at distance 1 beside it: scaled to 2 beside it, rotated to 2 above it.
    expect_near(at(1).matrix().transform(Vector3(6, 0, 0)), {5, 2, 0}, "beside");
}

TEST_F(AxisOpTest, StandsOnItsParentsParents) {
    Node &middle = create("Axis3"), &top = create("Axis");
    ASSERT_TRUE(axis.set_input(0, &middle));
    ASSERT_TRUE(middle.set_input(0, &top));
    script(top, "translate", "{10 0 0}");
    script(top, "rotate", "{0 0 90}");
    script(middle, "translate", "{1 0 0}");
    script(axis, "scaling", "2");
    // (1, 0, 0) is scaled to (2, 0, 0), moved to (3, 0, 0), turned to (0, 3, 0) and moved to
    // (10, 3, 0).
    const AxisOp& op = at(1);
    expect_near(op.matrix().transform(Vector3(1, 0, 0)), {10, 3, 0}, "world");
    expect_near(op.local().transform(Vector3(1, 0, 0)), {2, 0, 0}, "local");
    ASSERT_NE(op.parent(), nullptr);
    expect_near(op.parent()->matrix().transform(Vector3(2, 0, 0)), {10, 3, 0}, "parent");

    script(top, "translate", "{20 0 0}"); // two levels up
    expect_near(at(1).matrix().transform(Vector3(1, 0, 0)), {20, 3, 0}, "moved");
    ASSERT_TRUE(middle.set_input(0, nullptr));
    expect_near(at(1).matrix().transform(Vector3(1, 0, 0)), {3, 0, 0}, "without it");
}

TEST_F(AxisOpTest, StandsOnAParentThatTakesTheSameOnesPlace) {
    Node &first = create("Axis2"), &second = create("Axis2");
    for (Node* const parent : {&first, &second})
        script(*parent, "translate", "{4 0 0}");
    for (Node* const parent : {&first, &second}) {
        ASSERT_TRUE(axis.set_input(0, parent));
        const AxisOp& op = at(1);
        expect_near(op.matrix().translation(), {4, 0, 0}, parent->name());
        expect_near(op.parent()->matrix().translation(), {4, 0, 0}, parent->name());
    }
}

TEST_F(AxisOpTest, IsUndoneByItsInverse) {
    script(axis, "translate", "{1 2 3}");
    script(axis, "rotate", "{10 20 30}");
    AxisOp& op = at(1);
    const Vector3 p(4, 5, 6);
    expect_near(op.imatrix().transform(op.matrix().transform(p)), {4, 5, 6}, "there and back");
    Matrix4 moved;
    moved.translation(7, 0, 0);
    op.matrix(moved);
    EXPECT_EQ(op.matrix(), moved);
    expect_near(op.imatrix().transform(p), {-3, 5, 6}, "after a change");
    script(axis, "translate", "{0 0 1}");
    script(axis, "rotate", "0");
    expect_near(at(1).imatrix().transform(p), {4, 5, 5}, "validated again");
}

TEST_F(AxisOpTest, TellsItsMatrixAtOtherTimes) {
    Node& parent = create("Axis2");
    ASSERT_TRUE(axis.set_input(0, &parent));
    script(parent, "translate", "{{curve K x1 10 x5 50} 0 0}");
    script(axis, "translate", "{0 {curve K x1 1 x5 5} 0}");
    const AxisOp& op = at(1);
    OutputContext later;
    later.setFrame(5);
    Matrix4 matrix;
    op.matrixAt(later, matrix);
    EXPECT_EQ(matrix.translation(), Vector3(50, 5, 0));
    EXPECT_EQ(op.matrix().translation(), Vector3(10, 1, 0));
    op.matrixAt(op.outputContext(), matrix);
    EXPECT_EQ(matrix, op.matrix());
}

TEST_F(AxisOpTest, TakesAxesAndCamerasAsItsParent) {
    const Op& op = axis.prototype();
    char buffer[100];
    EXPECT_STREQ(op.input_label(0, buffer), "axis");
    EXPECT_EQ(op.inputs(), 1);
    EXPECT_TRUE(axis.set_input(0, &create("Axis")));
    EXPECT_TRUE(axis.set_input(0, &create("Camera3")));
    EXPECT_FALSE(axis.set_input(0, &create("Ramp")));
    EXPECT_TRUE(axis.set_input(0, nullptr));
}
