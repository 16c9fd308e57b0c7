// SPDX-License-Identifier: BSD-3-Clause

// velmora explain, held to what velmora render draws.
#include "tests/stars/dice.h"
#include "tests/stars/sky.h"
#include "tests/tools/program.h"

#include <cmath>
#include <sstream>

using namespace stars_test;

static const int width = 64, height = 36;

namespace {

// One row of the table, and what follows it.
struct Row {
    int record;
    double ra, dec, flux;
    std::string distance, place, size;
    double amplitude;
    std::string color, added;
};

} // namespace

// Numbers between commas.
static std::vector<double> numbers_in(const std::string& text) {
    std::vector<double> numbers;
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ',');)
        numbers.push_back(std::stod(word));
    return numbers;
}

// The rows between the headings and the line of the count.
static std::vector<Row> rows_in(const std::string& report) {
    std::vector<Row> rows;
    std::istringstream lines(report);
    std::string line;
    std::getline(lines, line); // the frame and the pixel
    std::getline(lines, line); // the headings
    while (std::getline(lines, line) && line.compare(0, 9, "records: ") != 0) {
        Row row;
        std::istringstream(line) >> row.record >> row.ra >> row.dec >> row.flux >> row.distance >>
            row.place >> row.size >> row.amplitude >> row.color >> row.added;
        rows.push_back(row);
    }
    return rows;
}

static std::string line_of(const std::string& report, const std::string& title) {
    std::istringstream lines(report);
    for (std::string line; std::getline(lines, line);)
        if (line.compare(0, title.size(), title) == 0)
            return line.substr(title.size());
    return "";
}

static std::vector<int> records_in(const std::string& report) {
    std::vector<int> records;
    for (const Row& row : rows_in(report))
        records.push_back(row.record);
    return records;
}

// A camera that is not turned looks at right ascension 90, declination 0: the middle of the picture,
// 32 columns from the left and 17 rows above the lowest, as row 18 from the top of 36 is.
class Explain : public Program {
protected:
    void write_sky(const std::vector<star>& stars, const char* magic = "VELMORA2") const {
        folder.write("sky.velmora", sky_bytes(magic, stars));
    }

    static std::string small(const std::string& more) {
        return " --star-file sky.velmora --format 64x36 " + more;
    }

    // The picture's floats at the pixel: alpha, red, green, blue.
    std::vector<float> rendered_at(int x, int y_from_bottom, const std::string& more) const {
        const Ran ran = run("render --raw pixel.raw " + more);
        EXPECT_EQ(ran.status, 0) << ran.err;
        const std::vector<float> floats = floats_of("pixel.raw");
        const int first = 4 * ((height - 1 - y_from_bottom) * width + x);
        return {floats.begin() + first, floats.begin() + first + 4};
    }

    // The report's light is the rendered pixel, bit for bit, and the rows add up to it.
    void expect_light(int x, int y, const std::string& more) const {
        const Ran ran =
            run("explain --pixel " + std::to_string(x) + "," + std::to_string(y) + more);
        EXPECT_EQ(ran.status, 0) << ran.err;
        const std::vector<float> pixel = rendered_at(x, y, more);
        const std::vector<double> light = numbers_in(line_of(ran.out, "light: "));
        ASSERT_EQ(light.size(), 3u) << ran.out;
        const std::vector<Row> rows = rows_in(ran.out);
        EXPECT_GT(rows.size(), 0u) << more;
        for (std::size_t k = 0; k < 3; k++) {
            EXPECT_EQ(float(light[k]), pixel[k + 1]) << more;
            double sum = 0;
            for (const Row& row : rows)
                sum += numbers_in(row.added)[k];
            // Each is printed as the nearest float.
            EXPECT_NEAR(sum, light[k], 1e-6 * light[k]) << more;
        }
    }
};

