// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/curve.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace velmora;
using namespace velmora::host;

// The value `text` as an item of a list.
static ScriptValue value_of(const std::string& text) {
    const ScriptValue list = {ScriptValue::Kind::braced, text, {1, 1}};
    return list_items(list, "shot.nk").at(0);
}

static AnimationCurve curve_of(const std::string& text) {
    return AnimationCurve::parse(value_of(text), "shot.nk");
}

static std::string error_of(const std::string& text) {
    try {
        curve_of(text);
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

static std::string error_at(const std::string& text, double frame) {
    try {
        curve_of(text).at(frame);
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

// A curve of `count` keys at irregular frames with irregular values, all of one interpolation.
static std::string wild_curve(unsigned seed, int count, char interpolation) {
    std::mt19937 random(seed);
    std::string text = std::string("{curve ") + interpolation;
    double frame = -10;
    for (int k = 0; k < count; k++) {
        frame += 0.125 * (1 + random() % 80);
        const double value = 0.5 * (random() % 401) - 100;
        text += " x" + number_text(frame) + " " + number_text(value);
    }
    return text + "}";
}

// The values are at most 100, the spans at most 10, so rounding stays far below this.
static const double near = 1e-11;

// From four samples at `frame`, a step and two and three steps further on, exact for cubic curves.
static double first_derivative(const AnimationCurve& curve, double frame, double step) {
    return (-11 * curve.at(frame) + 18 * curve.at(frame + step) - 9 * curve.at(frame + 2 * step) +
            2 * curve.at(frame + 3 * step)) /
           (6 * step);
}

static double second_derivative(const AnimationCurve& curve, double frame, double step) {
    return (2 * curve.at(frame) - 5 * curve.at(frame + step) + 4 * curve.at(frame + 2 * step) -
            curve.at(frame + 3 * step)) /
           (step * step);
}

// A third of the way from one key to another, so that four samples stay in the span.
static double step_to(const CurveKey& from, const CurveKey& to) {
    return (to.frame - from.frame) / 3;
}

TEST(Curve, OfANumberIsThatNumberAtAllTimes) {
    for (const AnimationCurve& curve :
         {AnimationCurve::constant(-2.5), curve_of("-2.5"), curve_of("\"-2.5\"")}) {
        EXPECT_FALSE(curve.is_animated());
        EXPECT_EQ(curve.keys(), std::vector<CurveKey>());
        for (const double frame : {-1e9, 0.0, 1e9})
            EXPECT_EQ(curve.at(frame), -2.5);
        EXPECT_EQ(curve.text(), "-2.5");
    }
}

TEST(Curve, PassesThroughItsKeysExactly) {
    for (const char interpolation : {'K', 'L', 'S', 'R', 'C'})
        for (unsigned seed = 1; seed <= 20; seed++) {
            const AnimationCurve curve = curve_of(wild_curve(seed, 9, interpolation));
            EXPECT_TRUE(curve.is_animated());
            ASSERT_EQ(curve.keys().size(), 9u);
            for (const CurveKey& key : curve.keys())
                EXPECT_EQ(curve.at(key.frame), key.value);
        }
}

TEST(Curve, IsUnbrokenButForConstantSpans) {
    for (const char interpolation : {'L', 'S', 'R', 'C'})
        for (unsigned seed = 1; seed <= 20; seed++) {
            const AnimationCurve curve = curve_of(wild_curve(seed, 9, interpolation));
            // The steepest slope is below 1e5.
            for (const CurveKey& key : curve.keys()) {
                EXPECT_NEAR(curve.at(key.frame - 1e-9), key.value, 1e-4);
                EXPECT_NEAR(curve.at(key.frame + 1e-9), key.value, 1e-4);
            }
        }
}

TEST(Curve, StaysFromKeyToKeyWithConstant) {
    const AnimationCurve curve = curve_of("{curve K x1 35 x10 50 x11 20}");
    EXPECT_EQ(curve.at(1), 35);
    EXPECT_EQ(curve.at(9.999), 35);
    EXPECT_EQ(curve.at(10), 50);
    EXPECT_EQ(curve.at(10.5), 50);
    EXPECT_EQ(curve.at(11), 20);
}

TEST(Curve, GoesStraightWithLinear) {
    const AnimationCurve curve = curve_of("{curve L x1 35 x11 55 x13 53}");
    EXPECT_EQ(curve.at(3.5), 40);
    EXPECT_EQ(curve.at(6), 45);
    EXPECT_EQ(curve.at(12.5), 53.5);
    // Exactly as two numbers are mixed.
    const AnimationCurve tenths = curve_of("{curve L x0 0.1 x10 0.7}");
    for (int k = 1; k < 100; k++)
        EXPECT_EQ(tenths.at(0.1 * k), (1 - 0.1 * k / 10) * 0.1 + 0.1 * k / 10 * 0.7);
    // Handles move along the line.
    const AnimationCurve handles = curve_of("{curve L x1 35 u0.5 v2 x11 55 u3 v0}");
    EXPECT_EQ(handles.at(3.5), 40);
}

TEST(Curve, OfPointsInALineIsTheLine) {
    for (const char interpolation : {'L', 'S', 'R', 'C'}) {
        const AnimationCurve curve = curve_of(std::string("{curve l ") + interpolation +
                                              " x-2 7 x0 3 x1 1 x7 -11 l x8 -13}");
        for (double frame = -4; frame <= 10; frame += 0.0625)
            EXPECT_NEAR(curve.at(frame), 3 - 2 * frame, near) << interpolation << " " << frame;
    }
}

TEST(Curve, OfTwoKeysIsTheLineBetweenThem) {
    for (const char interpolation : {'L', 'S', 'R', 'C'}) {
        const AnimationCurve curve =
            curve_of(std::string("{curve ") + interpolation + " x0 1 x8 5}");
        EXPECT_NEAR(curve.at(1), 1.5, near);
        EXPECT_NEAR(curve.at(6), 4, near);
    }
}

TEST(Curve, NeverLeavesTheValuesOfItsKeysWithSmooth) {
    for (unsigned seed = 1; seed <= 200; seed++) {
        const AnimationCurve curve = curve_of(wild_curve(seed, 2 + seed % 9, 'S'));
        for (std::size_t k = 0; k + 1 < curve.keys().size(); k++) {
            const CurveKey &a = curve.keys()[k], &b = curve.keys()[k + 1];
            for (int part = 1; part < 64; part++) {
                const double value = curve.at(a.frame + (b.frame - a.frame) * part / 64);
                EXPECT_GE(value, std::min(a.value, b.value) - near);
                EXPECT_LE(value, std::max(a.value, b.value) + near);
            }
        }
    }
}

TEST(Curve, RunsAlongItsNeighboursWithCatmullRom) {
    for (unsigned seed = 1; seed <= 20; seed++) {
        const AnimationCurve curve = curve_of(wild_curve(seed, 9, 'R'));
        const std::vector<CurveKey>& keys = curve.keys();
        for (std::size_t k = 1; k + 1 < keys.size(); k++) {
            const double slope =
                (keys[k + 1].value - keys[k - 1].value) / (keys[k + 1].frame - keys[k - 1].frame);
            for (const double step : {step_to(keys[k], keys[k + 1]), step_to(keys[k], keys[k - 1])})
                EXPECT_NEAR(first_derivative(curve, keys[k].frame, step), slope, 1e-9);
        }
    }
}

TEST(Curve, BendsWithoutBreaksWithCubic) {
    for (unsigned seed = 1; seed <= 20; seed++) {
        const AnimationCurve curve = curve_of(wild_curve(seed, 9, 'C'));
        const std::vector<CurveKey>& keys = curve.keys();
        for (std::size_t k = 1; k + 1 < keys.size(); k++) {
            const double frame = keys[k].frame;
            const double left = step_to(keys[k], keys[k - 1]);
            const double right = step_to(keys[k], keys[k + 1]);
            // Steps are 1/24 at least; the second derivatives go up to 1e5.
            EXPECT_NEAR(first_derivative(curve, frame, left), first_derivative(curve, frame, right),
                        1e-8);
            EXPECT_NEAR(second_derivative(curve, frame, left),
                        second_derivative(curve, frame, right), 1e-6);
        }
    }
}

TEST(Curve, DoesNotBendAtItsEnds) {
    for (const char interpolation : {'R', 'C'})
        for (unsigned seed = 1; seed <= 20; seed++) {
            const AnimationCurve curve = curve_of(wild_curve(seed, 5, interpolation));
            const std::vector<CurveKey>& keys = curve.keys();
            EXPECT_NEAR(second_derivative(curve, keys[0].frame, step_to(keys[0], keys[1])), 0,
                        1e-7);
            EXPECT_NEAR(second_derivative(curve, keys[4].frame, step_to(keys[4], keys[3])), 0,
                        1e-7);
        }
}

// Halfway between keys at a distance h, with values a and b and slopes s and t, a cubic curve is at
// (a + b) / 2 + h (s - t) / 8.
TEST(Curve, HasTheValuesWorkedOutByHand) {
    const struct {
        const char* text;
        double frame, value;
    } cases[] = {
        // Slope 2 in the middle, (3 - 2) / 2 and (9 - 2) / 2 at the ends.
        {"{curve x0 0 x1 1 x2 4}", 0.5, 0.5 + (0.5 - 2) / 8},
        {"{curve x0 0 x1 1 x2 4}", 1.5, 2.5 + (2 - 3.5) / 8},
        {"{curve x0 0 x1 1 x2 4}", 0.25, 0.1328125},
        {"{curve R x0 0 x1 1 x2 4}", 1.5, 2.5 + (2 - 3.5) / 8},
        // Slope 5 in the middle would overshoot in the first span, whose limit is 3.
        {"{curve R x0 0 x1 1 x2 10}", 0.5, 0.5 + (-1 - 5) / 8.0},
        {"{curve x0 0 x1 1 x2 10}", 0.5, 0.5 + (0 - 3) / 8.0},
        {"{curve x0 0 x1 1 x2 10}", 1.5, 5.5 + (3 - 12) / 8.0},
        {"{curve x0 0 x1 -1 x2 -10}", 0.5, -0.5 - (0 - 3) / 8.0},
        {"{curve x0 0 x1 -1 x2 -10}", 1.5, -5.5 - (3 - 12) / 8.0},
        // Slope 0 at a maximum and at a minimum.
        {"{curve x0 0 x1 10 x2 5}", 0.5, 5 + 15 / 8.0},
        {"{curve x0 0 x1 10 x2 5}", 1.5, 7.5 + 7.5 / 8},
        {"{curve x0 0 x1 -10 x2 -5}", 0.5, -5 - 15 / 8.0},
        // A natural spline: slopes 1.5, 0 and -1.5.
        {"{curve C x0 0 x1 1 x2 0}", 0.5, 0.5 + 1.5 / 8},
        // A constant key, one towards both neighbours, then smooth again.
        {"{curve K x0 5 S x10 7 x20 9}", 5, 5},
        {"{curve K x0 5 S x10 7 x20 9}", 15, 8},
        {"{curve x0 0 L x1 1 S x2 4 x3 9}", 0.5, 0.5},
        {"{curve x0 0 L x1 1 S x2 4 x3 9}", 1.5, 2.5 + (3 - 4) / 8.0},
        {"{curve x0 0 L x1 1 S x2 4 x3 9}", 2.5, 6.5 + (4 - 5.5) / 8},
        // Given slopes; at the end next to one the second derivative is 0: (3 * 4 - 2) / 2.
        {"{curve x0 0 s0 x2 4 s0}", 1, 2},
        {"{curve x0 0 s0 x2 4 s0}", 0.5, 4 * 0.15625},
        {"{curve x0 1 s9 t2 x2 5 s-4}", 1, 3 + 2 * (2 + 4) / 8.0},
        {"{curve R x0 0 x1 4 s2 x2 5}", 0.5, 2 + (5 - 2) / 8.0},
        {"{curve R x0 0 x1 4 s2 x2 5}", 1.5, 4.5 + (2 - 0.5) / 8},
        // Smooth ends stay within the span, even next to a given slope.
        {"{curve S x0 0 x1 4 s20 x2 5}", 0.5, 2 + (0 - 20) / 8.0},
        {"{curve S x0 0 x1 4 s-20 x2 5}", 0.5, 2 + (12 + 20) / 8.0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(curve_of(c.text).at(c.frame), c.value, 1e-14) << c.text << " at " << c.frame;
}

// Points of Bézier curves, from their parameter.
TEST(Curve, FollowsItsHandles) {
    // Handles at 1/2 and 1/2 in time, at 0 and 1 in value, a quarter of the way.
    const AnimationCurve ease = curve_of("{curve x0 0 s0 v1.5 x1 1 s0 u1.5}");
    EXPECT_NEAR(ease.at(0.296875), 0.15625, 1e-14);
    EXPECT_NEAR(ease.at(0.5), 0.5, 1e-14);
    EXPECT_NEAR(ease.at(1 - 0.296875), 1 - 0.15625, 1e-14);
    // Handles at (2, 4) and (3.2, 8.8), halfway.
    const AnimationCurve skew = curve_of("{curve x0 0 s2 v1.5 x4 8 s-1 u0.6}");
    EXPECT_NEAR(skew.at(2.45), 5.8, 1e-13);
    // No handles: time and value go by the same cubic.
    const AnimationCurve none = curve_of("{curve x0 0 s5 u0 v0 x1 1 s7 u0 v0}");
    EXPECT_NEAR(none.at(0.3), 0.3, 1e-14);
    // Handles as long as the span: vertical halfway, at half the value.
    const AnimationCurve step = curve_of("{curve x0 0 s0 v3 x1 1 s0 u3}");
    EXPECT_NEAR(step.at(0.5 - 4e-6), 0.5, 0.02);
    EXPECT_NEAR(step.at(0.5), 0.5, 1e-4); // time is exact to 1e-16, the parameter to its cube root
    EXPECT_LT(step.at(0.4), 0.2);
}

TEST(Curve, StaysAsItIsOutsideItsKeys) {
    for (const char interpolation : {'K', 'L', 'S', 'R', 'C'}) {
        const AnimationCurve curve =
            curve_of(std::string("{curve ") + interpolation + " x1 1 x2 4 x3 20}");
        EXPECT_EQ(curve.at(0.999), 1);
        EXPECT_EQ(curve.at(-1e9), 1);
        EXPECT_EQ(curve.at(3.001), 20);
        EXPECT_EQ(curve.at(1e9), 20);
    }
    EXPECT_EQ(curve_of("{curve l k x1 1 k x3 5}").at(0), 1);
}

TEST(Curve, GoesOnAlongItsSlopesWhenLinearOutside) {
    const AnimationCurve both = curve_of("{curve l x1 1 l x3 5}");
    EXPECT_EQ(both.at(0), -1);
    EXPECT_EQ(both.at(6), 11);
    const AnimationCurve before = curve_of("{curve l x1 1 k x3 5}");
    EXPECT_EQ(before.at(0), -1);
    EXPECT_EQ(before.at(6), 5);
    const AnimationCurve after = curve_of("{curve x1 1 l x3 5}");
    EXPECT_EQ(after.at(0), 1);
    EXPECT_EQ(after.at(6), 11);
    // Slopes 0.5 and 3.5 at the ends, as inside.
    const AnimationCurve smooth = curve_of("{curve l x0 0 x1 1 l x2 4}");
    EXPECT_NEAR(smooth.at(-2), -1, 1e-14);
    EXPECT_NEAR(smooth.at(4), 11, 1e-14);
}

TEST(Curve, GoesOnAlongSlopesThatAreGiven) {
    const AnimationCurve curve = curve_of("{curve x0 0 s1 t2 x1 1 s3}");
    EXPECT_EQ(curve.at(-2), -2);
    EXPECT_EQ(curve.at(2), 4);
    EXPECT_EQ(curve_of("{curve k x0 0 s1 t2 k x1 1 s3 t0}").at(2), 1);
}

TEST(Curve, OfOneKeyStaysAsItIs) {
    for (const char* text : {"{curve x5 7}", "{curve L l x5 7}", "{curve C x5 7}", "{curve K 7}"})
        for (const double frame : {-100.0, 5.0, 100.0})
            EXPECT_EQ(curve_of(text).at(frame), 7);
}

TEST(Curve, PutsKeysWithoutFrameAtEvenSteps) {
    const auto frames = [](const std::string& text) {
        std::vector<double> all;
        const AnimationCurve curve = curve_of(text);
        for (const CurveKey& key : curve.keys())
            all.push_back(key.frame);
        return all;
    };
    EXPECT_EQ(frames("{curve 5 6 7}"), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(frames("{curve x10 5 6 7}"), (std::vector<double>{10, 11, 12}));
    EXPECT_EQ(frames("{curve x10 1 2 x20 3 4 5}"), (std::vector<double>{10, 11, 20, 29, 38}));
    EXPECT_EQ(frames("{curve 1 x0.5 2 3}"), (std::vector<double>{0, 0.5, 1}));
}

TEST(Curve, KeepsWhatItsKeysSay) {
    const std::vector<CurveKey> keys =
        curve_of("{curve i L l x1 35 x10 50.5 s2 t-0.5 u1.5 v0 k L x20 1e-3}").keys();
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(keys[0], (CurveKey{1, 35, 'L', 'l', {}, {}, 1, 1}));
    EXPECT_EQ(keys[1], (CurveKey{10, 50.5, 'L', {}, 2, -0.5, 1.5, 0}));
    EXPECT_EQ(keys[2], (CurveKey{20, 0.001, 'L', 'k', {}, {}, 1, 1}));
}

TEST(Curve, ReadsBackFromItsText) {
    const char* const texts[] = {
        "{curve x1 35 x10 50}",
        "{curve 1 2 4 x10 5 17}",
        "{curve i K x1 1 x3 2}",
        "{curve I 1}",
        "{curve L l x1 0.1 x3 0.2 l x7 0.7}",
        "{curve x1 35 s0 t1 u0.5 v3 R x3 1e+20 L 4 k 3}",
        "{curve C x-1 5 x0.25 6 x1e+09 7}",
        "{curve k x1 3 s1 l x3 4}",
    };
    for (const char* text : texts) {
        const AnimationCurve curve = curve_of(text);
        EXPECT_EQ(curve.text(), text);
        EXPECT_EQ(curve_of(curve.text()).keys(), curve.keys());
        EXPECT_EQ(AnimationCurve::parse(curve.value(), "shot.nk").keys(), curve.keys());
    }
    // Defaults are left out.
    EXPECT_EQ(curve_of("{curve S x0 1 x1 2 L L x2 3 u1 v1}").text(), "{curve 1 2 L 3}");
}

TEST(Curve, RefusesExpressions) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"frame", "shot.nk:1:2: the expression 'frame' is not supported"},
        {"\"frame * 2\"", "shot.nk:1:2: the expression 'frame * 2' is not supported"},
        {"{frame/2}", "shot.nk:1:2: the expression 'frame/2' is not supported"},
        {"{-parent.Axis2.rotate.y}",
         "shot.nk:1:2: the expression '-parent.Axis2.rotate.y' is not supported"},
        {"{curve+1 x1 5}", "shot.nk:1:2: the expression 'curve+1 x1 5' is not supported"},
        {"{}", "shot.nk:1:2: the expression '' is not supported"},
        {"\"\"", "shot.nk:1:2: the expression '' is not supported"},
        {"+", "shot.nk:1:2: the expression '+' is not supported"},
        {"{{curve x1 5}}", "shot.nk:1:2: the expression '{curve x1 5}' is not supported"},
        {"1e999", "shot.nk:1:2: '1e999' is out of range"},
        {"+-1", "shot.nk:1:2: the expression '+-1' is not supported"},
        {"inf", "shot.nk:1:2: 'inf' is not a finite number"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(c.text), c.error);
}

TEST(Curve, NamesTheWordAtFault) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"{curve}", "shot.nk:1:3: the curve has no key"},
        {"{curve i}", "shot.nk:1:3: the curve has no key"},
        {"{curve x1}", "shot.nk:1:9: 'x1' has no value after it"},
        {"{curve 1 K}", "shot.nk:1:11: 'K' has no value after it"},
        {"{curve x1 x2 3}", "shot.nk:1:12: 'x2' follows another frame that has no value"},
        {"{curve x1 5 y3}", "shot.nk:1:14: 'y3' cannot be part of a curve"},
        {"{curve x 1}", "shot.nk:1:9: 'x' cannot be part of a curve"},
        {"{curve 1 i}", "shot.nk:1:11: 'i' cannot be part of a curve"},
        {"{curve {1}}", "shot.nk:1:9: '{1}' cannot be part of a curve"},
        {"{curve \"1\"}", "shot.nk:1:9: '1' cannot be part of a curve"},
        {"{curve nan}", "shot.nk:1:9: 'nan' cannot be part of a curve"},
        {"{curve start}", "shot.nk:1:9: 'start' cannot be part of a curve"},
        {"{curve -inf}", "shot.nk:1:9: '-inf' is not a finite number"},
        {"{curve x1.5.2 3}", "shot.nk:1:10: '1.5.2' is not a number"},
        {"{curve 1e101}", "shot.nk:1:9: '1e101' is out of range"},
        {"{curve x2e9 1}", "shot.nk:1:9: 'x2e9' is out of range"},
        {"{curve x1e9 1 2}", "shot.nk:1:16: the frame 1000000001 is out of range"},
        {"{curve x5 1 x5 2}", "shot.nk:1:17: the key at 5 does not come a millionth of a frame or "
                              "more after the key at 5"},
        {"{curve x5 1 x4 2}", "shot.nk:1:17: the key at 4 does not come a millionth of a frame or "
                              "more after the key at 5"},
        {"{curve s1 5}", "shot.nk:1:9: 's1' does not follow a value"},
        {"{curve 5 x2 s1 6}", "shot.nk:1:14: 's1' does not follow a value"},
        {"{curve 5 s1 s2}", "shot.nk:1:14: 's2' is the second of its kind"},
        {"{curve 5 t1}", "shot.nk:1:11: 't1' without 's' before it leaves the left slope open"},
        {"{curve 5 s1e101}", "shot.nk:1:11: 's1e101' is out of range"},
        {"{curve 5 s0 u3.1}", "shot.nk:1:14: 'u3.1' is not between 0 and 3"},
        {"{curve 5 s0 v-1}", "shot.nk:1:14: 'v-1' is not between 0 and 3"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(c.text), c.error);
}

TEST(Curve, RefusesWhatTheHostDoesNotDocument) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"{curve x1 5 K x2 6}", "shot.nk:1:19: the key at 2 is constant ('K') and the one before "
                                "is not: the slope between "
                                "them is not documented"},
        {"{curve K x1 5 s0 x2 6}",
         "shot.nk:1:14: the key at 1 is constant ('K') and has slopes: which counts is not "
         "documented"},
        {"{curve K l x1 5 x2 6}",
         "shot.nk:1:16: the key at 1 ends a constant span ('K') and goes on linearly ('l'), which "
         "is not documented"},
        {"{curve K x1 5 S l x2 6}",
         "shot.nk:1:23: the key at 2 ends a constant span ('K') and goes on linearly ('l'), which "
         "is not documented"},
        {"{curve x1 5 u2 x2 6}",
         "shot.nk:1:12: the key at 1 has handles ('u', 'v') and no slopes: where they point is not "
         "documented"},
        {"{curve x1 5 x2 6 s1 u2}", "shot.nk:1:17: the key at 2 has a handle ('u', 'v') towards an "
                                    "end without slope, which is "
                                    "not documented"},
        {"{curve C x1 5 x2 6 s1}",
         "shot.nk:1:19: the key at 2 is cubic ('C') and has slopes, which is not documented"},
        {"{curve C x1 5 x2 6 v2}",
         "shot.nk:1:19: the key at 2 has handles ('u', 'v') and no slopes: where they point is not "
         "documented"},
        {"{curve C x1 5 S x2 6}",
         "shot.nk:1:21: the key at 2 is not cubic among cubic keys ('C'): how they join is "
         "not documented"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(c.text), c.error);
}

TEST(Curve, SaysWhereItIsNotCertain) {
    const std::string text = "{curve L l x1 1 x3 5}";
    EXPECT_EQ(curve_of(text).at(2), 3);
    EXPECT_EQ(curve_of(text).at(3), 5);
    EXPECT_EQ(curve_of(text).at(0), -1);
    EXPECT_EQ(error_at(text, 3.5),
              "shot.nk:1:2: whether the curve goes on linearly ('l') after the key at 3 is not "
              "documented: no letter comes before that key");
    // Constant in any case, or along a given slope.
    EXPECT_EQ(curve_of("{curve L l x1 5 x3 5}").at(4), 5);
    EXPECT_EQ(curve_of("{curve L l x1 1 x3 5 s3}").at(4), 8);
}

TEST(Curve, StaysFiniteBetweenTheLargestNumbers) {
    for (const char interpolation : {'K', 'L', 'S', 'R', 'C'}) {
        const AnimationCurve curve =
            curve_of(std::string("{curve l ") + (interpolation == 'K' ? 'L' : interpolation) +
                     " x-1e9 1e100 x0 -1e100 x0.000001 1e100 x1 -1e100 l x1e9 1e100}");
        for (const double frame : {-1e9, -5e8, 0.0, 5e-7, 0.5, 2.0, 1e9})
            EXPECT_TRUE(std::isfinite(curve.at(frame)));
    }
    const AnimationCurve given = curve_of("{curve x0 0 s1e100 u3 v3 x1e-6 1e100 s-1e100 u3 v3}");
    for (const double frame : {-1e9, 1e-9, 5e-7, 1e9})
        EXPECT_TRUE(std::isfinite(given.at(frame)));
}
