// SPDX-License-Identifier: BSD-3-Clause
#include "kessimage/image.h"
#include "stars/framebuffer.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(Framebuffer, ViewsPixelsAsAlphaRedGreenBlue) {
    // Rows of five pixels with room for six.
    const Kess::Image image(Kess::ImageSpec(5, 3, 6 * 16, Kess::ImageSpec::BGRA_FLOAT));
    float* pixels = reinterpret_cast<float*>(image.data);
    const StarFramebuffer fb = framebuffer_of(image);
    EXPECT_EQ(fb.alpha, pixels);
    EXPECT_EQ(fb.red, pixels + 1);
    EXPECT_EQ(fb.green, pixels + 2);
    EXPECT_EQ(fb.blue, pixels + 3);
    EXPECT_EQ(fb.width, 5);
    EXPECT_EQ(fb.height, 3);
    EXPECT_EQ(fb.row_stride, 24);
    EXPECT_EQ(fb.pixel_stride, 4);
}
