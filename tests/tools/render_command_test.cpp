// SPDX-License-Identifier: BSD-3-Clause
#include "tests/tools/one_star.h"

#include <algorithm>
#include <cmath>
#include <OpenEXR/ImfDoubleAttribute.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfMatrixAttribute.h>
#include <OpenEXR/ImfRationalAttribute.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfVecAttribute.h>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;

class Render : public OneStar {};

// ---- pictures --------------------------------------------------------------------------------

// The film window's middle is pixel (32, 18). The spot is 2.5 / 2000 of 64 pixels wide and high, so
// it is drawn one pixel wide at 0.08 * 0.08 of its light. Luminance is capped at 0.5, brightness 5
// counts four times, and saturation 0.4 leaves 0.5 * 0.6 + 1 * 0.4 of a white star:
// 0.5 * 20 * 0.0064 * 0.7 = 0.0448, to single precision.
TEST_F(Render, PutsTheStarAheadInTheMiddle) {
    const Ran ran = run(small("--knob blur_segs=0 --raw sky.raw"));
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "");

    const std::vector<float> floats = floats_of("sky.raw");
    ASSERT_EQ(floats.size(), 4u * 64 * 36);
    const float* middle = &floats[4 * (18 * 64 + 32)];
    EXPECT_EQ(middle[0], 0);
    EXPECT_NEAR(middle[1], 0.0448, 1e-8);
    EXPECT_EQ(middle[1], middle[2]);
    EXPECT_EQ(middle[1], middle[3]);
    // One pixel beside it the profile has fallen to 1 / e. A float holds 90 degrees in radians to
    // 4e-8, which are 6e-6 pixels here, and the profile falls by 2 / e of its peak per pixel.
    EXPECT_NEAR(middle[5], 0.0448 / 2.718281828459045, 2.5e-7);
}

TEST_F(Render, WritesTheSameBytesEveryTime) {
    const std::string more = "--knob blur_segs=2 --knob shutter=1 --rotate 0.5,0.25,10 ";
    ASSERT_EQ(run(small(more + "-o a.exr -o a.png --raw a.raw")).status, 0);
    ASSERT_EQ(
        run(small(more + "-o b.exr -o b.png --raw b.raw"), "TZ=Asia/Tokyo LANG=C.UTF-8").status, 0);
    for (const char* kind : {".exr", ".png", ".raw"}) {
        EXPECT_GT(folder.read("a" + std::string(kind)).size(), 0u);
        EXPECT_EQ(folder.read("a" + std::string(kind)), folder.read("b" + std::string(kind)));
    }
}

TEST_F(Render, GivesTheSameFramesWithSeveralJobs) {
    folder.write("shot.chan", "1 0 0 0 0 0 0\n6 0 0 0 2 5 1\n");
    const std::string more = "-F 1-6 --camera shot.chan --raw ";
    ASSERT_EQ(run(small(more + "one.##.raw")).status, 0);
    ASSERT_EQ(run(small(more + "two.##.raw --jobs 2")).status, 0);
    for (int frame = 1; frame <= 6; frame++) {
        const std::string number = ".0" + std::to_string(frame) + ".raw";
        EXPECT_EQ(folder.read("one" + number), folder.read("two" + number));
    }
    EXPECT_NE(folder.read("one.01.raw"), folder.read("one.06.raw"));
}

TEST_F(Render, NamesFramesByTheirNumbers) {
    ASSERT_EQ(run(small("-F '-1,10-7x3' -o sky.#.png --raw %03d.raw")).status, 0);
    EXPECT_EQ(folder.names(),
              (std::vector<std::string>{"-01.raw", "007.raw", "010.raw", "sky.-001.png",
                                        "sky.0007.png", "sky.0010.png", "sky.velmora"}));
}

TEST_F(Render, TakesNegativeFramesWithoutQuotes) {
    ASSERT_EQ(run(small("-F -2--1 -o sky.%d.png")).status, 0);
    EXPECT_EQ(folder.names(),
              (std::vector<std::string>{"sky.-1.png", "sky.-2.png", "sky.velmora"}));
}

