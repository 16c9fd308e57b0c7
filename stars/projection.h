// SPDX-License-Identifier: BSD-3-Clause

// One star's position on the image in one camera sample.
//
// Units:     positions in pixels, x right, y down from the top row; the film window in film units
//            for the perspective projection, in units of the unit disc for the other two.
// Errors:    StrXception "unknown projection". Degenerate geometry (w = 0, a star exactly on the
//            azimuthal axis) is not an error: it gives infinities and NaN.
// Threads:   a pure function.
#pragma once

#include "core/newmatrix.h"
#include "stars/projections.h"

// Projects the homogeneous position (x, y, z, w), a unit direction and an inverse distance, by the
// sample's combined matrix `m`. Always fills `out`. Returns whether the star is visible; a visible
// star may still lie outside the image.
bool world_to_screen(double x, double y, double z, double w, DblMatrix4 m,
                     op_stars_projection projection, int width, int height, double left,
                     double right, double bottom, double top, Vector2& out);