// A spot of 2.5 / 2000 of 64 pixels is drawn one pixel wide, at 0.08 * 0.08 of its light. Luminance
// is capped at 0.5, brightness 5 counts four times: 0.5 * 20 * 0.0064 = 0.064. Saturation 0.4 leaves
// 0.5 * 0.6 + 1 * 0.4 of white: 0.7, and 0.064 * 0.7 = 0.0448.
TEST_F(Explain, ShowsWhatTheStarIsAndWhatItAdds) {
    write_sky({make_star(90, 0, 2, 255, 255, 255, 10)});
    const Ran ran = run("explain --pixel 32,17 --knob blur_segs=0" + small("--vaperture 13.824"));
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(ran.out.substr(0, ran.out.find('\n')),
              "frame 1, pixel 32,17 (row 18 from the top) of 64x36");
    EXPECT_EQ(line_of(ran.out, "records: "), "1");

    const std::vector<Row> rows = rows_in(ran.out);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].record, 1);
    EXPECT_EQ(rows[0].ra, 90);
    EXPECT_EQ(rows[0].dec, 0);
    EXPECT_EQ(rows[0].flux, 2);
    EXPECT_EQ(rows[0].distance, "10");
    EXPECT_EQ(rows[0].size, "1x1");
    EXPECT_NEAR(rows[0].amplitude, 0.064, 1e-8);
    ASSERT_EQ(numbers_in(rows[0].place).size(), 2u);
    // A float holds 90 degrees in radians to 4e-8, which are 6e-6 pixels here.
    EXPECT_NEAR(numbers_in(rows[0].place)[0], 32, 1e-5);
    EXPECT_NEAR(numbers_in(rows[0].place)[1], 17, 1e-5);
    for (std::size_t k = 0; k < 3; k++) {
        EXPECT_NEAR(numbers_in(rows[0].color)[k], 0.7, 1e-6);
        EXPECT_NEAR(numbers_in(rows[0].added)[k], 0.0448, 2e-8); // the kernels keep 4e-7 of it
    }
}

// 50 mm of focal length on 24.576 mm of film: 3 degrees up are 50 * tan(3) / 24.576 * 64 = 6.82
// pixels, and north is up.
TEST_F(Explain, CountsRowsFromTheBottomAsTheViewerDoes) {
    write_sky({make_star(90, 3, 2)});
    const std::string more = small("--vaperture 13.824 --knob blur_segs=0");
    const Ran ran = run("explain --pixel 32,24" + more);
    ASSERT_EQ(records_in(ran.out), (std::vector<int>{1}));
    EXPECT_NEAR(numbers_in(rows_in(ran.out)[0].place)[1], 17 + 6.824, 1e-3);
    EXPECT_EQ(rows_in(ran.out)[0].distance, "unknown");
    expect_light(32, 24, more);
    EXPECT_EQ(run("explain --pixel 32,11" + more).out,
              "frame 1, pixel 32,11 (row 24 from the top) of 64x36\nrecords: 0\nlight: 0,0,0\n");
}

TEST_F(Explain, ListsRecordsInTheFilesOrder) {
    write_sky({make_star(90, 0.1, 0.2f), make_star(85, 0, 1), make_star(90, 0, 0.1f),
               make_star(90.1, 0, 2)});
    const std::string more = small("--vaperture 13.824");
    EXPECT_EQ(records_in(run("explain --pixel 32,17" + more).out), (std::vector<int>{1, 3, 4}));
    expect_light(32, 17, more);
}

TEST_F(Explain, ShowsTheWayOfAStreak) {
    write_sky({make_star(90, 0, 2)});
    folder.write("shot.chan", "1 0 0 0 0 0 0\n2 0 0 0 0 6 0\n");
    const std::string more = small("--vaperture 13.824 --camera shot.chan --knob blur_segs=4");
    const Ran ran = run("explain --pixel 32,17" + more);
    ASSERT_EQ(records_in(ran.out), (std::vector<int>{1}));
    // Half a frame: 3 degrees, 6.82 pixels to one side.
    const std::string place = rows_in(ran.out)[0].place;
    const std::size_t dots = place.find("..");
    ASSERT_NE(dots, std::string::npos) << place;
    const double from = numbers_in(place.substr(0, dots))[0];
    const double to = numbers_in(place.substr(dots + 2))[0];
    EXPECT_NEAR(from, 32, 1e-4);
    EXPECT_NEAR(std::fabs(to - from), 6.824, 1e-3);
    expect_light(32, 17, more);
}