TEST_F(Render, LeavesAFrameBlackWithoutAStarFile) {
    ASSERT_EQ(run("render --format 8x8 --vaperture 24.576 --knob starfile= --raw sky.raw").status,
              0);
    for (const float value : floats_of("sky.raw"))
        EXPECT_EQ(value, 0);
}

// ---- cameras ---------------------------------------------------------------------------------

// Where the star is brightest, as column and row; -1 when the picture is black.
static std::pair<int, int> brightest(const std::vector<float>& floats, int width) {
    int best = -1;
    for (int i = 0; i < int(floats.size()) / 4; i++)
        if (floats[std::size_t(4 * i + 1)] > (best < 0 ? 0 : floats[std::size_t(4 * best + 1)]))
            best = i;
    return best < 0 ? std::pair(-1, -1) : std::pair(best % width, best / width);
}

// 24.576 mm of film across 64 pixels at 50 mm: 1 degree is 2.27 pixels in the middle, so a star
// seven degrees off is 16 pixels from the middle: 50 * tan(7) / 24.576 * 64 = 15.99.
TEST_F(Render, LooksWhereItIsTold) {
    const struct {
        const char* view;
        std::pair<int, int> position;
    } cases[] = {
        {"--look-at 90,0", {32, 18}},
        {"--look-at 97,0", {48, 18}},    // the camera looks east of the star: it is to the right
        {"--look-at 83,0", {16, 18}},    // and left when the camera looks west of it
        {"--look-at 90,7", {32, 34}},    // below when the camera looks north of it
        {"--look-at 90,-7", {32, 2}},    // and above when it looks south of it
        {"--look-at 97,0,90", {32, 34}}, // the roll turns the picture clockwise
        {"--rotate 0,-7,0", {16, 18}},   // turned to the right about y
        {"--look-at 270,0", {-1, -1}},   // behind
        {"--fov 90 --look-at 90,0", {32, 18}},
        // 90 degrees of view put 45 degrees at the edge, 32 pixels away: tan(26.565) = 0.5.
        {"--fov 90 --look-at 116.565,0", {48, 18}},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(run(small(std::string(c.view) + " --knob blur_segs=0 --raw sky.raw")).status, 0);
        EXPECT_EQ(brightest(floats_of("sky.raw"), 64), c.position) << c.view;
    }
}

// Without a camera the disc fits the height: on a 64x36 image 45 degrees are half of 18 pixels.
TEST_F(Render, FitsTheDiscWithoutACamera) {
    ASSERT_EQ(run("render --star-file sky.velmora --format 64x36 --no-camera --look-at 90,45 "
                  "--knob 'projection=Azimuthal Equidistant' --knob blur_segs=0 --raw sky.raw")
                  .status,
              0);
    EXPECT_EQ(brightest(floats_of("sky.raw"), 64), std::pair(32, 27));
}

TEST_F(Render, SamplesTheCameraFileWithinTheShutter) {
    // From the middle to 16 pixels left of it in one frame, half of which the shutter stays open.
    folder.write("shot.chan", "1 0 0 0 0 0 0\n2 0 0 0 0 -7 0\n");
    ASSERT_EQ(run(small("-F 1 --camera shot.chan --raw sky.raw")).status, 0);
    const std::vector<float> floats = floats_of("sky.raw");
    const auto red = [&](int x) { return floats[std::size_t(4 * (18 * 64 + x) + 1)]; };
    EXPECT_GT(red(31), 0);
    EXPECT_GT(red(25), 0);
    EXPECT_LT(red(20), 1e-3f * red(28));
    EXPECT_LT(red(36), 1e-3f * red(28));
}

TEST_F(Render, TakesTheLensFromTheCameraFile) {
    // Vertically 13.824 mm at 2 atan(13.824 / (2 * 50)) degrees are 50 mm.
    const double fov = 2 * std::atan(13.824 / 100) * 57.29577951308232;
    folder.write("shot.chan", "1 0 0 0 0 7 0 " + std::to_string(fov) + "\n");
    const std::string more = "--knob blur_segs=0 --camera shot.chan --raw sky.raw ";
    ASSERT_EQ(run(small(more)).status, 0);
    EXPECT_EQ(brightest(floats_of("sky.raw"), 64), std::pair(48, 18));
    // A lens on the command line holds: half the focal length, half the way.
    ASSERT_EQ(run(small(more + "--focal 25")).status, 0);
    EXPECT_EQ(brightest(floats_of("sky.raw"), 64), std::pair(40, 18));
}

