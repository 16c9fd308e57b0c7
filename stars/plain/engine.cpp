// SPDX-License-Identifier: BSD-3-Clause
#include "stars/plain/engine.h"

#include "stars/plain/rasterise.h"
#include "stars/plain/shading.h"
#include "stars/projection.h"

namespace velmora {

// Shading: everything about a star but its places.
static StarCall shaded_call(const Frame& frame, const star& s) {
    StarCall call;
    call.dst = *frame.fb;
    call.amplitude = shaded_luminance(s.flux, *frame.data) * frame.intensity_scale;
    call.color = shaded_color(s, *frame.data);
    call.size_x = frame.spot_w;
    call.size_y = frame.spot_h;
    call.lines = frame.data->lines;
    return call;
}

namespace {

// Places a star on the image, sample by sample.
class Projector {
public:
    // Direction and inverse distance.
    Projector(const Frame& frame, const star& s)
        : frame(frame), direction(scene_direction(s)),
          w(inverse_distance(frame.has_distances() && s.distance > 0, s.distance,
                             frame.data->parallax)) {}

    StarTrace::Sample operator()(uword sample) const {
        const StarRendererData& d = *frame.data;
        StarTrace::Sample placed;
        placed.visible = world_to_screen(
            direction[0], direction[1], direction[2], w, frame.matrices[sample], d.projection,
            frame.fb->width, frame.fb->height, d.left, d.right, d.bottom, d.top, placed.position);
        return placed;
    }

private:
    const Frame& frame;
    const VectorN<double, 3> direction;
    const double w;
};

} // namespace

bool PlainEngine::draw_segment(const StarCall& call) {
    const Drawn drawn = plain_star_streak(call);
    pixels_written += u64(drawn.pixels);
    return drawn.lit;
}

bool PlainEngine::draw(const star& s) {
    // Shading.
    StarCall call = shaded_call(frame, s);

    // Direction, inverse distance, and the first place.
    const Projector project(frame, s);
    StarTrace::Sample from = project(0);

    // The segments between the places: drawn whole when either end is visible. A single sample is a
    // segment without length.
    const uword samples = frame.matrices.len();
    bool lit = false;
    for (uword i = samples > 1 ? 1 : 0; i < samples; i++) {
        const StarTrace::Sample to = i > 0 ? project(i) : from;
        call.from = from.position;
        call.to = to.position;
        if ((from.visible || to.visible) && draw_segment(call))
            lit = true;
        from = to;
    }
    stars_drawn += lit;
    return lit;
}

void PlainEngine::draw_all(KeptStars& stars) {
    while (!stars.at_end()) {
        const star& s = stars.next();
        if (stars.keep(s))
            draw(s);
        stars.done();
    }
}

StarTrace trace_of(const Frame& frame, const star& s) {
    const StarCall call = shaded_call(frame, s);
    StarTrace trace = {{}, call.amplitude, call.color, call.size_x, call.size_y};
    const Projector project(frame, s);
    for (uword i = 0; i < frame.matrices.len(); i++)
        trace.samples.push_back(project(i));
    return trace;
}

} // namespace velmora
