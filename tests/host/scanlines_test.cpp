// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/scanlines.h"

#include "tests/host/call_log.h"
#include "tests/host/comp.h"

#include <atomic>
#include <set>
#include <thread>

using namespace velmora;
using namespace velmora::host;
using namespace DD::Image;

class ScanlinesTest : public CompTest {
protected:
    Node& ramp = create("Ramp", "R");
    OpTree tree{ramp};

    ScanlinesTest() {
        set(ramp, "r", 37);
        set(ramp, "t", 29);
    }
};

// The plug-in draws the column and row of each pixel.
static std::vector<Pixel> expected(const Box& box) {
    std::vector<Pixel> pixels;
    for (int y = box.y(); y < box.t(); y++)
        for (int x = box.x(); x < box.r(); x++)
            pixels.push_back({float(x), float(y), 0, 1});
    return pixels;
}

TEST_F(ScanlinesTest, PullEveryPixelOfTheBoxOnce) {
    const Opened opened(tree.at(1));
    const Box box = opened.iop().info();
    EXPECT_EQ(box, Box(0, 0, 37, 29));
    EXPECT_EQ(pulled(opened.iop(), box), expected(box));
    const Box part(3, 5, 20, 6);
    EXPECT_EQ(pulled(opened.iop(), part), expected(part));
}

TEST_F(ScanlinesTest, AreTheSameInSpansOfAnyLengthOrderAndNumberOfThreads) {
    const Opened opened(tree.at(1));
    const Box box = opened.iop().info();
    const std::vector<Pixel> picture = expected(box);
    for (const int threads : {1, 2, 8})
        for (const int span : {0, 1, 5, 36, 37, 1000})
            for (const unsigned shuffled : {0u, 1u, 77u})
                EXPECT_EQ(pulled(opened.iop(), box, {threads, span, shuffled}), picture)
                    << threads << " threads, spans of " << span << ", order " << shuffled;
}

// With one thread the order is determined.
static std::vector<std::pair<int, int>> order_of(Iop& iop, const Pulling& pulling) {
    std::vector<std::pair<int, int>> order;
    pull_rows(iop, iop.info(), Mask_RGBA, pulling,
              [&](const Row&, int y, int x, int) { order.emplace_back(y, x); });
    return order;
}

TEST_F(ScanlinesTest, ComeFromTheBottomUnlessShuffled) {
    const Opened opened(tree.at(1));
    const auto straight = order_of(opened.iop(), {1, 20, 0});
    EXPECT_EQ(straight.size(), 58u);
    EXPECT_TRUE(std::is_sorted(straight.begin(), straight.end()));
    const auto first = order_of(opened.iop(), {1, 20, 1}),
               second = order_of(opened.iop(), {1, 20, 2});
    EXPECT_NE(first, straight);
    EXPECT_NE(first, second);
    EXPECT_EQ(order_of(opened.iop(), {1, 20, 1}), first);
    EXPECT_TRUE(std::is_permutation(first.begin(), first.end(), straight.begin(), straight.end()));
}

TEST_F(ScanlinesTest, ComeFromSeveralThreads) {
    const Opened opened(tree.at(1));
    std::set<std::thread::id> ids;
    std::mutex lock;
    std::atomic<int> waiting{0};
    pull_rows(opened.iop(), opened.iop().info(), Mask_RGBA, {3, 0, 0},
              [&](const Row&, int, int, int) {
                  waiting++;
                  while (waiting < 3) // until all threads are here
                      std::this_thread::yield();
                  const std::lock_guard<std::mutex> guard(lock);
                  ids.insert(std::this_thread::get_id());
              });
    EXPECT_EQ(ids.size(), 3u);
}

TEST_F(ScanlinesTest, AreNoneInABoxWithoutRows) {
    const Opened opened(tree.at(1));
    EXPECT_EQ(pulled(opened.iop(), Box(5, 5, 10, 5)).size(), 0u);
}

// ---- opening and closing -----------------------------------------------------------------------

TEST_F(ScanlinesTest, NeedAnOpThatMakesAnImage) {
    Node& axis = create("Axis2", "X");
    OpTree axes(axis);
    Op& op = axes.at(1);
    EXPECT_EQ(error_of([&] { const Opened opened(op); }), "X: makes no image");
}

TEST_F(ScanlinesTest, AreOpenForAsLongAsTheyAreHeld) {
    Op& op = tree.at(1);
    {
        const Opened opened(op, Mask_RGB);
        EXPECT_TRUE(op.opened());
        EXPECT_EQ(opened.iop().requestedBox(), Box(0, 0, 37, 29));
    }
    EXPECT_FALSE(op.opened());
}

