#define XSOURCE "stars"

#include "stars/stars.h"
#include "core/xception.h"
#include "stars/draw_call.h"
#include "stars/fast/batch.h"
#include "stars/fast/shading.h"
#include "stars/fast/steady_math.h"
#include "stars/fast/tiles.h"
#include "stars/film.h"
#include "stars/kernels.h"
#include "stars/plain/shading.h"
#include "stars/projection.h"
#include "stars/record_reader.h"

#include <cmath>

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
    RenderCounts counts;
    RecordReader reader;              // of the input
    std::unique_ptr<StarBlock> block; // for the fast kernels
    DrawList list;
    bool listing; // whether stars go into the list instead of being drawn at once
    u32 owner;    // a number for each star
    LitOwners lit;

    StarBlock::View view(const StarRendererData& parameters) const;
    auto projector(const StarRendererData& parameters, const star& s) const;

    template <class Project>
    bool draw(const StarRendererData& parameters, float luminance, const Color3& color,
              const Project& project);
    void fill_block(float faintest);
    void finish_list();
    bool draw_segment(const StarCall& call);
    bool put_on_list(const StarCall& call);
    void draw_list();
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
    : data(&parameters),
      priv(new Private{
          &fb, &input, &cams, {}, 0, 0, 0, 0, {}, RecordReader(input), nullptr, {}, false, 0, {}}) {
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
    priv->block.reset(new StarBlock(cams.len()));
}

StarRenderer::~StarRenderer() {}

const RenderCounts& StarRenderer::counts() const {
    return priv->counts;
}

// ---- Taking records --------------------------------------------------------------------------

bool StarRenderer::render_star(bool& drew) {
    if (priv->next_star >= priv->input->count)
        return false;
    if (data->brightness == 0.0)
        return false;
    const star* s = priv->reader.next(1, priv->input->count - priv->next_star).first;
    priv->counts.read++;
    if (do_render_star(s))
        drew = true;
    priv->next_star++;
    return priv->next_star < priv->input->count;
}

// The faintest flux that a threshold keeps. Fluxes that are not below it are kept: those that are
// no numbers, too, and all of them for a threshold that is none.
static float faintest_kept(double threshold) {
    const float nearest = float(threshold);
    return double(nearest) < threshold ? nextafterf(nearest, INFINITY) : nearest;
}

// Moves kept records from a stretch of them into the block, until either is at its end; returns how
// many were looked at.
static u32 take_kept(const star* records, u32 count, float faintest, StarBlock& block) {
    star* const kept = block.records();
    int n = block.len();
    u32 i = 0;
    for (; i < count && n < block.capacity(); i++) {
        kept[n] = records[i];
        n += !(records[i].flux < faintest);
    }
    block.set_len(n);
    return i;
}

void StarRenderer::render_all(bool& drew) {
    Private& p = *priv;
    if (!lane_kernels() || !StarBlock::can_decode(p.view(*data))) {
        while (render_star(drew)) {
        }
        return;
    }
    if (data->brightness == 0.0)
        return;

    const float faintest = faintest_kept(data->lum_threshold);
    p.list.start({lane_kernels(), *p.fb, p.spot_w, p.spot_h, data->lines});
    p.listing = p.list.is_worth_it();
    const u64 drawn_before = p.counts.drawn;
    const auto finish = [&] {
        p.finish_list();
        drew |= p.counts.drawn > drawn_before;
    };
    while (p.next_star < p.input->count) {
        p.block->clear();
        try {
            p.fill_block(faintest);
        } catch (...) {
            draw_block(drew); // what came before is drawn
            finish();
            throw;
        }
        draw_block(drew);
    }
    finish();
}

// Takes records until as many are kept as the block holds.
void StarRenderer::Private::fill_block(float faintest) {
    while (next_star < input->count && block->len() < block->capacity()) {
        const u32 left = input->count - next_star;
        const RecordReader::Records records = reader.next(left, left);
        const u32 taken = take_kept(records.first, records.count, faintest, *block);
        reader.give_back(records.count - taken);
        counts.read += taken;
        next_star += taken;
    }
}

// ---- Drawing ---------------------------------------------------------------------------------

// How far from its path a star can draw, at most: no amplitude reaches farther than the largest
// whose 6250-fold a float holds, sqrt(ln(3.4e38)) = 9.42 sizes, nor does any beyond the cap's.
static float farthest_reach(float size, float intensity_scale, double lum_max) {
    double reach = 9.5;
    const double most = 6250 * lum_max * double(intensity_scale);
    if (intensity_scale > 0 && most < 1e38)
        reach = most > 1 ? sqrt(double(steady_log(float(most)))) + 0.01 : 0.01;
    return float(reach * double(size)) + 2;
}

StarBlock::View StarRenderer::Private::view(const StarRendererData& parameters) const {
    return {&parameters,
            &matrices,
            parameters.threed && input->version2,
            fb->width,
            fb->height,
            farthest_reach(spot_w, intensity_scale, parameters.lum_max),
            farthest_reach(spot_h, intensity_scale, parameters.lum_max)};
}

