#include "stars/setup.h"
#include "tests/stars/sky.h"

#include <cmath>

using namespace stars_test;
using namespace velmora;

namespace {

const float host_identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// p · m.
VectorN<double, 4> times(const VectorN<double, 4>& p, const DblMatrix4& m) {
    VectorN<double, 4> out;
    for (int j = 0; j < 4; j++)
        out[j] = p[0] * m(0, j) + p[1] * m(1, j) + p[2] * m(2, j) + p[3] * m(3, j);
    return out;
}

} // namespace

TEST(Setup, SamplesTheCameraOncePerSegmentEnd) {
    static const struct {
        int segments, samples;
    } table[] = {{-7, 1},    {-1, 1},          {0, 1},      {1, 2},          {3, 4},
                 {100, 101}, {100000, 100001}, {100001, 1}, {2147483646, 1}, {2147483647, 1}};
    for (const auto& row : table)
        EXPECT_EQ(camera_samples(row.segments), row.samples) << row.segments;
}

TEST(Setup, SpreadsTheSamplesOverTheShutter) {
    // frame + n * shutter / segments + offset
    static const struct {
        double frame;
        int n, segments;
        double shutter, offset, time;
    } table[] = {
        {12, 0, 1, 0.5, 0, 12},      {12, 1, 1, 0.5, 0, 12.5},       {12, 0, 3, 0.75, -0.25, 11.75},
        {12, 1, 3, 0.75, -0.25, 12}, {12, 2, 3, 0.75, -0.25, 12.25}, {12, 3, 3, 0.75, -0.25, 12.5},
        {1, 0, 3, 0.75, 8, 9},       {1, 3, 3, -1.5, 0, -0.5},
    };
    for (const auto& row : table)
        EXPECT_EQ(sample_time(row.frame, row.n, row.segments, row.shutter, row.offset), row.time)
            << row.n << " of " << row.segments;
}

TEST(Setup, TakesTheTermsOfASampleTimeInTheirOrder) {
    int other_parts = 0, other_sums = 0; // where another grouping has other last bits
    for (double frame : {0.1, 1001.0})
        for (int segments : {3, 7, 10, 11})
            for (int n = 0; n <= segments; n++) {
                const double shutter = 0.7, offset = -0.35;
                const double part = double(n) * shutter / double(segments);
                const double begun = frame + part;
                const double time = sample_time(frame, n, segments, shutter, offset);
                EXPECT_EQ(time, begun + offset) << n << " of " << segments;
                other_parts += time != frame + n * (shutter / segments) + offset;
                other_sums += time != frame + (part + offset);
            }
    EXPECT_GT(other_parts, 0);
    EXPECT_GT(other_sums, 0);
}

TEST(Setup, SamplesTheFrameItselfWithoutSegments) {
    for (int segments : {0, -1, -100})
        EXPECT_EQ(sample_time(24, 0, segments, 0.5, 0.25), 24) << "no offset, no shutter";
}

TEST(Setup, TakesUnknownProjectionsForThePerspectiveOne) {
    EXPECT_EQ(projection_of_index(0), OP_STARS_PERSPECTIVE);
    EXPECT_EQ(projection_of_index(1), OP_STARS_HEMISPHERICAL);
    EXPECT_EQ(projection_of_index(2), OP_STARS_AZIMUTHAL_EQUIDISTANT);
    for (int index : {-1, 3, 17, -2147483647})
        EXPECT_EQ(projection_of_index(index), OP_STARS_PERSPECTIVE) << index;
}

TEST(Setup, TurnsABiasIntoAnExponent) {
    EXPECT_EQ(bias_exponent_of(1), 1);
    EXPECT_EQ(bias_exponent_of(2), 0.5);
    EXPECT_EQ(bias_exponent_of(0.25), 4);
    EXPECT_EQ(bias_exponent_of(-4), -0.25);
    EXPECT_EQ(bias_exponent_of(3), 1.0 / 3.0);
    EXPECT_EQ(bias_exponent_of(1e-300), 1 / 1e-300) << "only exactly 0 is special";
}

TEST(Setup, TakesTheHundredthPowerForABiasOfZero) {
    EXPECT_EQ(bias_exponent_of(0), 100);
    EXPECT_EQ(bias_exponent_of(-0.0), 100);
}

TEST(Setup, LeavesTheCameraOfAnIdentityAtTheOrigin) {
    const camera c = camera_of_host(host_identity, 50);
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(c.matrix(i, j), i == j) << i << ", " << j;
    EXPECT_EQ(c.focal, 50);
    EXPECT_EQ(c.near, 0.10000000149011612);
    EXPECT_EQ(c.far, -1.0);
}

TEST(Setup, HasAFocalLengthForViewsWithoutCamera) {
    EXPECT_EQ(focal_without_camera, 3.2000000476837158);
}