// ---- what the files say ----------------------------------------------------------------------

TEST_F(Render, TellsInExrWhereTheCameraStood) {
    ASSERT_EQ(run(small("--look-at 97,0 --translate 1,2,3 -o sky.exr")).status, 0);
    const Imf::InputFile file(folder.file("sky.exr").c_str());
    const auto& to_camera =
        file.header().typedAttribute<Imf::M44fAttribute>("worldToCamera").value();
    const auto& to_ndc = file.header().typedAttribute<Imf::M44fAttribute>("worldToNDC").value();

    // The star is at (cos 90, 0, -sin 90) in the host's world; at infinity the camera's place
    // does not matter. 16 of 32 pixels right of the middle are 0.5 of the way to the edge.
    const Imath::V4f ahead(0, 0, -1, 0);
    const Imath::V4f ndc = ahead * to_ndc;
    EXPECT_NEAR(ndc.x / ndc.w, 15.99 / 32, 1e-4);
    EXPECT_NEAR(ndc.y / ndc.w, 0, 1e-6);
    const Imath::V4f seen = ahead * to_camera;
    EXPECT_NEAR(seen.z, std::cos(7 / 57.29577951308232), 1e-6); // in front is +z
    EXPECT_NEAR(seen.x, std::sin(7 / 57.29577951308232), 1e-6); // right is +x
    // The camera's own place is the origin.
    const Imath::V4f place = Imath::V4f(1, 2, 3, 1) * to_camera;
    EXPECT_NEAR(place.x, 0, 1e-6);
    EXPECT_NEAR(place.y, 0, 1e-6);
    EXPECT_NEAR(place.z, 0, 1e-6);

    EXPECT_EQ(file.header().typedAttribute<Imf::StringAttribute>("velmora/starfile").value(),
              "sky.velmora");
    EXPECT_EQ(file.header().typedAttribute<Imf::StringAttribute>("software").value(),
              "velmora " VELMORA_VERSION);
}

TEST_F(Render, TellsEveryKnobInExr) {
    ASSERT_EQ(run(small("--fps 29.97 --knob tint_color=0.25,0.5,1 --knob threed=false "
                        "--knob blur_segs=3 --knob projection=0 -o sky.exr"))
                  .status,
              0);
    const Imf::InputFile file(folder.file("sky.exr").c_str());
    const Imf::Header& header = file.header();
    const auto number = [&](const char* name) {
        return header.typedAttribute<Imf::DoubleAttribute>(name).value();
    };
    const auto whole = [&](const char* name) {
        return header.typedAttribute<Imf::IntAttribute>(name).value();
    };
    const auto text = [&](const char* name) {
        return header.typedAttribute<Imf::StringAttribute>(name).value();
    };
    EXPECT_EQ(text("velmora/format"), "64x36");
    EXPECT_EQ(number("velmora/brightness"), 5);
    EXPECT_EQ(number("velmora/bias"), 1);
    EXPECT_EQ(number("velmora/saturation"), 0.4);
    EXPECT_EQ(number("velmora/tint_strength"), 0);
    EXPECT_EQ(header.typedAttribute<Imf::V3fAttribute>("velmora/tint_color").value(),
              Imath::V3f(0.25f, 0.5f, 1));
    EXPECT_EQ(number("velmora/lum_max"), 0.5);
    EXPECT_EQ(number("velmora/lum_threshold"), 0.0001);
    EXPECT_EQ(number("velmora/star_size"), 2.5);
    EXPECT_EQ(number("velmora/star_aspect"), 1);
    EXPECT_EQ(whole("velmora/blur_segs"), 3);
    EXPECT_EQ(number("velmora/shutter"), 0.5);
    EXPECT_EQ(number("velmora/shutter_offset"), 0);
    EXPECT_EQ(text("velmora/projection"), "Perspective");
    EXPECT_EQ(whole("velmora/threed"), 0);
    EXPECT_EQ(number("velmora/parallax"), 100);
    EXPECT_EQ(whole("velmora/anamorphic_dof"), 0);
    EXPECT_EQ(text("velmora/transform"), "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1");
    const Imf::Rational rate =
        header.typedAttribute<Imf::RationalAttribute>("framesPerSecond").value();
    EXPECT_EQ(rate.n, 30000); // NTSC's rate is 30000 / 1001 by definition
    EXPECT_EQ(rate.d, 1001u);
}

