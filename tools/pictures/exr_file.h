// SPDX-License-Identifier: BSD-3-Clause

// OpenEXR pictures: scan lines, ZIP compression, channels R G B A, and the shot's metadata.
//
// Shapes:    matrices are 16 floats, row by row, for row vectors (p' = p · M), which in memory is
//            the same as the host's, column by column, for column vectors.
// Errors:    std::exception, for attributes that the format cannot hold: an empty name, or a name
//            that it gives a meaning of its own. Without memory std::bad_alloc, the library's
//            exceptions or WorkFailure("EXR picture", …): never a file with rows missing.
// Threads:   no state; the same input gives the same bytes, with no time or place in them.
#pragma once

#include "core/types.h"
#include "tools/pictures/float_picture.h"

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velmora {

struct FrameRate {
    int numerator = 24;
    unsigned denominator = 1;
};

// Stored as double, int, string and v3f. A switch is an int, 0 or 1.
typedef std::variant<double, int, std::string, std::array<float, 3>> ExrValue;

// What is not given is not written. Chromaticities always are: Rec. 709's, with white at D65.
struct ExrMetadata {
    std::optional<std::array<float, 16>> world_to_camera; // worldToCamera
    std::optional<std::array<float, 16>> world_to_ndc;    // worldToNDC
    std::optional<FrameRate> frame_rate;                  // framesPerSecond
    std::string software;                                 // software, unless empty
    std::vector<std::pair<std::string, ExrValue>> attributes;
};

// The bytes of an OpenEXR file, with the 32-bit floats unchanged or, if `as_half`, 16-bit
// ones. `clamped` becomes the number of floats that a half cannot reach, infinities among them;
// they are written as ±65504.
std::string encode_exr(const FloatPicture& picture, const ExrMetadata& metadata, bool as_half,
                       u64& clamped);

} // namespace velmora