TEST_F(ScanlinesTest, CanBeTakenTwiceFromOneValidation) {
    Op& op = tree.at(1);
    for (int time = 0; time < 2; time++) {
        const Opened opened(op);
        EXPECT_EQ(pulled(opened.iop(), opened.iop().info()), expected(opened.iop().info()));
    }
}

// ---- failing -----------------------------------------------------------------------------------

static std::string failure_of(OpTree& tree, const Pulling& pulling) {
    return error_of([&] {
        const Opened opened(tree.at(1));
        pull_rows(opened.iop(), opened.iop().info(), Mask_RGBA, pulling,
                  [](const Row&, int, int, int) {});
    });
}

TEST_F(ScanlinesTest, TellWhichNodeFailedAndWhy) {
    Node& raise = create("BareRaise", "up");
    ASSERT_TRUE(raise.set_input(0, &ramp));
    OpTree raised(raise);
    set_text(ramp, "trouble", "error in validate");
    set(ramp, "level", 2.5);
    try {
        validate(raised.at(1));
        FAIL() << "no failure";
    } catch (const OpFailure& failure) {
        EXPECT_STREQ(failure.what(), "R: level 2.5 does not do");
        EXPECT_EQ(failure.node, "R");
        EXPECT_EQ(failure.why, "level 2.5 does not do");
    }
}

TEST_F(ScanlinesTest, PassExceptionsOn) {
    set_text(ramp, "trouble", "throw in validate");
    EXPECT_EQ(failure_of(tree, {}), "the validation is thrown");
    set_text(ramp, "trouble", "throw in open");
    EXPECT_EQ(failure_of(tree, {}), "the opening is thrown");
    set(ramp, "row", 13);
    set_text(ramp, "trouble", "throw in engine");
    for (const int threads : {1, 2, 8})
        for (const unsigned shuffled : {0u, 5u})
            EXPECT_EQ(failure_of(tree, {threads, 4, shuffled}), "row 13 is thrown");
    set_text(ramp, "trouble", "none");
    EXPECT_EQ(failure_of(tree, {}), "no error");
}

TEST_F(ScanlinesTest, TellErrorsOfAnyThread) {
    set(ramp, "row", 13);
    set_text(ramp, "trouble", "error in engine");
    for (const int threads : {1, 8})
        EXPECT_EQ(failure_of(tree, {threads, 4, 3}), "R: row 13 does not do");
    set_text(ramp, "trouble", "none");
    EXPECT_EQ(failure_of(tree, {}), "no error");
}

TEST_F(ScanlinesTest, StopAtAnException) {
    set(ramp, "row", 2);
    set_text(ramp, "trouble", "throw in engine");
    const Opened opened(tree.at(1));
    int rows = 0;
    EXPECT_THROW(pull_rows(opened.iop(), opened.iop().info(), Mask_RGBA, {},
                           [&](const Row&, int, int, int) { rows++; }),
                 std::runtime_error);
    EXPECT_EQ(rows, 2);
}

TEST_F(ScanlinesTest, PassOnWhatTheSinkThrows) {
    const Opened opened(tree.at(1));
    EXPECT_EQ(error_of([&] {
                  pull_rows(opened.iop(), opened.iop().info(), Mask_RGBA, {8, 0, 0},
                            [](const Row&, int y, int, int) {
                                if (y == 20)
                                    throw std::runtime_error("full");
                            });
              }),
              "full");
}

// ---- stopping ----------------------------------------------------------------------------------

TEST_F(ScanlinesTest, StopInSilenceWhenAborted) {
    const Opened opened(tree.at(1));
    int rows = 0;
    pull_rows(opened.iop(), opened.iop().info(), Mask_RGBA, {}, [&](const Row&, int, int, int) {
        if (++rows == 4)
            tree.abort();
    });
    EXPECT_EQ(rows, 4);
}

TEST_F(ScanlinesTest, GiveNothingOfARowThatWasAborted) {
    set(ramp, "row", 6);
    set_text(ramp, "trouble", "abort in engine");
    for (const int threads : {1, 8}) {
        const Opened opened(tree.at(1));
        std::atomic<bool> came{false};
        pull_rows(opened.iop(), opened.iop().info(), Mask_RGBA, {threads, 0, 0},
                  [&](const Row& row, int y, int, int) {
                      if (y == 6 || row[Chan_Green][0] != float(y))
                          came = true;
                  });
        EXPECT_FALSE(came);
        EXPECT_TRUE(opened.iop().aborted());
    }
}
