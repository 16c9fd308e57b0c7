// Renders a star database into a float image: one StarRenderer draws one image.
//
// Units:     the film window and focal lengths share one film unit; `spot_width` and `star_size`
//            are in 1/2000 of the image's width; luminances and colours are linear.
// Ownership: a StarRenderer borrows its parameters, framebuffer, star input and cameras, which must
//            outlive it.
// Errors:    the constructor asserts "priv->cams.len() > 0" and throws StrXception "error in star
//            database file"; drawing throws "unknown projection"; both throw velmora::StarsLost when
//            a mapped database gets shorter meanwhile. Pixels drawn before stay drawn.
// Threads:   one renderer belongs to one thread.
#pragma once

#include "core/array.h"
#include "core/newmatrix.h"
#include "stars/projections.h"
#include "stars/starfile.h"
#include "stars/streak.h"

#include <memory>

// What to draw and how it looks.
struct StarRendererData {
    double left, right, bottom, top; // film window
    double spot_width;               // star_size times the spot's aspect
    double star_size;
    double lum_threshold; // fainter stars are left out, by their flux as it stands in the file
    double lum_max;       // cap of the biased luminance
    double brightness;    // 0 draws nothing
    double saturation;    // 0 makes every star mid grey, 1 leaves colours alone
    double bias_exponent; // of the flux
    double tint_strength; // 0 to 1, towards tint_color
    double parallax;      // inverse distances lose parallax / 100, those of 0 too
    Color3 tint_color;
    op_stars_projection projection;
    op_stars_lines lines;
    bool threed; // whether distances count
};

// One sample of the camera within the shutter. It looks along +z.
struct camera {
    DblMatrix4 matrix; // world to camera, for row vectors
    double focal;      // film units
    double near;       // perspective only: stars nearer along the axis are dropped; scene units
    double far;        // <= 0: no far plane
};

static_assert(offsetof(StarRendererData, parallax) == 12 * sizeof(double) &&
                  offsetof(StarRendererData, tint_color) == 13 * sizeof(double) &&
                  offsetof(StarRendererData, projection) == 13 * sizeof(double) + 12 &&
                  offsetof(StarRendererData, threed) == 13 * sizeof(double) + 20,
              "thirteen doubles, the tint, two choices and a switch");
static_assert(sizeof(camera) == 19 * sizeof(double) &&
                  offsetof(camera, focal) == 16 * sizeof(double),
              "a camera is 19 doubles, the matrix first");

namespace velmora {

// What a renderer has done so far.
struct RenderCounts {
    u64 read;   // records taken from the input
    u64 kept;   // of them, not below the threshold
    u64 drawn;  // of them, stars that put light into a pixel
    u64 pixels; // written; the fast kernels leave out some whose value is 0
};

} // namespace velmora

class StarRenderer {
public:
    // Combines the cameras' matrices, derives the spot's size and intensity, and takes the header
    // from `input`. With two or more cameras every star leaves a streak from sample to sample.
    StarRenderer(const StarRendererData& data, const StarFramebuffer& fb, StarInput& input,
                 const Array<camera>& cams);
    StarRenderer(const StarRenderer&) = delete;
    StarRenderer& operator=(const StarRenderer&) = delete;
    ~StarRenderer();

    // Draws the next star of the input; sets `drew` when light got into a pixel and never clears
    // it. Returns whether there is more to do: false at the end, and at once when brightness is 0.
    bool render_star(bool& drew);

    // Draws every star that is left, bit for bit as render_star called until it returns false.
    void render_all(bool& drew);

    // Draws `s`, which need not come from the input. Returns whether light got into a pixel.
    bool do_render_star(const star* s);

    const velmora::RenderCounts& counts() const;

private:
    struct Private;

    bool draw_plainly(const star* s);
    bool draw_decoded(int i);
    void draw_block(bool& drew);

    const StarRendererData* data;
    std::unique_ptr<Private> priv;
};