void StarRenderer::draw_block(bool& drew) {
    StarBlock& block = *priv->block;
    priv->counts.kept += u64(block.len());
    block.decode(*lane_kernels(), priv->view(*data));
    for (int i = 0; i < block.len(); i++)
        if (block.reaches(i) && draw_decoded(i))
            drew = true;
}

bool StarRenderer::do_render_star(const star* s) {
    // The threshold looks at the flux as it stands in the file.
    if (data->lum_threshold > double(s->flux))
        return false;
    const LaneKernels* kernels = lane_kernels();
    const StarBlock::View view = priv->view(*data);
    if (!kernels || !StarBlock::can_decode(view)) {
        priv->counts.kept++;
        return draw_plainly(s);
    }
    bool drew = false;
    priv->block->clear();
    priv->block->append(*s);
    draw_block(drew);
    return drew;
}

// Draws one star's spot, or its segments in order. `project` gives its place in a sample, and
// whether it is visible there; `draw` draws between two places.
template <class Project, class Draw>
static bool draw_segments(uword samples, const Project& project, const Draw& draw) {
    Vector2 position;
    bool visible = project(0, position);
    if (samples == 1)
        return visible && draw(position, position);

    // Several samples: a segment is drawn whole when either of its ends is visible.
    bool drew = false;
    for (uword i = 1; i < samples; i++) {
        Vector2 next_position;
        const bool next_visible = project(i, next_position);
        if ((visible || next_visible) && draw(position, next_position))
            drew = true;
        position = next_position;
        visible = next_visible;
    }
    return drew;
}

void StarRenderer::Private::draw_list() {
    list.draw(lit, counts.pixels);
    counts.drawn = lit.count();
}

void StarRenderer::Private::finish_list() {
    if (!listing)
        return;
    draw_list();
    listing = false;
}

// False when the list does not take such segments.
bool StarRenderer::Private::put_on_list(const StarCall& call) {
    PlacedStar star;
    const Fit fit = place_star(call, star);
    if (fit == Fit::inside && !list.append(star, owner)) {
        draw_list();
        list.append(star, owner);
    }
    return fit != Fit::left_to_plain;
}

// Draws a segment, or puts it on the list.
bool StarRenderer::Private::draw_segment(const StarCall& call) {
    if (listing) {
        if (put_on_list(call))
            return false; // known when the list is drawn
        draw_list();      // what came before it goes first
    }
    const Drawn drawn = draw_star_streak(call);
    counts.pixels += u64(drawn.pixels);
    return drawn.lit;
}

template <class Project>
bool StarRenderer::Private::draw(const StarRendererData& parameters, float luminance,
                                 const Color3& color, const Project& project) {
    const auto draw_between = [&](const Vector2& from, const Vector2& to) {
        return draw_segment(
            {*fb, from, to, luminance * intensity_scale, color, spot_w, spot_h, parameters.lines});
    };
    owner++;
    const bool drew = draw_segments(matrices.len(), project, draw_between);
    if (drew)
        lit.add(owner);
    counts.drawn = lit.count();
    return drew;
}

// Where a star is on the image in each sample, and whether it is visible there.
auto StarRenderer::Private::projector(const StarRendererData& parameters, const star& s) const {
    const bool has_distance = parameters.threed && input->version2 && s.distance > 0;
    const VectorN<double, 3> direction = scene_direction(s);
    const double w = inverse_distance(has_distance, s.distance, parameters.parallax);
    return [this, &parameters, direction, w](uword sample, Vector2& position) {
        return world_to_screen(direction[0], direction[1], direction[2], w, matrices[sample],
                               parameters.projection, fb->width, fb->height, parameters.left,
                               parameters.right, parameters.bottom, parameters.top, position);
    };
}

bool StarRenderer::draw_plainly(const star* s) {
    return priv->draw(*data, shaded_luminance(s->flux, *data), shaded_color(*s, *data),
                      priv->projector(*data, *s));
}

StarTrace StarRenderer::trace(const star& s) const {
    const Private& p = *priv;
    const auto project = p.projector(*data, s);
    StarTrace traced = {{},
                        shaded_luminance(s.flux, *data) * p.intensity_scale,
                        shaded_color(s, *data),
                        p.spot_w,
                        p.spot_h};
    for (uword i = 0; i < p.matrices.len(); i++) {
        StarTrace::Sample sample;
        sample.visible = project(i, sample.position);
        traced.samples.push_back(sample);
    }
    return traced;
}

bool StarRenderer::draw_decoded(int i) {
    const StarBlock& block = *priv->block;
    const auto project = [&](uword sample, Vector2& position) {
        position = block.place(sample, i);
        return block.is_seen(sample, i);
    };
    return priv->draw(*data, steady_luminance(block[i].flux, *data), steady_color(block[i], *data),
                      project);
}