TEST_F(Render, CountsWhatHalfFloatsCannotHold) {
    const Ran ran = run(small("--half --knob blur_segs=0 --knob brightness=1e9 -o sky.exr"));
    EXPECT_EQ(ran.status, 0);
    // 0.0448 * 2e8 is the peak, 137 times what a half holds: exp(4.92). The spot is one pixel wide,
    // so that is passed by the pixels at squared distances 0, 1, 2 and 4 of the middle: 1 + 4 + 4 +
    // 4 of three colours.
    EXPECT_EQ(ran.err, "velmora: warning: sky.exr: 39 values beyond what half floats hold were "
                       "clamped to 65504\n");
}

// ---- how it was drawn --------------------------------------------------------------------------

// One star is read and drawn: the spot is one pixel wide and reaches sqrt(ln(6250 A)) pixels at its
// amplitude A of 0.064, 2.45, so that a disc of 21 pixels is above the limit and 36 surround it.
TEST_F(Render, SaysWhatAFrameTook) {
    const Ran ran = run(small("--stats --knob blur_segs=0 --raw sky.raw"));
    EXPECT_EQ(ran.status, 0);
    std::smatch match;
    const std::regex line(
        "velmora: stats: frame 1: 1 stars read, 1 kept, 1 drawn, ([0-9]+) pixels "
        "written; set-up [0-9.]+ ms, drawing [0-9.]+ ms, rows [0-9.]+ ms, writing "
        "[0-9.]+ ms\n");
    ASSERT_TRUE(std::regex_match(ran.err, match, line)) << ran.err;
    EXPECT_GE(std::stoi(match[1]), 21);
    EXPECT_LE(std::stoi(match[1]), 49);
}

// Nothing is opened for the second node's frame, so nothing of the first one's may be told of it.
TEST_F(Render, CountsNothingForAFrameWithoutAStarFile) {
    folder.write("two.nk", "Root {\n format \"8 8\"\n}\n"
                           "VelmoraNK {\n inputs 0\n name A\n starfile sky.velmora\n}\n"
                           "VelmoraNK {\n inputs 0\n name B\n}\n");
    const Ran ran = run("render two.nk -F 1 --stats --raw {node}.raw");
    EXPECT_EQ(ran.status, 0);
    EXPECT_NE(ran.err.find("stats: A: frame 1: 1 stars read, 1 kept, "), std::string::npos)
        << ran.err;
    EXPECT_NE(ran.err.find("stats: B: frame 1: 0 stars read, 0 kept, 0 drawn, 0 pixels written; "),
              std::string::npos)
        << ran.err;
}

TEST_F(Render, DrawsTheSameLightByThePlainReading) {
    const std::string more = "--knob blur_segs=2 --knob shutter=1 --rotate 0.5,0.25,10 --raw ";
    ASSERT_EQ(run(small(more + "fast.raw")).status, 0);
    ASSERT_EQ(run(small("--reference " + more + "plain.raw")).status, 0);
    const std::vector<float> fast = floats_of("fast.raw"), plain = floats_of("plain.raw");
    ASSERT_EQ(fast.size(), plain.size());
    const float most = *std::max_element(plain.begin(), plain.end());
    EXPECT_GT(most, 0);
    // Of the largest value: 8e-6 and 4e-3 are the kernels' own bounds for still and short paths.
    for (std::size_t i = 0; i < fast.size(); i++)
        EXPECT_NEAR(fast[i], plain[i], 5e-3f * most) << i;
}

// ---- notes -----------------------------------------------------------------------------------

