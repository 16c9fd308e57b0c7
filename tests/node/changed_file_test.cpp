// SPDX-License-Identifier: BSD-3-Clause

// A star database that others cut, write to or replace while the node has it open.
#include "tests/message_of.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"

#include <chrono>
#include <filesystem>
#include <random>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

using namespace node_test;
using DD::Image::Op;

namespace {

Pixels nothing() {
    return Pixels(DD::Image::Box(0, 0, 0, 0));
}

class NodeChangedFile : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string path = folder.file("sky");
    Comp comp;

    std::string changed() const {
        return "Star database file '" + path +
               "' was written to or cut short since it was opened; it is not drawn until the path "
               "is changed";
    }
    std::string replaced() const {
        return "Star database file '" + path +
               "' was replaced since it was opened; the old one is drawn until the path is changed";
    }

    void cut(off_t bytes) const { ASSERT_EQ(truncate(path.c_str(), bytes), 0); }

    // Opens the node at `frame`: what that says to the user, and what it draws.
    std::string told(Pixels& pixels, double frame = 1) {
        pixels = comp.picture(frame);
        Op& op = comp.tree.at(frame);
        return op.has_error() ? op.error_message() : "";
    }
};

} // namespace

TEST_F(NodeChangedFile, IsToldOfAndBlackWhenItWasCutBeforeTheOpening) {
    for (const off_t left :
         {off_t(0), off_t(8), off_t(32), off_t(4096), off_t(20000), off_t(64000)}) {
        comp.set_star_file("");
        comp.validated();
        folder.write("sky", sky(2000)); // 64032 bytes: 64000 lie in the last page
        comp.set_star_file(path);
        comp.validated();
        cut(left);
        Pixels pixels = nothing();
        EXPECT_EQ(told(pixels), changed()) << left;
        EXPECT_TRUE(pixels.is_black()) << left;
        EXPECT_FALSE(comp.tree.at(1).opened());
    }
}

// The renderer alone would draw what is left of the file's last page, and zeros.
TEST_F(NodeChangedFile, IsToldOfAtEveryOpeningUntilThePathIsChanged) {
    folder.write("sky", sky(2000));
    comp.set_star_file(path);
    comp.validated();
    cut(64000);
    for (int frame = 1; frame < 4; frame++) {
        Pixels pixels = nothing();
        comp.set("brightness", std::to_string(frame));
        EXPECT_EQ(told(pixels, frame), changed());
        EXPECT_TRUE(pixels.is_black());
    }
    comp.set_star_file(folder.path() + "/./sky");
    Pixels pixels = nothing();
    EXPECT_EQ(told(pixels), "");
    EXPECT_FALSE(pixels.is_black());
}

TEST_F(NodeChangedFile, IsToldOfAndBlackWhenOtherStarsWereCopiedOverIt) {
    folder.write("sky", sky(2000, 1));
    comp.set_star_file(path);
    Pixels pixels = nothing();
    EXPECT_EQ(told(pixels), "");
    EXPECT_FALSE(pixels.is_black());
    folder.write("sky", sky(2000, 2));
    const timeval times[2] = {{1, 0}, {1, 0}}; // some systems' clocks tick slowly
    ASSERT_EQ(utimes(path.c_str(), times), 0);
    EXPECT_EQ(told(pixels), changed());
    EXPECT_TRUE(pixels.is_black());
}

TEST_F(NodeChangedFile, IsWarnedOfAndDrawnAsItWasWhenAnotherFileHasItsName) {
    folder.write("sky", sky(2000, 1));
    comp.set_star_file(path);
    const Pixels first = comp.picture();
    std::filesystem::rename(folder.write("new", sky(2000, 2)), path);
    for (int opening = 0; opening < 3; opening++) {
        Pixels pixels = nothing();
        testing::internal::CaptureStderr();
        EXPECT_EQ(told(pixels), "");
        const std::string warning = "warning: " + replaced() + " in <";
        const std::string said = testing::internal::GetCapturedStderr();
        if (opening == 0)
            EXPECT_EQ(said.substr(0, warning.size()), warning);
        else
            EXPECT_EQ(said, "");
        EXPECT_TRUE(same_bits(pixels, first));
    }
}

