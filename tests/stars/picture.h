// SPDX-License-Identifier: BSD-3-Clause

// Float pictures to draw into, in every memory layout that a framebuffer view can describe.
//
// Shapes:    "exact" layouts allocate the samples and nothing more, so that an address checker sees
//            the first float beside them; "guarded" ones keep known values between and around.
#pragma once

#include "stars/streak.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace stars_test {

enum Layout {
    INTERLEAVED, // alpha, red, green, blue per pixel, rows back to back: what the node has; exact
    GUARDED,     // six floats per pixel, rows and the whole padded
    PLANAR,      // four planes, pixel_stride 1, rows padded by two floats
    BOTTOM_UP,   // four planes, the last row first in memory: a negative row_stride; exact
};

inline bool same_float(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

// Red, green, blue are planes 0, 1, 2 and alpha, which starts at 0, is plane 3.
class Picture {
public:
    StarFramebuffer fb;

    Picture(int width, int height, Layout layout = INTERLEAVED) {
        static const int interleaved[4] = {1, 2, 3, 0};
        const bool planar = layout == PLANAR || layout == BOTTOM_UP;
        const int margin = layout == GUARDED || layout == PLANAR ? 64 : 0;
        fb.width = width;
        fb.height = height;
        fb.pixel_stride = planar ? 1 : layout == GUARDED ? 6 : 4;
        fb.row_stride = width * fb.pixel_stride + (margin ? 2 : 0);
        const int plane = fb.row_stride * height;
        memory.assign(size_t((planar ? 4 : 1) * plane + 2 * margin), guard);
        used.assign(memory.size(), false);
        for (int p = 0; p < 4; p++)
            origin[p] = margin + (planar ? p * plane : interleaved[p]);
        if (layout == BOTTOM_UP) {
            for (int& start : origin)
                start += (height - 1) * fb.row_stride;
            fb.row_stride = -fb.row_stride;
        }
        fb.red = memory.data() + origin[0];
        fb.green = memory.data() + origin[1];
        fb.blue = memory.data() + origin[2];
        fb.alpha = memory.data() + origin[3];
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                for (int p = 0; p < 4; p++) {
                    memory[index(p, x, y)] = 0;
                    used[index(p, x, y)] = true;
                }
        covered.assign(size_t(width) * size_t(height), 0);
    }

    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    float red(int x, int y) const { return at(0, x, y); }
    float green(int x, int y) const { return at(1, x, y); }
    float blue(int x, int y) const { return at(2, x, y); }
    float at(int plane, int x, int y) const { return memory[index(plane, x, y)]; }

    // Writes a colour sample as it stood before the drawing.
    void paint(int plane, int x, int y, float value) { memory[index(plane, x, y)] = value; }

    void cover(int x, int y, float alpha) {
        memory[index(3, x, y)] = alpha;
        covered[size_t(y * fb.width + x)] = alpha;
    }

    void cover_all(float alpha) {
        for (int y = 0; y < fb.height; y++)
            for (int x = 0; x < fb.width; x++)
                cover(x, y, alpha);
    }

    double total(int plane) const {
        double sum = 0;
        for (int y = 0; y < fb.height; y++)
            for (int x = 0; x < fb.width; x++)
                sum += at(plane, x, y);
        return sum;
    }

    // Whether every colour sample is still the +0 that it started as.
    bool is_black() const {
        for (int y = 0; y < fb.height; y++)
            for (int x = 0; x < fb.width; x++)
                for (int p = 0; p < 3; p++)
                    if (!same_float(at(p, x, y), 0))
                        return false;
        return true;
    }

    bool row_is_black(int y) const {
        for (int x = 0; x < fb.width; x++)
            if (red(x, y) != 0 || green(x, y) != 0 || blue(x, y) != 0)
                return false;
        return true;
    }

    // Whether alpha and everything between and around the samples is what it was.
    bool surroundings_intact() const {
        for (size_t i = 0; i < memory.size(); i++)
            if (!used[i] && !same_float(memory[i], guard))
                return false;
        for (int y = 0; y < fb.height; y++)
            for (int x = 0; x < fb.width; x++)
                if (!same_float(at(3, x, y), covered[size_t(y * fb.width + x)]))
                    return false;
        return true;
    }

private:
    static constexpr float guard = -7777.25f;

    std::vector<float> memory;
    std::vector<char> used;
    std::vector<float> covered; // alpha as it was set
    int origin[4];

    size_t index(int plane, int x, int y) const {
        return size_t(origin[plane] + y * fb.row_stride + x * fb.pixel_stride);
    }
};

// Equal colour samples bit for bit; all values that are not numbers are one.
inline testing::AssertionResult same_bits(const Picture& a, const Picture& b) {
    for (int y = 0; y < a.fb.height; y++)
        for (int x = 0; x < a.fb.width; x++)
            for (int p = 0; p < 3; p++)
                if (!same_float(a.at(p, x, y), b.at(p, x, y)))
                    return testing::AssertionFailure()
                           << "plane " << p << " at (" << x << ", " << y << ") is " << std::hexfloat
                           << a.at(p, x, y) << " in one and " << b.at(p, x, y) << " in the other";
    return testing::AssertionSuccess();
}

inline Vector2 at(float x, float y) {
    return Vector2{{x, y}};
}

constexpr Color3 white = {{1, 1, 1}};

// Draws a spot with weights of one into every row.
inline bool draw_spot(Picture& picture, Vector2 where, float amplitude, float size_x,
                      float size_y) {
    return op_star_streak(picture.fb, where, where, amplitude, white, size_x, size_y,
                          OP_STARS_LINES_ALL);
}

inline bool draw_streak(Picture& picture, Vector2 from, Vector2 to, float amplitude, float size_x,
                        float size_y) {
    return op_star_streak(picture.fb, from, to, amplitude, white, size_x, size_y,
                          OP_STARS_LINES_ALL);
}

} // namespace stars_test
