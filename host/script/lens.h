// SPDX-License-Identifier: BSD-3-Clause

// The focal length of a pinhole camera from its field of view.
//
// Units:     angles in degrees, strictly between 0 and 180; focal length and aperture above 0, in
//            one unit of length. Horizontal apertures go with horizontal fields of view, vertical
//            ones with vertical.
// Errors:    none; arguments outside these ranges give infinite or meaningless lengths.
// Threads:   pure functions.
#pragma once

namespace velmora::host {

// aperture / (2 tan(fov / 2))
double focal_of_fov(double fov, double aperture);

} // namespace velmora::host