// Many stars around the middle, whatever draws them and however.
TEST_F(Explain, AddsUpToTheRenderedPixel) {
    Dice dice(7);
    std::vector<star> stars;
    for (int i = 0; i < 400; i++)
        stars.push_back(make_star(dice.between(80, 100), dice.between(-8, 8),
                                  float(dice.log_between(1e-3, 1)), dice.below(256),
                                  dice.below(256), dice.below(256), dice.between(-50, 100)));
    write_sky(stars);
    folder.write("shot.chan", "1 0 0 0 0 0 0\n9 5 0 0 2 5 10\n");
    for (const char* more :
         {"--knob star_size=100", "--knob star_size=100 --reference",
          "--camera shot.chan -F 4 --knob blur_segs=5 --knob star_size=60",
          "--camera shot.chan -F 4 --knob blur_segs=5 --knob star_size=60 --reference",
          "--no-camera --knob projection=Hemispherical --knob star_size=60",
          "--no-camera --knob 'projection=Azimuthal Equidistant' --knob blur_segs=0 "
          "--knob star_size=60",
          "--knob threed=false --knob tint_strength=0.5 --knob 'tint_color=1 0 0.5' "
          "--knob star_size=100"})
        expect_light(33, 18, small(more));
}

TEST_F(Explain, ExplainsANodeOfAScript) {
    write_sky({make_star(90, 0, 2)});
    const std::string node = "push 0\nVelmoraNK {\n inputs 2\n starfile sky.velmora\n name ";
    const std::string start = "Root {\n inputs 0\n first_frame 5\n last_frame 9\n"
                              " format \"64 36 0 0 64 36 1 small\"\n}\n"
                              "Camera2 {\n inputs 0\n vaperture 13.824\n}\nset C [stack 0]\n";
    folder.write("one.nk", start + node + "Stars\n}\n");
    const Ran ran = run("explain --pixel 32,17 one.nk");
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(ran.out.substr(0, ran.out.find('\n')),
              "Stars: frame 5, pixel 32,17 (row 18 from the top) of 64x36");
    EXPECT_EQ(records_in(ran.out), (std::vector<int>{1}));

    folder.write("two.nk", start + node + "Stars\n}\npush $C\n" + node + "More\n}\n");
    EXPECT_EQ(run("explain --pixel 32,17 two.nk").err,
              "velmora: arguments: the script has several nodes to render: --node names one of "
              "them\n");
    EXPECT_EQ(records_in(run("explain --pixel 32,17 two.nk --node More").out),
              (std::vector<int>{1}));
}

TEST_F(Explain, SavesThoseRecordsWithTheCommandThatRendersThem) {
    const star first = make_star(90, 0.1, 0.2f, 255, 100, 50, 20);
    const star aside = make_star(85, 0, 1);
    const star last = make_star(90, 0, 0.1f, 1, 2, 3, -1);
    for (const char* magic : {"VELMORA1", "VELMORA2"}) {
        write_sky({first, aside, last}, magic);
        const std::string more =
            small("--vaperture 13.824 --rotate -0.5,0,10 --knob 'projection=Perspective' ");
        const Ran ran =
            run("explain --pixel 32,21 --save 'it'\"'\"'s few.velmora' --reference" + more);
        EXPECT_EQ(ran.status, 0) << ran.err;
        ASSERT_EQ(records_in(ran.out), (std::vector<int>{1, 3}));
        EXPECT_EQ(folder.read("it's few.velmora"), sky_bytes(magic, {first, last}));
        const std::string command = line_of(ran.out, "render: ");
        EXPECT_EQ(command,
                  "velmora render --reference --format 64x36 --knob projection=Perspective "
                  "--vaperture 13.824 --rotate=-0.5,0,10 -F 1 --star-file "
                  "'it'\\''s few.velmora' -o pixel.exr");
        const std::vector<float> before = rendered_at(32, 21, "--reference" + more);
        ASSERT_EQ(run(command.substr(std::string("velmora ").size()) + " --raw few.raw").status, 0);
        const std::vector<float> few = floats_of("few.raw");
        const std::size_t at = 4 * (14 * std::size_t(width) + 32);
        EXPECT_EQ(std::vector<float>(few.begin() + long(at), few.begin() + long(at) + 4), before);
        EXPECT_GT(before[1], 0);
    }
}

