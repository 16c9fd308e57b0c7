// SPDX-License-Identifier: BSD-3-Clause

// What a renderer is asked to draw: its parameters, and the camera's samples within the shutter.
//
// Units:     the film window and focal lengths share one film unit; `spot_width` and `star_size`
//            are in 1/2000 of the image's width; luminances and colours are linear.
// Threads:   plain values and pure functions.
#pragma once

#include "core/newmatrix.h"
#include "stars/framebuffer.h"
#include "stars/projections.h"

// What to draw and how it looks.
struct StarRendererData {
    double left, right, bottom, top; // film window
    double spot_width;               // star_size times the spot's aspect
    double star_size;
    double lum_threshold; // stars whose flux in the file is below it are left out
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

// The projection of a menu index; an unknown index gives the perspective one.
op_stars_projection projection_of_index(int index);

// 1 / bias; 100 for a bias of 0.
double bias_exponent_of(double bias);

} // namespace velmora
