// SPDX-License-Identifier: BSD-3-Clause

// One star from the 32 bytes of its record to the value of one pixel, every number worked out.
#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

#include <memory>

using namespace stars_test;

TEST(WorkedExample, FromARecordsBytesToAPixel) {
    // ---- The file ------------------------------------------------------------------------------
    // A header of version 2, so that distances count, and one star.
    const unsigned char record[32] = {
        0,    0,    0,    0,    0, 0x80, 0x46, 0x40, // ra        45 degrees
        0,    0,    0,    0,    0, 0,    0,    0,    // dec       0 degrees
        0,    0,    0x80, 0x3e,                      // flux      0.25
        0xff, 0xbc, 0x0a, 0xaa,                      // red 255, green 188, blue 10, reserved
        0,    0,    0,    0,    0, 0,    0xf4, 0x3f, // distance  1.25
    };
    const ScratchFolder folder;
    const std::string path = folder.write(
        "sky", header_bytes("VELMORA2") + std::string(reinterpret_cast<const char*>(record), 32));
    const std::unique_ptr<StarInput> input(op_stars_file_input(path.c_str()));

    // ---- The image -----------------------------------------------------------------------------
    // 64 x 32 pixels; the pixel that we follow is a quarter covered.
    Picture picture(64, 32);
    picture.cover(41, 18, 0.25f);

    // ---- The parameters ------------------------------------------------------------------------
    StarRendererData data = {};
    // A window of -2 to 2 by -1 to 1 has the image's shape, so spot widths are not corrected.
    data.left = -2;
    data.right = 2;
    data.bottom = -1;
    data.top = 1;
    // In pixels: 15.625 * 0.0005 * 64 = 0.5 wide and 62.5 * 0.0005 * 64 = 2 high. Half a pixel is
    // drawn as one with half the light:
    //     intensity_scale = 4 * brightness * 0.5 = 4 * 2.5 * 0.5 = 5
    data.spot_width = 15.625;
    data.star_size = 62.5;
    data.brightness = 2.5;
    // The flux 0.25 is above the threshold; to the power 0.5 it is 0.5, which is capped at 0.4:
    //     amplitude = 0.4 * 5 = 2
    data.lum_threshold = 0.2;
    data.bias_exponent = 0.5;
    data.lum_max = 0.4;
    // The bytes are 1, 0.7372549 and 0.0392157 of 255. In linear light:
    //     red    1
    //     green  ((0.7372549 + 0.055) / 1.055) ^ 2.4 = 0.7509525 ^ 2.4 = 0.5028865
    //     blue   0.0392157 / 12.92 = 0.0030353, being below 0.03928
    // A quarter of the tint (0, 1, 0.5) makes that
    //     red    0.75 * 1         + 0.25 * 0   = 0.75
    //     green  0.75 * 0.5028865 + 0.25 * 1   = 0.6271649
    //     blue   0.75 * 0.0030353 + 0.25 * 0.5 = 0.1272765
    // and a saturation of one half pulls it towards 0.5:
    //     red    0.25 + 0.375     = 0.625
    //     green  0.25 + 0.3135824 = 0.5635824
    //     blue   0.25 + 0.0636382 = 0.3136382
    data.tint_strength = 0.25;
    data.tint_color = {{0, 1, 0.5f}};
    data.saturation = 0.5;
    // The distance 1.25 is an inverse distance of 0.8; parallax takes 30 / 100 off: w = 0.5.
    data.threed = true;
    data.parallax = 30;
    data.projection = OP_STARS_PERSPECTIVE;
    data.lines = OP_STARS_LINES_ALL;

    // ---- The camera ----------------------------------------------------------------------------
    // The star's direction is (cos 45, 0, sin 45) = (0.7071068, 0, 0.7071068). The camera is moved
    // so that points lose 0.7071068 of x per unit of w: in camera space the star is at
    //     (0.7071068 - 0.5 * 0.7071068, 0, 0.7071068) = (0.3535534, 0, 0.7071068).
    // With a focal length of 1 it is seen at X = 0.3535534 / 0.7071068 = 0.5, Y = 0; the depth
    // 1 - 0.1 * 0.5 / 0.7071068 = 0.93 is in front of the near plane. In pixels:
    //     x = (0.5 + 2) / 4 * 64 = 40,  y = (1 - 0) / 2 * 32 = 16
    DblMatrix4 matrix = identity();
    matrix(3, 0) = -0.7071067811865476;
    const Array<camera> cams = cameras({make_camera(matrix, 1)});

    // ---- The pixel -----------------------------------------------------------------------------
    bool drew = false;
    StarRenderer renderer(data, picture.fb, *input, cams);
    EXPECT_FALSE(renderer.render_star(drew)) << "the only star is the last one";
    EXPECT_TRUE(drew);

    // Pixel (41, 18) is one pixel right of and two below the star. The profile there is
    //     exp(-(1 / 1)^2 - (2 / 2)^2) = exp(-2) = 0.1353353
    // times the amplitude 0.2706706, times 1 - 0.25 for what is covered: 0.2030029. The colours:
    //     red    0.625     * 0.2030029 = 0.1268768
    //     green  0.5635824 * 0.2030029 = 0.1144089
    //     blue   0.3136382 * 0.2030029 = 0.0636695
    // Six figures: the star's place is good to 5e-6 pixels (angles are single precision), and the
    // profile changes by twice that here; everything else is 1e-6 or better.
    EXPECT_NEAR(picture.red(41, 18), 0.1268768, 0.1268768 * 2e-5);
    EXPECT_NEAR(picture.green(41, 18), 0.1144089, 0.1144089 * 2e-5);
    EXPECT_NEAR(picture.blue(41, 18), 0.0636695, 0.0636695 * 2e-5);

    // Where nothing is covered the whole light goes in, here at the star itself.
    EXPECT_NEAR(picture.red(40, 16), 0.625 * 2, 1e-5);
    EXPECT_NEAR(picture.green(40, 16), 0.5635824 * 2, 1e-5);
    EXPECT_NEAR(picture.blue(40, 16), 0.3136382 * 2, 1e-5);

    // In all the spot carries amplitude * pi * 1 * 2 of light, but for what the cover hides and
    // for 1e-4 of sampling at a width of one pixel.
    const double light = 2 * 3.141592653589793 * 2 - 0.25 * 0.2706706;
    EXPECT_NEAR(picture.total(0), 0.625 * light, 3e-4 * 0.625 * light);
}
