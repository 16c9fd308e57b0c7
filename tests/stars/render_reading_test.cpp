// SPDX-License-Identifier: BSD-3-Clause

// The plain reading of the renderer against its steps written down once more, down to the calls
// that draw, bit for bit.
#include "stars/projection.h"
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/render.h"

#include <cmath>

using namespace stars_test;

namespace {

class Reread {
public:
    Reread(const StarRendererData& data, const StarFramebuffer& fb, bool version2,
           const std::vector<camera>& cams)
        : data(data), fb(fb), version2(version2) {
        for (const camera& c : cams)
            matrices.push_back(combined(c));
        scale = float(4.0 * data.brightness);
        if (cams.size() >= 2)
            scale = scale / float(cams.size() - 1);
        const double shape = (double(fb.width) / fb.height) / (std::fabs(data.right - data.left) /
                                                               std::fabs(data.bottom - data.top));
        spot_w = float(double(float(data.spot_width * 0.0005 * fb.width)) * shape);
        spot_h = float(data.star_size * 0.0005 * fb.width);
        for (float* size : {&spot_w, &spot_h})
            if (*size < 1) {
                scale *= *size;
                *size = 1;
            }
    }

    bool draw(const star& s) const {
        float lum = s.flux;
        if (data.lum_threshold > double(lum))
            return false;
        const bool has_distance = data.threed && version2 && s.distance > 0;
        if (data.bias_exponent != 1.0)
            lum = powf(lum, float(data.bias_exponent));
        if (double(lum) > data.lum_max)
            lum = float(data.lum_max);
        const Color3 color = {{channel(s.red, 0), channel(s.green, 1), channel(s.blue, 2)}};

        const double ra = double(float(s.ra) * 0.017453292f);
        const double dec = double(float(s.dec) * 0.017453292f);
        const double x = std::cos(dec) * std::cos(ra);
        const double y = std::sin(dec);
        const double z = std::sin(ra) * std::cos(dec);
        const double v = (has_distance ? 1 / s.distance : 0) - data.parallax * 0.01;
        const double w = v >= 0 ? v : 0;

        Vector2 before, now;
        bool seen_before = place(x, y, z, w, 0, before);
        if (matrices.size() == 1)
            return seen_before && op_star_streak(fb, before, before, lum * scale, color, spot_w,
                                                 spot_h, data.lines);
        bool result = false;
        for (size_t i = 1; i < matrices.size(); i++) {
            const bool seen = place(x, y, z, w, i, now);
            if (seen || seen_before)
                result |=
                    op_star_streak(fb, before, now, lum * scale, color, spot_w, spot_h, data.lines);
            before = now;
            seen_before = seen;
        }
        return result;
    }

private:
    const StarRendererData& data;
    const StarFramebuffer& fb;
    bool version2;
    std::vector<DblMatrix4> matrices;
    float scale, spot_w, spot_h;

    DblMatrix4 combined(const camera& c) const {
        if (data.projection != OP_STARS_PERSPECTIVE)
            return c.matrix;
        DblMatrix4 p = {};
        p(0, 0) = p(1, 1) = 1;
        p(2, 2) = p(2, 3) = 1 / c.focal;
        p(3, 2) = -c.near * (1 / c.focal);
        DblMatrix4 product;
        for (int i = 0; i < 4; i++)
            for (int j = 0; j < 4; j++) {
                double sum = 0;
                for (int k = 0; k < 4; k++)
                    sum += c.matrix(i, k) * p(k, j);
                product(i, j) = sum;
            }
        return product;
    }

    float channel(int byte, int k) const {
        float c = float(byte) * 0.003921568859368563f;
        if (c <= 0.03928f)
            c = c * 0.07739938f;
        else
            c = powf((c + 0.055f) * 0.9478673f, 2.4f);
        const float t = float(data.tint_strength);
        c = c * (1 - t) + data.tint_color[k] * t;
        const float saturation = float(data.saturation);
        return 0.5f * (1 - saturation) + c * saturation;
    }

    bool place(double x, double y, double z, double w, size_t sample, Vector2& out) const {
        return world_to_screen(x, y, z, w, matrices[sample], data.projection, fb.width, fb.height,
                               data.left, data.right, data.bottom, data.top, out);
    }
};

} // namespace

TEST(RenderReading, AgreesForAnySky) {
    const WithKernels plain(velmora::KernelLevel::plain);
    Dice dice(7);
    for (int round = 0; round < 60; round++) {
        const int width = 20 + dice.below(30), height = 15 + dice.below(30);
        StarRendererData data = plain_data(width);
        data.left = -dice.between(0.2, 2);
        data.right = dice.between(0.2, 2);
        data.bottom = -dice.between(0.2, 2);
        data.top = dice.between(0.2, 2);
        data.spot_width = dice.between(0.3, 4) * 2000 / width;
        data.star_size = dice.between(0.3, 4) * 2000 / width;
        data.lum_threshold = dice.between(-0.1, 0.2);
        data.lum_max = dice.between(0.5, 5);
        data.brightness = dice.between(0.1, 3);
        data.saturation = dice.between(0, 1.5);
        data.bias_exponent = round % 3 ? dice.between(0.3, 3) : 1;
        data.tint_strength = dice.between(0, 1);
        data.parallax = dice.between(-5, 40);
        for (int k = 0; k < 3; k++)
            data.tint_color[k] = float(dice.between(0, 1));
        data.projection = static_cast<op_stars_projection>(round % 3);
        data.lines = static_cast<op_stars_lines>(dice.below(3));
        data.threed = dice.below(2) != 0;
        const bool version2 = dice.below(3) != 0;

        std::vector<camera> list;
        const double turn = dice.between(-30, 30), moves = dice.between(-20, 20);
        for (int i = dice.below(4); i >= 0; i--) {
            DblMatrix4 m = turn_about_y(turn + i * moves);
            for (int j = 0; j < 3; j++)
                m(3, j) = dice.between(-0.3, 0.3);
            list.push_back(make_camera(m, dice.between(0.4, 2)));
        }
        std::vector<star> stars;
        for (int i = 0; i < 60; i++)
            stars.push_back(make_star(dice.between(20, 160), dice.between(-60, 60),
                                      float(std::exp(dice.between(-6, 2))), dice.below(256),
                                      dice.below(256), dice.below(256), dice.between(-1, 5)));

        Picture picture(width, height), expected(width, height);
        CountingInput input(stars, version2 ? "VELMORA2" : "VELMORA1");
        const bool drew = render(data, input, list, picture);
        const Reread reread(data, expected.fb, version2, list);
        bool expected_drew = false;
        for (const star& s : stars)
            expected_drew |= reread.draw(s);
        EXPECT_EQ(drew, expected_drew) << round;
        ASSERT_TRUE(same_bits(picture, expected)) << round;
    }
}
