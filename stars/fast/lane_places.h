// SPDX-License-Identifier: BSD-3-Clause

// From records to places on the image, once per instruction set: what the kernels take and give.
// lane_places.inc says what they do.
//
// Units:     angles in degrees, places in pixels.
// Shapes:    every array is as long as `count` rounded up to lane_padding; entries from `count` on
//            are read and written, too.
// Ownership: the arrays are the caller's.
// Threads:   pure functions over their arrays.
#pragma once

#include "stars/projections.h"

namespace velmora {

constexpr int lane_padding = 16;

// Records to unit directions (x, y, z) and inverse distances w, 0 for infinitely far.
struct DirectionWork {
    int count;
    const double *ra, *dec, *distance; // degrees; scene units
    bool has_distances;
    double nearer; // subtracted from every inverse distance
    double *x, *y, *z, *w;
};

// Positions on the image, and whether a star is visible: 1 or 0.
struct Places {
    float *x, *y, *seen;
};

// Directions to places, in one camera sample.
struct ProjectWork {
    int count;
    const double *x, *y, *z, *w;
    const double* matrix; // 16, row by row
    op_stars_projection projection;
    double left, top;              // of the film window
    double per_film_x, per_film_y; // pixels per film unit
    Places place;
};

// Sets `reaches` to 1 for stars that are visible at one or both ends of their segment, and whose
// segment's bounding box meets the open rectangle (x_low, x_high) x (y_low, y_high). Leaves the
// others as they are.
struct ReachWork {
    int count;
    Places from, to;
    float x_low, x_high, y_low, y_high;
    float* reaches;
};

} // namespace velmora