TEST_F(NodeChangedFile, IsWarnedOfAgainForAnotherPath) {
    for (const char* const name : {"one", "two"}) {
        const std::string file = folder.write(name, sky(100, 1));
        comp.set_star_file(file);
        comp.validated();
        std::filesystem::rename(folder.write("new", sky(100, 2)), file);
        testing::internal::CaptureStderr();
        comp.picture();
        EXPECT_NE(testing::internal::GetCapturedStderr().find("'" + file + "' was replaced"),
                  std::string::npos);
    }
}

TEST_F(NodeChangedFile, IsDrawnInSilenceAfterItWasRemoved) {
    folder.write("sky", sky(100));
    comp.set_star_file(path);
    const Pixels first = comp.picture();
    std::filesystem::remove(path);
    Pixels pixels = nothing();
    EXPECT_EQ(told(pixels), "");
    EXPECT_TRUE(same_bits(pixels, first));
}

TEST_F(NodeChangedFile, IsToldOfByTheHostThatPullsTheRows) {
    folder.write("sky", sky(2000));
    comp.set_star_file(path);
    Op& op = comp.validated();
    cut(0);
    const velmora::host::Opened opened(op);
    try {
        pulled(opened.iop());
        FAIL() << "nothing was thrown";
    } catch (const velmora::host::OpFailure& failure) {
        EXPECT_EQ(failure.why, changed());
    }
}

// ---- at any moment -----------------------------------------------------------------------------

namespace {

enum class Act { cut, empty, copy_over };

// Does something to a file some microseconds from now, in a thread of its own.
class Meanwhile {
public:
    Meanwhile(Act act, const std::string& path, const std::string& other, off_t cut_to,
              std::chrono::microseconds delay)
        : thread([=] {
              std::this_thread::sleep_for(delay);
              if (act == Act::copy_over)
                  std::ofstream(path, std::ios::binary) << other;
              else
                  EXPECT_EQ(truncate(path.c_str(), act == Act::cut ? cut_to : 0), 0);
          }) {}
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;
    ~Meanwhile() { thread.join(); }

private:
    std::thread thread;
};

} // namespace

// scripts/change-while-reading has it do this for longer.
TEST_F(NodeChangedFile, EndsNothingAtAnyMoment) {
    const std::string first = sky(20000, 1), second = sky(20000, 2);
    std::mt19937 random(unsigned(20240229 + testing::UnitTest::GetInstance()->random_seed()));
    const auto started = std::chrono::steady_clock::now();
    folder.write("sky", first);
    comp.set_star_file(path);
    const Pixels of_first = comp.picture();
    const auto needed = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - started);
    folder.write("sky", second);
    Comp other;
    other.set_star_file(path);
    const Pixels of_second = other.picture();

    int told_of = 0, drawn = 0;
    for (int moment = 0; moment < 60; moment++) {
        folder.write("sky", first);
        // Another spelling each time, so that the node opens the file again.
        const std::string spelt = folder.path() + (moment % 2 ? "/./sky" : "/sky");
        comp.set_star_file(spelt);
        const Act act = Act(moment % 3);
        const off_t cut_to = off_t(random() % first.size());
        Pixels pixels = nothing();
        {
            const Meanwhile meanwhile(
                act, path, second, cut_to,
                std::chrono::microseconds(random() % unsigned(needed.count())));
            pixels = comp.picture();
        }
        Op& op = comp.tree.at(1);
        const std::string start = "Star database file '" + spelt + "' ";
        if (op.has_error()) {
            told_of++;
            const std::string message = op.error_message();
            EXPECT_TRUE(message == start + "is missing or invalid" ||
                        message == start + "was written to or cut short since it was opened; it is "
                                           "not drawn until the path is changed")
                << message;
            EXPECT_TRUE(pixels.is_black()) << message;
            continue;
        }
        drawn++;
        if (act == Act::copy_over) {
            EXPECT_TRUE(same_bits(pixels, of_first) || same_bits(pixels, of_second));
        } else if (inside(op).star_input->count == first.size() / sizeof(star)) {
            EXPECT_TRUE(same_bits(pixels, of_first));
        }
    }
    EXPECT_GT(told_of, 0);
    EXPECT_GT(drawn, 0);
}