TEST_F(Render, NotesAStretchedSky) {
    const Ran ran = run("render --star-file sky.velmora --format 64x36 -o sky.png");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "velmora: note: the apertures' shape is not the image's, so the sky is "
                       "stretched: --vaperture 13.824 gives square pixels\n");
}

TEST_F(Render, NotesADiscThatIsLost) {
    const Ran ran = run(small("--knob projection=Hemispherical -o sky.png"));
    EXPECT_EQ(ran.status, 0);
    // 2 of 13.824 mm, of 36 rows: 5.2.
    EXPECT_EQ(ran.err,
              "velmora: note: the Hemispherical disc takes up 5 of the image's 36 rows with "
              "these apertures: --no-camera fits it\n");
}

// ---- what goes wrong -------------------------------------------------------------------------

TEST_F(Render, SaysInOneLineWhatIsWrong) {
    folder.write("empty.velmora", "");
    folder.write("short.velmora", "VELMORA2" + std::string(23, '\0'));
    folder.write("wrong.velmora", "VELMORA3" + std::string(24, '\0'));
    folder.write("broken.chan", "1 0 0 0 0 0 0\n2 0 0 zero 0 0 0\n");
    std::filesystem::create_directory(folder.file("folder"));
    std::filesystem::create_symlink("loop.velmora", folder.file("loop.velmora"));
    const std::vector<std::string> before = folder.names();

    const struct {
        std::string arguments;
        int status;
        std::string err;
    } cases[] = {
        {"render --star-file none.velmora -o a.exr", 1, "none.velmora: No such file or directory"},
        {"render --star-file empty.velmora -o a.exr", 1,
         "empty.velmora: is too short for a star database: 0 bytes, the header alone takes 32"},
        {"render --star-file short.velmora -o a.exr", 1,
         "short.velmora: is too short for a star database: 31 bytes, the header alone takes 32"},
        {"render --star-file wrong.velmora -o a.exr", 1,
         "wrong.velmora: is not a star database: it begins with neither VELMORA1 nor VELMORA2"},
        {"render --star-file folder -o a.exr", 1, "folder: is a directory, not a star database"},
        {"render --star-file loop.velmora -o a.exr", 1,
         "loop.velmora: Too many levels of symbolic links"},
        {"render --star-file '' -o a.exr", 2, "arguments: --star-file: is empty"},
        {small("--knob brightnes=3 -o a.exr"), 2,
         "--knob brightnes=3: the node has no such knob (velmora info lists them)"},
        {small("--knob brightness=bright -o a.exr"), 2, "--knob brightness=bright: takes a number"},
        {small("--knob brightness -o a.exr"), 2, "--knob brightness: takes NAME=VALUE"},
        {small("--knob starfile=a -o a.exr"), 2, "--star-file: says the same as --knob starfile"},
        {small("--knob format=8x8 -o a.exr"), 2, "--format: says the same as --knob format"},
        {"render --format 0x5 -o a.exr", 2, "format '0x5': takes <width>x<height> in pixels"},
        {small("-F 1:10 -o a.####.exr"), 2,
         "frame range '1:10': '1:10' has two readings: every Nth frame, to be written as 1-100x2, "
         "or staggered, every Nth frame first and then the gaps in finer steps"},
        {small("-F 1-x -o a.####.exr"), 2,
         "frame range '1-x': '1-x' is neither a frame nor a range such as 1-100 or 1-100x2"},
        {small("-F 1-5 -o a.exr"), 2,
         "output 'a.exr': has no frame number (#### or %04d), and 5 frames would overwrite each "
         "other"},
        {small("-o a.exr -o a.exr"), 2, "output 'a.exr': is named twice"},
        {small("-o a.tif"), 2, "output 'a.tif': must end in .exr or .png"},
        {small(""), 2, "arguments: no output is named: give -o NAME.exr or NAME.png"},
        {small("-o none/a.exr"), 1, "none/a.exr: there is no folder none"},
        {small("-o folder -o a.exr"), 2, "output 'folder': must end in .exr or .png"},
        {small("--camera none.chan -o a.exr"), 1, "none.chan: No such file or directory"},
        {small("--camera broken.chan -o a.exr"), 1, "broken.chan:2: 'zero' is not a number"},
        {small("--camera broken.chan --look-at 1,2 -o a.exr"), 2,
         "--look-at: is what the --camera file says"},
        {small("--look-at 5 -o a.exr"), 2,
         "--look-at '5': takes right ascension and declination in degrees, and a roll"},
        {small("--rotate 1,2 -o a.exr"), 2, "--rotate '1,2': takes three angles in degrees: x,y,z"},
        {small("--translate a,b,c -o a.exr"), 2, "--translate 'a,b,c': takes three numbers: x,y,z"},
        {small("--rotate 1,2,3 --look-at 1,2 -o a.exr"), 2,
         "--look-at: turns the camera, as --rotate does"},
        {small("--focal 0 -o a.exr"), 2, "--focal: must be above 0"},
        {small("--fov 180 -o a.exr"), 2, "--fov: must lie between 0 and 180 degrees"},
        {small("--fov 60 --focal 50 -o a.exr"), 2, "--fov: says the same as --focal"},
        {small("--fov 60 --knob projection=1 -o a.exr"), 2,
         "--fov: is for the perspective projection only"},
        {small("--no-camera -o a.exr"), 2,
         "--no-camera: leaves nothing for --camera, --focal, --fov, --haperture or --vaperture"},
        {small("--half -o a.png"), 2, "--half: is for EXR, and no .exr output is named"},
        {small("--exposure 1 -o a.exr"), 2, "--exposure: is for PNG, and no .png output is named"},
        {small("--look-at 0,91 -o a.exr"), 2,
         "--look-at: the declination must lie between -90 and 90 degrees"},
        {small("--look-at 361,0 -o a.exr"), 2,
         "--look-at: the right ascension must lie between -360 and 360 degrees"},
        {small("--translate 1e300,0,0 -o a.exr"), 1,
         "camera at frame 1: is placed too far away to be computed"},
        {small("--knob bias=1 --knob bias=2 -o a.exr"), 2,
         "--knob bias=2: the knob is given twice"},
        {small("--knob tint_color=1e39 -o a.exr"), 2,
         "--knob tint_color=1e39: takes three numbers (red, green, blue) or one for all"},
        {small("--fps 0 -o a.exr"), 2, "arguments: --fps: takes a number from 0.001 to 100000"},
        {small("-o a.exr --raw ./a.exr"), 2, "output './a.exr': is named twice"},
        {small("--focal 50mm -o a.exr"), 2, "arguments: --focal: takes a number"},
        {small("--exposure nan -o a.png"), 2, "arguments: --exposure: takes a number"},
        {small("--jobs 0 -o a.exr"), 2, "arguments: --jobs: takes a whole number from 1 to 1024"},
        {"paint", 2, "'paint': unknown command; use render, explain, catalog, script or info"},
        {"catalog", 2, "catalog: name a command: import or info"},
        {"catalog frob", 2, "arguments: The following argument was not expected: frob"},
        {"--bogus", 2, "arguments: The following argument was not expected: --bogus"},
        {"", 2, "arguments: name a command: render, explain, catalog, script or info"},
    };
    for (const auto& c : cases) {
        const Ran ran = run(c.arguments);
        EXPECT_EQ(ran.status, c.status) << c.arguments;
        EXPECT_EQ(ran.out, "") << c.arguments;
        EXPECT_EQ(ran.err, "velmora: " + c.err + "\n") << c.arguments;
        EXPECT_EQ(folder.names(), before) << c.arguments;
    }
}

