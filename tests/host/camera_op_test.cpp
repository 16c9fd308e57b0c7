// SPDX-License-Identifier: BSD-3-Clause
#include "tests/host/comp.h"

#include <cmath>
#include <DDImage/CameraOp.h>

using namespace velmora;
using namespace velmora::host;
using namespace DD::Image;

// Single precision over a few steps with numbers below 10.
static const float tolerance = 4e-6f;

class CameraOpTest : public CompTest {
protected:
    Node& camera = create("Camera2", "C");
    OpTree tree{camera};

    CameraOp& at(double frame) {
        Op& op = tree.at(frame);
        validate(op);
        return dynamic_cast<CameraOp&>(op);
    }

    void script(const char* knob, const char* value) {
        ASSERT_TRUE(camera.knob(knob)->from_script(value)) << knob << " " << value;
    }
};

// The point of the square to which the projection maps a point in camera space.
static Vector3 seen(const Matrix4& projection, float x, float y, float z) {
    return projection.transform(Vector3(x, y, z), 1).divide_w();
}

static void expect_at(const Vector3& p, float x, float y) {
    EXPECT_NEAR(p.x, x, tolerance);
    EXPECT_NEAR(p.y, y, tolerance);
}

TEST_F(CameraOpTest, IsTheHostsCameraAtFirst) {
    const CameraOp& op = at(1);
    EXPECT_EQ(op.projection_mode(), CameraOp::LENS_PERSPECTIVE);
    EXPECT_EQ(op.focal_length(), 50);
    EXPECT_EQ(op.film_width(), 24.576);
    EXPECT_EQ(op.film_height(), 18.672);
    EXPECT_EQ(op.Near(), 0.1);
    EXPECT_EQ(op.Far(), 10000);
    EXPECT_EQ(op.focal_point(), 2);
    EXPECT_EQ(op.fstop(), 16);
    EXPECT_EQ(op.win_translate(), Vector2(0, 0));
    EXPECT_EQ(op.win_scale(), Vector2(1, 1));
    EXPECT_EQ(op.win_roll(), 0);
    EXPECT_EQ(op.matrix(), Matrix4::identity());
}

TEST_F(CameraOpTest, TakesItsLensFromItsKnobs) {
    set(camera, "focal", 35);
    set(camera, "haperture", 36);
    set(camera, "vaperture", 24);
    set(camera, "near", 1);
    set(camera, "far", 99);
    set(camera, "focal_point", 7);
    set(camera, "fstop", 2.8);
    set(camera, "winroll", 12);
    script("win_translate", "{0.25 -0.5}");
    script("win_scale", "{2 4}");
    set_text(camera, "projection_mode", "spherical");
    const CameraOp& op = at(1);
    EXPECT_EQ(op.focal_length(), 35);
    EXPECT_EQ(op.film_width(), 36);
    EXPECT_EQ(op.film_height(), 24);
    EXPECT_EQ(op.Near(), 1);
    EXPECT_EQ(op.Far(), 99);
    EXPECT_EQ(op.focal_point(), 7);
    EXPECT_EQ(op.fstop(), 2.8);
    EXPECT_EQ(op.win_roll(), 12);
    EXPECT_EQ(op.win_translate(), Vector2(0.25, -0.5));
    EXPECT_EQ(op.win_scale(), Vector2(2, 4));
    EXPECT_EQ(op.projection_mode(), CameraOp::LENS_SPHERICAL);
}

TEST_F(CameraOpTest, IsAnAxisToo) {
    script("translate", "{1 2 3}");
    Node& parent = create("Axis2");
    ASSERT_TRUE(parent.knob("translate")->from_script("{10 0 0}"));
    ASSERT_TRUE(camera.set_input(0, &parent));
    EXPECT_EQ(at(1).matrix().translation(), Vector3(11, 2, 3));
    EXPECT_EQ(at(1).local().translation(), Vector3(1, 2, 3));
}

TEST_F(CameraOpTest, HasTheClassThatItsNodeHas) {
    for (const char* const name : {"Camera", "Camera2", "Camera3"}) {
        Node& node = create(name);
        OpTree cameras(node);
        Op& op = cameras.at(1);
        EXPECT_STREQ(op.Class(), name);
        EXPECT_NE(dynamic_cast<CameraOp*>(&op), nullptr);
    }
    for (const char* const name : {"Axis", "Axis2", "Axis3"}) {
        Node& node = create(name);
        OpTree axes(node);
        Op& op = axes.at(1);
        EXPECT_STREQ(op.Class(), name);
        EXPECT_NE(dynamic_cast<AxisOp*>(&op), nullptr);
        EXPECT_EQ(dynamic_cast<CameraOp*>(&op), nullptr);
    }
}

TEST_F(CameraOpTest, SeesHalfAnApertureToEachSide) {
    set(camera, "focal", 50);
    set(camera, "haperture", 25);
    const Matrix4& projection = at(1).projection();
    // A quarter to the side at distance 1 is the edge; the same scale holds upwards.
    expect_at(seen(projection, 0.25f, 0, -1), 1, 0);
    expect_at(seen(projection, -2.5f, 1.25f, -10), -1, 0.5f);
    EXPECT_NEAR(seen(projection, 0, 0, -0.1f).z, -1, tolerance);
    // At 10000 what is left of z is a difference of two large numbers in single precision.
    EXPECT_NEAR(seen(projection, 0, 0, -10000).z, 1, 1e-3f);
    const Matrix4 before = projection;
    set(camera, "vaperture", 1); // no effect
    EXPECT_EQ(at(1).projection(), before);
}

