// SPDX-License-Identifier: BSD-3-Clause

// A made-up sky to measure with: evenly spread stars, the same in every run.
#pragma once

#include "kessimage/image.h"
#include "stars/stars.h"

#include <vector>

namespace velmora {

// Records handed out from memory.
class MemoryStars : public StarInput {
public:
    explicit MemoryStars(const std::vector<star>& stars);

    const star* next() override { return cursor++; }
    void reset() override { cursor = records.data(); }

private:
    std::vector<star> records; // the header first
    const star* cursor;
};

// `count` stars over the whole sphere. As in the real sky, there are ten times as many stars two
// magnitudes fainter; half of them are above the node's default threshold.
std::vector<star> made_up_sky(std::size_t count);

// The node's default knobs with the film window of a 24.576 mm wide camera of the image's shape.
StarRendererData default_render_data(int width, int height);

// A camera in the middle of the sky, turned `degrees` about the pole.
camera panned_camera(double degrees, double focal);

// A float image that is black again after clear().
class BenchImage {
public:
    BenchImage(int width, int height);
    const StarFramebuffer& framebuffer() const { return fb; }
    void clear() { image.make_blank(); }
    double light() const; // sum of red over all pixels; infinite or NaN when any pixel is

private:
    Kess::Image image;
    const StarFramebuffer fb;
};

} // namespace velmora
