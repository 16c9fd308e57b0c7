// SPDX-License-Identifier: BSD-3-Clause
#include "stars/shutter.h"

namespace velmora {

int camera_samples(int blur_segs) {
    return blur_segs > 0 && blur_segs <= most_blur_segs ? blur_segs + 1 : 1;
}

double sample_time(double frame, int n, int blur_segs, double shutter, double shutter_offset) {
    if (blur_segs < 1)
        return frame;
    return frame + n * shutter / blur_segs + shutter_offset;
}

} // namespace velmora
