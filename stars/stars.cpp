#define XSOURCE "stars"

#include "stars/stars.h"
#include "core/xception.h"
#include "stars/projection.h"
#include "stars/setup.h"
#include "stars/shading.h"

using namespace velmora;

// Spot sizes are given in 1/2000 of the image's width.
static const double spot_unit = 0.0005;

struct StarRenderer::Private {
    const StarFramebuffer* fb;
    StarInput* input;
    const Array<camera>* cams;
    Array<DblMatrix4> matrices; // one per camera, world to screen
    float intensity_scale;      // multiplies each star's luminance
    float spot_w, spot_h;       // pixels, at least 1
    u32 next_star;              // record 0 is the header
};

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

StarRenderer::StarRenderer(const StarRendererData& parameters, const StarFramebuffer& fb,
                           StarInput& input, const Array<camera>& cams)
    : data(&parameters), priv(new Private{&fb, &input, &cams, {}, 0, 0, 0, 0}) {
    XASSERT_AT(cams.len() > 0, "priv->cams.len() > 0", __PRETTY_FUNCTION__, 464);

    for (uword i = 0; i < cams.len(); i++)
        priv->matrices.append(combined_matrix(cams[i], data->projection));

    // A streak of several segments carries as much light as one spot.
    priv->intensity_scale = float(4.0 * data->brightness);
    if (cams.len() >= 2)
        priv->intensity_scale /= float(cams.len() - 1);

    priv->spot_w = float(float(data->spot_width * spot_unit * fb.width) *
                         film_stretch(*data, fb.width, fb.height));
    priv->spot_h = float(data->star_size * spot_unit * fb.width);
    widen_to_pixel(priv->spot_w, priv->intensity_scale);
    widen_to_pixel(priv->spot_h, priv->intensity_scale);

    if (!input.is_valid())
        XTHROW_AT(__PRETTY_FUNCTION__, 518, "error in star database file");
    priv->next_star = 1;
}

StarRenderer::~StarRenderer() {}

bool StarRenderer::render_star(bool& drew) {
    if (priv->next_star >= priv->input->count)
        return false;
    if (data->brightness == 0.0)
        return false;
    const star* s = priv->input->next();
    if (do_render_star(s))
        drew = true;
    priv->next_star++;
    return priv->next_star < priv->input->count;
}

void StarRenderer::render_all(bool& drew) {
    while (render_star(drew)) {
    }
}

bool StarRenderer::do_render_star(const star* s) {
    // Shade: the threshold looks at the flux as it stands in the file.
    if (data->lum_threshold > double(s->flux))
        return false;
    const bool has_distance = data->threed && priv->input->version2 && s->distance > 0;
    const float amplitude = shaded_luminance(s->flux, *data) * priv->intensity_scale;
    const Color3 color = shaded_color(*s, *data);

    const VectorN<double, 3> direction = scene_direction(*s);
    const double w = inverse_distance(has_distance, s->distance, data->parallax);
    const StarFramebuffer& fb = *priv->fb;
    const auto project = [&](uword sample, Vector2& position) {
        return world_to_screen(direction[0], direction[1], direction[2], w, priv->matrices[sample],
                               data->projection, fb.width, fb.height, data->left, data->right,
                               data->bottom, data->top, position);
    };
    const auto draw = [&](const Vector2& from, const Vector2& to) {
        return op_star_streak(fb, from, to, amplitude, color, priv->spot_w, priv->spot_h,
                              data->lines);
    };

    Vector2 position;
    bool visible = project(0, position);
    if (priv->matrices.len() == 1)
        return visible && draw(position, position);

    // Several samples: a segment is drawn whole when either of its ends is visible.
    bool drew = false;
    for (uword i = 1; i < priv->matrices.len(); i++) {
        Vector2 next_position;
        const bool next_visible = project(i, next_position);
        if ((visible || next_visible) && draw(position, next_position))
            drew = true;
        position = next_position;
        visible = next_visible;
    }
    return drew;
}