// Root reads everything, so its privileges are taken away for the run.
TEST_F(Render, SaysThatAFileMayNotBeRead) {
    std::filesystem::permissions(folder.file("sky.velmora"), std::filesystem::perms::none);
    const Ran ran =
        run(small("-o a.exr"), geteuid() == 0 ? "setpriv --bounding-set=-all --inh-caps=-all" : "");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: sky.velmora: Permission denied\n");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"sky.velmora"});
}

// 36,864 bytes of floats do not fit into 4,096.
TEST_F(Render, LeavesNothingBehindWhenAFileCannotBeWritten) {
    folder.write("sky.raw", "old");
    const Ran ran = run(small("--raw sky.raw"), "ulimit -f 8;");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: sky.raw: File too large\n");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"sky.raw", "sky.velmora"}));
    EXPECT_EQ(folder.read("sky.raw"), "old");
}

TEST_F(Render, GoesOnAfterAFrameThatFails) {
    // The second frame's camera is beyond the reach of single precision.
    folder.write("shot.chan", "1 0 0 0 0 0 0\n2 1e300 0 0 0 0 0\n3 0 0 0 0 0 0\n");
    for (const char* jobs : {"", " --jobs 2"}) {
        const Ran ran = run(small("-F 1-3 --camera shot.chan --knob blur_segs=0 -o %d.png") + jobs);
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.err, "velmora: camera at frame 2: is placed too far away to be computed\n"
                           "velmora: render: 1 of 3 frames failed\n");
        EXPECT_EQ(folder.names(),
                  (std::vector<std::string>{"1.png", "3.png", "shot.chan", "sky.velmora"}));
    }
}

