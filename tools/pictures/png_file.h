// SPDX-License-Identifier: BSD-3-Clause

// PNG pictures: 8-bit RGB through the display transform of tools/pictures/tone.h, marked as sRGB.
//
// Shapes:    opaque, whatever the picture's alpha: stars add light and leave coverage at 0.
// Errors:    WorkFailure("PNG picture", reason): more than a million pixels a side, for example.
// Threads:   no state; the same input gives the same bytes, with no time or place in them.
#pragma once

#include "tools/pictures/float_picture.h"

#include <string>

namespace velmora {

// The bytes of a PNG file. `exposure` is in stops.
std::string encode_png(const FloatPicture& picture, double exposure);

} // namespace velmora
