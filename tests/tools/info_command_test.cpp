// SPDX-License-Identifier: BSD-3-Clause
#include "stars/kernels.h"
#include "tests/tools/program.h"

class Info : public Program {};

// The lines of a text.
static std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

TEST_F(Info, ListsTheKnobsInTheNodesOrder) {
    const Ran ran = run("info");
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    const std::vector<std::string> lines = lines_of(ran.out);
    ASSERT_EQ(lines.size(), 27u);
    EXPECT_EQ(lines[0], "velmora    " VELMORA_VERSION);
    EXPECT_EQ(lines[4], std::string("kernels    ") +
                            velmora::kernel_level_name(velmora::best_kernel_level()));
    EXPECT_EQ(lines[6], "");
    EXPECT_EQ(lines[7], "knob             default                takes");
    EXPECT_EQ(lines[8], "format           1920x1080              <width>x<height> in pixels");
    EXPECT_EQ(lines[15], "lum_threshold    0.0001                 a number");
    EXPECT_EQ(lines[18], "blur_segs        1                      a whole number");
    EXPECT_EQ(lines[22], "threed           true                   true or false, 1 or 0");
    EXPECT_EQ(lines[26].substr(0, 17), "transform        ");
}

TEST_F(Info, NamesTheStarFileThatRendersByDefault) {
    const std::vector<std::string> lines = lines_of(run("info").out);
    ASSERT_GT(lines.size(), 5u);
    ASSERT_EQ(lines[5].substr(0, 11), "star file  ");
    EXPECT_EQ(folder.read("none").size(), 0u);
    EXPECT_TRUE(std::filesystem::is_regular_file(lines[5].substr(11)));
}

TEST_F(Info, SaysTheVersion) {
    EXPECT_EQ(run("--version").out, "velmora " VELMORA_VERSION "\n");
}

TEST_F(Info, FailsWhenItCannotBeRead) {
    for (const char* what : {"info", "--help", "--version", "render --help"}) {
        const Ran ran = run(std::string(what) + " >/dev/full");
        EXPECT_EQ(ran.status, 1) << what;
        EXPECT_EQ(ran.err, "velmora: standard output: cannot be written\n") << what;
    }
}