TEST_F(Render, NeverWritesOverWhatItReads) {
    folder.write("shot.chan", "1 0 0 0 0 0 0\n");
    const std::string stars = folder.read("sky.velmora"), shot = folder.read("shot.chan");
    for (const char* raw : {"sky.velmora", "./sky.velmora", "shot.chan"}) {
        const Ran ran = run(small("--camera shot.chan --raw " + std::string(raw)));
        EXPECT_EQ(ran.status, 2);
        EXPECT_EQ(ran.err, "velmora: " + std::string(raw) +
                               ": is read by the same command, and would be overwritten\n");
    }
    EXPECT_EQ(folder.read("sky.velmora"), stars);
    EXPECT_EQ(folder.read("shot.chan"), shot);
}

TEST_F(Render, FindsTheFolderOfEveryFrame) {
    std::filesystem::create_directory(folder.file("shot.1"));
    std::filesystem::create_directory(folder.file("shot.2"));
    EXPECT_EQ(run(small("-F 1-2 -o shot.%d/sky.png")).status, 0);
    EXPECT_EQ(run(small("-F 1-3 -o shot.%d/sky.png")).err,
              "velmora: shot.3/sky.png: there is no folder shot.3\n");
}

TEST_F(Render, DoesNotFollowALinkInItsWay) {
    folder.write("victim", "mine");
    std::filesystem::create_symlink("victim", folder.file("sky.png.inprogress"));
    const Ran ran = run(small("-o sky.png"));
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: sky.png.inprogress: is in the way, and is not a regular file\n");
    EXPECT_EQ(folder.read("victim"), "mine");
}

TEST_F(Render, DoesNotWaitForAPipe) {
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(run("render --star-file pipe -o a.exr").err,
              "velmora: pipe: is not a regular file\n");
    EXPECT_EQ(run(small("--camera pipe -o a.exr")).err, "velmora: pipe: is not a regular file\n");
    EXPECT_EQ(run("catalog info pipe").err, "velmora: pipe: is not a regular file\n");
}

// The signal comes while frames are being written; the file under way is finished or taken away.
TEST_F(Render, LeavesNothingUnfinishedWhenItIsInterrupted) {
    for (const char* jobs : {"1", "2"}) {
        for (const char* after : {"0.05", "0.11", "0.17"}) {
            const Ran ran = run("render --star-file sky.velmora --format 1500x1500 "
                                "--vaperture 24.576 -F 1-400 -o %d.exr --jobs " +
                                    std::string(jobs),
                                "timeout -s INT " + std::string(after));
            EXPECT_NE(ran.status, 0);
            usleep(300000); // the children of several jobs end by themselves
            for (const std::string& name : folder.names())
                EXPECT_EQ(name.find(".inprogress"), std::string::npos) << name;
        }
    }
}

TEST_F(Render, ShowsExamplesFirstInItsHelp) {
    const Ran ran = run("render --help");
    EXPECT_EQ(ran.status, 0);
    EXPECT_LT(ran.out.find("Examples:"), ran.out.find("Usage:"));
    EXPECT_NE(ran.out.find("Usage:"), std::string::npos);
}
