// SPDX-License-Identifier: BSD-3-Clause

// A star database that others cut, empty or copy over while the program reads it.
#include "tests/node/sky.h"
#include "tests/tools/program.h"

#include <chrono>
#include <fstream>
#include <random>
#include <thread>
#include <unistd.h>

namespace {

class ChangedDatabase : public Program {
protected:
    const std::string stars = node_test::sky(100000, 1), others = node_test::sky(100000, 2);
    std::mt19937 random{unsigned(20240301 + testing::UnitTest::GetInstance()->random_seed())};

    // Runs the program, and somewhere within that time does something to the file "sky".
    Ran run_while_changing(const std::string& arguments, int moment) {
        folder.write("sky", stars);
        const auto delay = std::chrono::microseconds(random() % unsigned(usual.count()));
        const off_t left = off_t(random() % stars.size());
        std::thread meanwhile([&, delay, left] {
            std::this_thread::sleep_for(delay);
            if (moment % 3 == 0)
                std::ofstream(folder.file("sky"), std::ios::binary) << others;
            else
                EXPECT_EQ(truncate(folder.file("sky").c_str(), moment % 3 == 1 ? left : 0), 0);
        });
        const Ran ran = run(arguments);
        meanwhile.join();
        return ran;
    }

    // How long a run takes that nobody disturbs.
    void time(const std::string& arguments) {
        folder.write("sky", stars);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(run(arguments).status, 0);
        usual = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now() - start);
    }

private:
    std::chrono::microseconds usual{1};
};

// Whether `text` is one line that begins with `start`.
bool is_line(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0 && text.find('\n') == text.size() - 1;
}

} // namespace

// scripts/change-while-reading has it do this for longer.
TEST_F(ChangedDatabase, EndsNoRenderAtAnyMoment) {
    const std::string arguments =
        "render --star-file sky --format 64x36 --vaperture 13.824 --raw frame";
    time(arguments);
    for (int moment = 0; moment < 15; moment++) {
        std::filesystem::remove(folder.file("frame"));
        const Ran ran = run_while_changing(arguments, moment);
        ASSERT_GE(ran.status, 0) << "ended by a signal at moment " << moment;
        if (ran.status == 0) {
            EXPECT_EQ(ran.err, "");
            continue;
        }
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(is_line(ran.err, "velmora: VelmoraNK1: Star database file 'sky' ") ||
                    is_line(ran.err, "velmora: sky: "))
            << ran.err;
        EXPECT_FALSE(std::filesystem::exists(folder.file("frame")));
    }
}

TEST_F(ChangedDatabase, EndsNoInfoAtAnyMoment) {
    const std::string arguments = "catalog info sky";
    time(arguments);
    for (int moment = 0; moment < 15; moment++) {
        const Ran ran = run_while_changing(arguments, moment);
        ASSERT_GE(ran.status, 0) << "ended by a signal at moment " << moment;
        if (ran.status == 0)
            continue;
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(is_line(ran.err, "velmora: sky: ")) << ran.err;
        EXPECT_EQ(ran.out, "");
    }
}

// Frames of one range are all of one sky: those that processes of their own open too late fail.
TEST_F(ChangedDatabase, GivesNoOtherSkyWithinARange) {
    for (const char* const jobs : {"", " --jobs 2"}) {
        folder.write("sky", stars);
        std::thread meanwhile([&] {
            for (int waited = 0; waited < 20000; waited++) {
                if (std::filesystem::exists(folder.file("frame.0001")))
                    break;
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            std::filesystem::rename(folder.write("new", others), folder.file("sky"));
        });
        const Ran ran = run(std::string("render --star-file sky --format 64x36 -F 1-100 --raw "
                                        "frame.#") +
                            jobs);
        meanwhile.join();
        EXPECT_EQ(ran.status, 1) << jobs;
        EXPECT_NE(ran.err.find("Star database file 'sky' was replaced or written to"),
                  std::string::npos)
            << ran.err;
        const std::vector<float> first = floats_of("frame.0001");
        for (int frame = 2; frame <= 100; frame++) {
            const std::string name = "frame." + std::to_string(10000 + frame).substr(1);
            if (!std::filesystem::exists(folder.file(name)))
                continue;
            EXPECT_TRUE(floats_of(name) == first) << name;
            std::filesystem::remove(folder.file(name));
        }
        std::filesystem::remove(folder.file("frame.0001"));
    }
}