TEST_F(CameraOpTest, SeesInParallelWhenItIsOrthographic) {
    set(camera, "haperture", 25);
    set_text(camera, "projection_mode", "orthographic");
    const Matrix4& projection = at(1).projection();
    for (const float distance : {1.f, 100.f})
        expect_at(seen(projection, 0.25f, -0.125f, -distance), 1, -0.5f);
    EXPECT_EQ(at(1).projection(CameraOp::LENS_ORTHOGRAPHIC), at(1).projection());
    EXPECT_NE(at(1).projection(CameraOp::LENS_PERSPECTIVE), at(1).projection());
}

TEST_F(CameraOpTest, HasNoLensForPicturesOfAllDirections) {
    for (const int mode : {CameraOp::LENS_UV, CameraOp::LENS_SPHERICAL})
        EXPECT_EQ(at(1).projection(mode), Matrix4::identity());
}

TEST_F(CameraOpTest, MovesScalesAndRollsItsWindow) {
    set(camera, "focal", 50);
    set(camera, "haperture", 25);
    script("win_translate", "{0.5 0}");
    expect_at(seen(at(1).projection(), 0.25f, 0, -1), 0.5f, 0); // 1 - 0.5
    script("win_scale", "{2 4}");
    expect_at(seen(at(1).projection(), 0.25f, 0.25f, -1), 0.25f, 0.25f);
    set(camera, "winroll", 90);
    expect_at(seen(at(1).projection(), 0.25f, 0, -1), 0, 0.25f); // rotated last
}

TEST_F(CameraOpTest, IsTakenToThePixelsOfAFormat) {
    Matrix4 m = Matrix4::identity();
    const Format format(200, 100, 2);
    CameraOp::to_format(m, &format);
    EXPECT_EQ(m.transform(Vector3(0, 0, 5)), Vector3(100, 50, 5));
    EXPECT_EQ(m.transform(Vector3(-1, 0, 5)), Vector3(0, 50, 5));
    EXPECT_EQ(m.transform(Vector3(1, 0.25f, 5)), Vector3(200, 100, 5)); // 50 + 0.25 · 100 · 2
    const Format inside(300, 300, 10, 20, 110, 220);
    Matrix4 scaled;
    scaled.scaling(2);
    CameraOp::to_format(scaled, &inside);
    EXPECT_EQ(scaled.transform(Vector3(0.5f, 0, 0)), Vector3(110, 120, 0));
}

TEST_F(CameraOpTest, TellsItsProjectionAtOtherTimes) {
    const struct {
        const char *knob, *value;
    } animated[] = {
        {"focal", "{{curve K x1 50 x5 100}}"},    {"haperture", "{{curve K x1 25 x5 20}}"},
        {"near", "{{curve K x1 1 x5 2}}"},        {"far", "{{curve K x1 100 x5 200}}"},
        {"winroll", "{{curve K x1 0 x5 30}}"},    {"win_translate", "{{curve K x1 0 x5 1} 0.5}"},
        {"win_scale", "{{curve K x1 1 x5 2} 3}"},
    };
    OutputContext later;
    later.setFrame(5);
    for (const auto& a : animated) {
        script(a.knob, a.value);
        const Matrix4 then = at(5).projection();
        const CameraOp& op = at(1);
        EXPECT_NE(op.projection(), then) << a.knob;
        EXPECT_EQ(op.projectionAt(later), then) << a.knob;
        EXPECT_EQ(op.projectionAt(op.outputContext()), op.projection()) << a.knob;
    }
}

TEST_F(CameraOpTest, CanBeSetByAProgram) {
    CameraOp op(nullptr);
    op.projection_mode(CameraOp::LENS_ORTHOGRAPHIC);
    op.focal_length(1);
    op.film_width(2);
    op.film_height(3);
    op.Near(4);
    op.Far(5);
    op.focal_point(6);
    op.fstop(7);
    op.win_roll(8);
    op.win_translate(9, 10);
    op.win_scale(11, 12);
    EXPECT_EQ(op.projection_mode(), CameraOp::LENS_ORTHOGRAPHIC);
    EXPECT_EQ(op.focal_length(), 1);
    EXPECT_EQ(op.film_width(), 2);
    EXPECT_EQ(op.film_height(), 3);
    EXPECT_EQ(op.Near(), 4);
    EXPECT_EQ(op.Far(), 5);
    EXPECT_EQ(op.focal_point(), 6);
    EXPECT_EQ(op.fstop(), 7);
    EXPECT_EQ(op.win_roll(), 8);
    EXPECT_EQ(op.win_translate(), Vector2(9, 10));
    EXPECT_EQ(op.win_scale(), Vector2(11, 12));
    EXPECT_STREQ(op.Class(), "Camera2");
}

TEST_F(CameraOpTest, ThereIsOneForOpsWithoutOne) {
    CameraOp* const fallback = CameraOp::default_camera();
    EXPECT_EQ(fallback, CameraOp::default_camera());
    EXPECT_EQ(fallback->matrix(), Matrix4::identity());
    EXPECT_EQ(fallback->projection(), at(1).projection());
}
