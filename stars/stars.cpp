// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "stars"

#include "stars/stars.h"

#include "core/xception.h"
#include "stars/dispatch.h"
#include "stars/film.h"
#include "stars/plain/engine.h"

using namespace velmora;

// Spot sizes are given in 1/2000 of the image's width.
static const double spot_unit = 0.0005;

// A star of luminance 1 has a peak of this, by brightness 1 and as a spot of a pixel or more.
static const double peak_per_brightness = 4.0;

struct StarRenderer::Private {
    Frame frame;
    KeptStars stars;
    std::unique_ptr<Engine> engine;

    Private(const StarRendererData& data, const StarFramebuffer& fb, StarInput& input)
        : stars(input, data) {
        frame.data = &data;
        frame.fb = &fb;
        frame.input = &input;
    }
};

// For messages, which name the constructor without its choice of kernels.
static const char* const constructor_signature =
    "StarRenderer::StarRenderer(const StarRendererData&, const StarFramebuffer&, StarInput&, "
    "const Array<camera>&)";

// The camera's whole transform. The disc projections work on camera-space directions.
static DblMatrix4 combined_matrix(const camera& cam, op_stars_projection projection) {
    if (projection != OP_STARS_PERSPECTIVE)
        return cam.matrix;
    return cam.matrix * DblMatrix4::perspective(cam.focal, cam.near, cam.far);
}

// A spot narrower than a pixel is drawn one pixel wide, with its light reduced in proportion.
static void widen_to_pixel(float& size, float& intensity_scale) {
    if (size < 1) {
        intensity_scale *= size;
        size = 1;
    }
}

static void set_spot(Frame& frame) {
    const StarRendererData& data = *frame.data;
    const int width = frame.fb->width, height = frame.fb->height;
    frame.spot_w =
        float(float(data.spot_width * spot_unit * width) * film_stretch(data, width, height));
    frame.spot_h = float(data.star_size * spot_unit * width);
    widen_to_pixel(frame.spot_w, frame.intensity_scale);
    widen_to_pixel(frame.spot_h, frame.intensity_scale);
}

StarRenderer::StarRenderer(const StarRendererData& parameters, const StarFramebuffer& fb,
                           StarInput& input, const Array<camera>& cams, KernelLevel level)
    : data(&parameters), priv(new Private(parameters, fb, input)) {
    XASSERT_AT(cams.len() > 0, "priv->cams.len() > 0", constructor_signature, 464);
    Frame& frame = priv->frame;

    // Matrices.
    for (uword i = 0; i < cams.len(); i++)
        frame.matrices.append(combined_matrix(cams[i], data->projection));

    // Intensity. A streak of several segments carries as much light as one spot.
    frame.intensity_scale = float(peak_per_brightness * data->brightness);
    if (cams.len() >= 2)
        frame.intensity_scale /= float(cams.len() - 1);

    // Spot.
    set_spot(frame);

    // Header.
    if (!input.is_valid())
        XTHROW_AT(constructor_signature, 518, "error in star database file");

    // Engine.
    priv->engine = engine_for(frame, level);
}

StarRenderer::~StarRenderer() {}

RenderCounts StarRenderer::counts() const {
    return {priv->stars.read(), priv->stars.kept(), priv->engine->drawn(), priv->engine->pixels()};
}

bool StarRenderer::do_render_star(const star* s) {
    return priv->stars.keep(*s) && priv->engine->draw(*s);
}

bool StarRenderer::render_star(bool& drew) {
    if (priv->stars.at_end() || data->brightness == 0.0)
        return false;
    if (do_render_star(&priv->stars.next()))
        drew = true;
    priv->stars.done();
    return !priv->stars.at_end();
}

namespace {

// Sets `drew` when more stars are drawn at its end than at its start, even by an exception.
class DrewReport {
public:
    DrewReport(const Engine& engine, bool& drew)
        : engine(engine), drew(drew), before(engine.drawn()) {}
    ~DrewReport() { drew |= engine.drawn() > before; }

private:
    const Engine& engine;
    bool& drew;
    const u64 before;
};

} // namespace

void StarRenderer::render_all(bool& drew) {
    if (data->brightness == 0.0)
        return;
    const DrewReport report(*priv->engine, drew);
    priv->engine->draw_all(priv->stars);
}

StarTrace StarRenderer::trace(const star& s) const {
    return trace_of(priv->frame, s);
}
