// From records to places on the image, once per instruction set: what the kernels take and give.
// See lane_places.inc for what they do.
//
// Shapes:    every array is as long as `count` rounded up to lane_padding; what stands behind count
//            is worked on and written, too.
// Threads:   pure functions over their arrays.
#pragma once

#include "stars/projections.h"

namespace velmora {

constexpr int lane_padding = 16;

// Records to unit directions (x, y, z) and inverse distances w.
struct DirectionWork {
    int count;
    const double *ra, *dec, *distance; // degrees; scene units
    bool has_distances;
    double nearer; // is taken off every inverse distance
    double *x, *y, *z, *w;
};

// Positions in pixels, and whether a star is visible: 1 or 0.
struct Places {
    float *x, *y, *seen;
};

struct ProjectWork {
    int count;
    const double *x, *y, *z, *w;
    const double* matrix; // 16, row by row
    op_stars_projection projection;
    double left, top;              // of the film window
    double per_film_x, per_film_y; // pixels per film unit
    Places place;
};

// Sets `reaches` to 1 for stars that are visible at one end of their segment at least, and whose
// segment does not lie beside the given bounds altogether.
struct ReachWork {
    int count;
    Places from, to;
    float x_low, x_high, y_low, y_high;
    float* reaches;
};

} // namespace velmora
