// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/engine.h"

#include "stars/fast/shading.h"
#include "stars/fast/steady_math.h"

#include <cmath>

namespace velmora {

bool FastEngine::can_draw(const Frame& frame) {
    return StarBatch::can_place(*frame.data, frame.fb->width, frame.fb->height);
}

FastEngine::FastEngine(const Frame& frame, const LaneKernels& kernels, Fallback fallback)
    : Engine(frame), kernels(kernels), fallback(fallback), batch(frame.matrices.len()) {}

// ---- Visible stars ---------------------------------------------------------------------------

// No amplitude reaches farther than sqrt(ln(largest float)) = 9.42 sizes, as its 6250-fold must be
// finite.
static const double farthest_sizes = 9.5;
static const double reach_margin = 0.01;    // sizes, for steady_log's and the root's rounding
static const float pixel_margin = 2;        // for the rounding of boxes outwards to whole pixels
static const double largest_product = 1e38; // a float's range, rounded down

// Upper bound on a star's reach in pixels: sqrt(ln(6250 A)) sizes, less when lum_max caps A.
static float farthest_reach(float size, float intensity_scale, double lum_max) {
    double reach = farthest_sizes;
    const double most = double(reach_intensity) * lum_max * double(intensity_scale);
    if (intensity_scale > 0 && most < largest_product)
        reach = (most > 1 ? std::sqrt(double(steady_log(float(most)))) : 0) + reach_margin;
    return float(reach * double(size)) + pixel_margin;
}

StarBatch::View FastEngine::view() const {
    const double lum_max = frame.data->lum_max;
    return {frame.data,
            &frame.matrices,
            frame.has_distances(),
            frame.fb->width,
            frame.fb->height,
            farthest_reach(frame.spot_w, frame.intensity_scale, lum_max),
            farthest_reach(frame.spot_h, frame.intensity_scale, lum_max)};
}

// ---- Segments --------------------------------------------------------------------------------

Drawn FastEngine::draw_now(const StarCall& call, Fit fit, const Stroke& stroke) {
    switch (fit) {
    case Fit::outside:
        return {false, 0};
    case Fit::inside:
        return draw_stroke(brush_of(kernels, call), stroke,
                           {0, 0, call.dst.width, call.dst.height});
    default:
        return fallback(call);
    }
}

void FastEngine::empty_queue() {
    queue.draw(lit, pixels_written);
    stars_drawn = lit.count();
}

void FastEngine::put_on_queue(const Stroke& stroke) {
    if (queue.append(stroke, owner))
        return;
    empty_queue();
    queue.append(stroke, owner);
}

// Returns whether light got into a pixel; for strokes in the queue that is known once it is drawn.
bool FastEngine::draw_segment(const StarCall& call) {
    Stroke stroke;
    const Fit fit = find_stroke(call, stroke);
    if (queueing && fit == Fit::inside) {
        put_on_queue(stroke);
        return false;
    }
    if (queueing && fit == Fit::left_to_plain)
        empty_queue(); // what came before it is drawn first
    const Drawn drawn = draw_now(call, fit, stroke);
    pixels_written += u64(drawn.pixels);
    return drawn.lit;
}

// ---- Stars -----------------------------------------------------------------------------------

bool FastEngine::draw_star(int i) {
    const StarRendererData& data = *frame.data;

    // Shading.
    StarCall call;
    call.dst = *frame.fb;
    call.amplitude = steady_luminance(batch[i].flux, data) * frame.intensity_scale;
    call.color = steady_color(batch[i], data);
    call.size_x = frame.spot_w;
    call.size_y = frame.spot_h;
    call.lines = data.lines;

    // Direction, inverse distance and places: the batch has them.

    // The segments between the places: drawn whole when either end is visible. A single sample is a
    // segment without length.
    const uword samples = frame.matrices.len();
    owner++;
    bool got_light = false;
    for (uword to = samples > 1 ? 1 : 0; to < samples; to++) {
        const uword from = to > 0 ? to - 1 : 0;
        call.from = batch.place(from, i);
        call.to = batch.place(to, i);
        if ((batch.is_seen(from, i) || batch.is_seen(to, i)) && draw_segment(call))
            got_light = true;
    }
    if (got_light)
        lit.add(owner);
    stars_drawn = lit.count();
    return got_light;
}

// Stars that cannot reach the image would draw nothing: they are left out before they are shaded.
bool FastEngine::draw_batch() {
    batch.find_places(kernels, view());
    bool got_light = false;
    for (int i = 0; i < batch.len(); i++)
        if (batch.reaches(i) && draw_star(i))
            got_light = true;
    return got_light;
}

bool FastEngine::draw(const star& s) {
    batch.clear();
    batch.append(s);
    return draw_batch();
}

void FastEngine::draw_all(KeptStars& stars) {
    queue.start({&kernels, *frame.fb, frame.spot_w, frame.spot_h, frame.data->lines});
    queueing = queue.is_worth_it();
    const auto finish = [this] {
        if (queueing)
            empty_queue();
        queueing = false;
    };
    while (!stars.at_end()) {
        try {
            batch.fill(stars);
        } catch (...) {
            draw_batch(); // what came before is drawn
            finish();
            throw;
        }
        draw_batch();
    }
    finish();
}

} // namespace velmora