// The host's matrix is translation (1, 2, 3) x a quarter turn about y x scale (2, 4, 8). The turn
// takes x to -z and z to x, so, column by column:
//
//     | 0 0 8 1 |       read row by row:  | 0 0 -2 0 |   z reversed:  |  0 0  2 0 |
//     | 0 4 0 2 |                         | 0 4  0 0 |                |  0 4  0 0 |
//     |-2 0 0 3 |                         | 8 0  0 0 |                | -8 0  0 0 |
//     | 0 0 0 1 |                         | 1 2  3 1 |                |  1 2 -3 1 |
//
// The inverse of the 3 x 3 block B has rows (0, 0, -1/8), (0, 1/4, 0), (1/2, 0, 0), and its last
// row is -(1, 2, -3) · B^-1 = -(-3/2, 1/2, -1/8). Powers of two: every step is exact.
TEST(Setup, InvertsTheHostsMatrixWithZReversedOnBothSides) {
    const float columns[16] = {0, 0, -2, 0, 0, 4, 0, 0, 8, 0, 0, 0, 1, 2, 3, 1};
    const double expected[4][4] = {
        {0, 0, -0.125, 0}, {0, 0.25, 0, 0}, {0.5, 0, 0, 0}, {1.5, -0.5, 0.125, 1}};
    const camera c = camera_of_host(columns, 35);
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(c.matrix(i, j), expected[i][j]) << i << ", " << j;
    EXPECT_EQ(c.focal, 35);
}

// Five units in front of the host's camera, along its -z, lies 5 along +z of the renderer's.
TEST(Setup, LooksAlongPlusZWhereTheHostLooksAlongMinusZ) {
    const float columns[16] = {0, 0, -2, 0, 0, 4, 0, 0, 8, 0, 0, 0, 1, 2, 3, 1};
    const double host_point[3] = {8 * -5.0 + 1, 2, 3}; // the matrix times (0, 0, -5, 1)
    const VectorN<double, 4> p = {{host_point[0], host_point[1], -host_point[2], 1}};
    const VectorN<double, 4> seen = times(p, camera_of_host(columns, 1).matrix);
    EXPECT_EQ(seen[0], 0);
    EXPECT_EQ(seen[1], 0);
    EXPECT_EQ(seen[2], 5);
    EXPECT_EQ(seen[3], 1);
}

// A matrix with every element set, to tell the third row and column apart from the rest: what comes
// out must undo the widened, transposed and reversed matrix.
TEST(Setup, ReversesTheThirdRowAndColumnOfAnyMatrix) {
    const float columns[16] = {2, 1, 3, 0.5f, -1, 4, 1, 0.25f, 5, 2, 7, 0.75f, 3, 6, 2, 9};
    const camera c = camera_of_host(columns, 1);
    for (int i = 0; i < 4; i++) {
        VectorN<double, 4> row;
        for (int j = 0; j < 4; j++)
            row[j] = double(columns[4 * i + j]) * ((i == 2) != (j == 2) ? -1 : 1);
        const VectorN<double, 4> product = times(row, c.matrix);
        for (int j = 0; j < 4; j++) // a few roundings of numbers near 1
            EXPECT_NEAR(product[j], i == j, 1e-13) << i << ", " << j;
    }
}

TEST(Setup, WarnsOfASingularMatrixAndCarriesOn) {
    const float flat[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    testing::internal::CaptureStderr();
    const camera c = camera_of_host(flat, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "warning: matrix appears to be singular; inverse may not be reliable in "
              "<Matrix4<real> Matrix4<real>::inverse() const [with real = double]>\n");
    EXPECT_FALSE(std::isfinite(c.matrix(2, 2)));
}

TEST(Setup, HalvesTheAperturesIntoAFilmWindow) {
    StarRendererData data = {};
    set_film_window(data, 24.576, 18.672);
    EXPECT_EQ(data.left, -12.288);
    EXPECT_EQ(data.right, 12.288);
    EXPECT_EQ(data.bottom, -9.336);
    EXPECT_EQ(data.top, 9.336);
}

TEST(Setup, GivesViewsWithoutCameraAWindowOfTheImagesShape) {
    static const struct {
        int width, height;
        double a;
    } table[] = {{1920, 1080, 1920.0 / 1080.0}, {100, 200, 0.5}, {64, 64, 1}};
    for (const auto& row : table) {
        StarRendererData data = {};
        set_default_film_window(data, row.width, row.height);
        EXPECT_EQ(data.left, -row.a);
        EXPECT_EQ(data.right, row.a);
        EXPECT_EQ(data.bottom, -1);
        EXPECT_EQ(data.top, 1);
    }
}

TEST(Setup, ComparesTheImagesShapeWithTheFilmWindows) {
    static const struct {
        double left, right, bottom, top;
        int width, height;
        double stretch; // (width / height) / (|right - left| / |bottom - top|)
    } table[] = {
        {-2, 2, -1, 1, 64, 32, 1},
        {-1, 1, -1, 1, 64, 32, 2},
        {1, -1, -2, 2, 64, 64, 2},
        {-12.288, 12.288, -9.336, 9.336, 1920, 1080, (1920.0 / 1080.0) / (24.576 / 18.672)},
    };
    for (const auto& row : table) {
        StarRendererData data = {};
        data.left = row.left;
        data.right = row.right;
        data.bottom = row.bottom;
        data.top = row.top;
        EXPECT_EQ(film_stretch(data, row.width, row.height), row.stretch);
    }
}

TEST(Setup, ViewsPixelsAsAlphaRedGreenBlue) {
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
