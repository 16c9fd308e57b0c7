// SPDX-License-Identifier: BSD-3-Clause

// The fast kernels, once per instruction set: what they take and give. lane_kernels.inc says what
// they do, level.h which of them run.
//
// Units:     pixels, as in streak.h.
// Shapes:    plain records only, so that a unit compiled for a newer processor shares no code with
//            the others.
// Ownership: everything is borrowed for the call.
// Threads:   pure functions over disjoint pixels.
#pragma once

#include "stars/fast/lane_places.h"
#include "stars/star_call.h"

namespace velmora {

// The image and the star's colour.
struct LaneTarget {
    StarFramebuffer fb;
    float color[3];
    bool interleaved; // whether each pixel is four floats side by side: alpha, red, green, blue
};

// A spot in rows [y_lo, y_end) and columns [ix + skip, ix + skip + columns). (X, Y) is the first
// pixel's offset from the centre. The rows' span starts at ix.
struct SpotWork {
    LaneTarget target;
    float amplitude, size_x, size_y;
    s32 ix, skip, columns, y_lo, y_end;
    float X, Y;
    op_stars_lines lines;
};

// The streak's constants, rounded as the plain reading rounds them.
struct StreakWork {
    LaneTarget target;
    float ux, uy; // unit direction
    float qx, qy; // q = qx * X + qy * Y
    float Q;
    float half_path; // 0.5 * length * Q
    float t;
    float width; // factor of e * g: sqrt(pi) / 2 * size_x * size_y * s
    float light; // amplitude / length
};

// Columns [ix + skip, ix + skip + count) of row iy, the first at offset (X, Y) from the path's
// midpoint. The row's span starts at ix.
struct StreakRow {
    s32 iy, ix, skip, count;
    float X, Y;
};

namespace fitted {
struct Rule;
}

// A short streak as a sum of spots along its path, by a quadrature rule.
struct QuadratureWork {
    LaneTarget target;
    float light;           // amplitude / 2
    double mid_x, mid_y;   // of the path
    double half_x, half_y; // from the midpoint to the path's end
    float size_x, size_y;
    s32 x_first, x_end; // the rows' columns lie in [x_first, x_end)
    const fitted::Rule* rule;
};

// Below 2^22 floats are at most 1/4 apart: a counted column is off by less than one step, and the
// offsets of a whole row can be found without counting.
constexpr float fine_below = 0x1p22f;

// Rows that a kernel takes at a time, at most.
constexpr int row_batch = 64;

// One level's kernels. The first three add light and report it; the others fill arrays.
struct LaneKernels {
    Drawn (*spot)(const SpotWork& work);
    Drawn (*quadrature)(const QuadratureWork& work, const StreakRow* rows, int count);
    Drawn (*streak)(const StreakWork& work, const StreakRow* rows, int count);
    void (*find_directions)(const DirectionWork& work);
    void (*project)(const ProjectWork& work);
    void (*mark_reaching)(const ReachWork& work);
};

extern const LaneKernels lane_kernels_sse2;
extern const LaneKernels lane_kernels_avx2;
extern const LaneKernels lane_kernels_avx512;

} // namespace velmora