TEST_F(Explain, FindsNothingWithoutADatabase) {
    EXPECT_EQ(run("explain --pixel 0,0 --format 8x8 --vaperture 24.576 --knob starfile=").out,
              "frame 1, pixel 0,0 (row 7 from the top) of 8x8\nrecords: 0\nlight: 0,0,0\n");
}

// A saturation beyond single precision turns the colour into infinity less infinity.
TEST_F(Explain, NamesTheStarThatSpoilsAPixel) {
    write_sky({make_star(85, 0, 2), make_star(90, 0, 2)});
    for (const char* engine : {"", " --reference"}) {
        const Ran ran = run("explain --pixel 32,17 --knob saturation=1e308" + std::string(engine) +
                            small("--vaperture 13.824"));
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(ran.err, "");
        EXPECT_EQ(records_in(ran.out), (std::vector<int>{2}));
        EXPECT_NE(line_of(ran.out, "light: ").find("nan"), std::string::npos) << ran.out;
    }
}

TEST_F(Explain, RefusesWhatItCannotExplain) {
    write_sky({make_star(90, 0, 2)});
    folder.write("text.velmora", "no database, but as long as its header is");
    const struct {
        std::string arguments;
        int status;
        std::string err;
    } cases[] = {
        {small(""), 2, "arguments: --pixel is required"},
        {"--pixel 3" + small(""), 2, "--pixel '3': takes two whole numbers: x,y"},
        {"--pixel 3,4.5" + small(""), 2, "--pixel '3,4.5': takes two whole numbers: x,y"},
        {"--pixel 1,2,3" + small(""), 2, "--pixel '1,2,3': takes two whole numbers: x,y"},
        {"--pixel 64,0" + small(""), 2,
         "--pixel '64,0': lies outside the image: x goes from 0 to 63, y from 0 to 35"},
        {"--pixel 0,36" + small(""), 2,
         "--pixel '0,36': lies outside the image: x goes from 0 to 63, y from 0 to 35"},
        {"--pixel=-1,0" + small(""), 2,
         "--pixel '-1,0': lies outside the image: x goes from 0 to 63, y from 0 to 35"},
        {"--pixel 1,2 -F 1-3" + small(""), 2, "--frames 1-3: one frame is explained at a time"},
        {"--pixel 1,2 --node Stars" + small(""), 2, "--node: is for scripts"},
        {"--pixel 32,17 --save sky.velmora" + small(""), 2,
         "sky.velmora: is read by the same command, and would be overwritten"},
        {"--pixel 32,17 --save gone/few.velmora" + small(""), 1,
         "gone/few.velmora: there is no folder gone"},
        {"--pixel 0,0 --save few.velmora" + small(""), 1,
         "few.velmora: is not written, as no record puts light into the pixel"},
    };
    for (const auto& c : cases) {
        const Ran ran = run("explain " + c.arguments);
        EXPECT_EQ(ran.status, c.status) << c.arguments;
        EXPECT_EQ(ran.err, "velmora: " + c.err + "\n") << c.arguments;
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"sky.velmora", "text.velmora"}));
}
