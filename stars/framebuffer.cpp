// SPDX-License-Identifier: BSD-3-Clause
#include "stars/framebuffer.h"

#include "kessimage/image.h"

namespace velmora {

bool image_fits(int width, int height) {
    const u64 pixel_size = 4 * sizeof(float), limit = u64(1) << 32;
    return width > 0 && height > 0 && u64(width) * u64(height) < limit / pixel_size;
}

StarFramebuffer framebuffer_of(const Kess::Image& image) {
    float* pixels = reinterpret_cast<float*>(image.data);
    StarFramebuffer fb;
    fb.alpha = pixels;
    fb.red = pixels + 1;
    fb.green = pixels + 2;
    fb.blue = pixels + 3;
    fb.width = image.width;
    fb.height = image.height;
    fb.row_stride = s32(image.stride / sizeof(float));
    fb.pixel_stride = 4;
    return fb;
}

} // namespace velmora
