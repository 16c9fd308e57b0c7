// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/png_file.h"

#include "tools/failure.h"
#include "tools/pictures/tone.h"

#include <cstdint>
#include <png.h>
#include <vector>

namespace velmora {

// Red, green and blue of every pixel, as shown.
static std::vector<std::uint8_t> displayed(const FloatPicture& picture, double exposure) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(3 * std::size_t(picture.width) * std::size_t(picture.height));
    for (int y = 0; y < picture.height; y++) {
        for (int x = 0; x < picture.width; x++) {
            const float* argb = picture.pixel(x, y);
            const auto color = display_color(argb[1], argb[2], argb[3], exposure);
            bytes.insert(bytes.end(), color.begin(), color.end());
        }
    }
    return bytes;
}

std::string encode_png(const FloatPicture& picture, double exposure) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(picture.width);
    image.height = png_uint_32(picture.height);
    image.format = PNG_FORMAT_RGB;

    // Convert first: what the library needs to know is the size.
    const std::vector<std::uint8_t> pixels = displayed(picture, exposure);
    std::size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string png(size, '\0');
    // Marks 8-bit colour as sRGB, and frees what the image holds before it reports a failure.
    if (!png_image_write_to_memory(&image, &png[0], &size, 0, pixels.data(), 0, nullptr))
        throw WorkFailure("PNG picture", image.message);
    png.resize(size);
    return png;
}

} // namespace velmora
