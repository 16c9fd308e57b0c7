// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/jobs.h"

#include "tools/failure.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace velmora;

static std::string frame_name(std::size_t i) {
    return "frame " + std::to_string(i);
}

namespace {
// Counts in memory that forked processes share.
struct SharedCounts {
    int* counts = static_cast<int*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ~SharedCounts() { munmap(counts, 4096); }
};
} // namespace

TEST(Jobs, RunEachPieceOnce) {
    for (const int jobs : {1, 2, 5, 100}) {
        SharedCounts shared;
        int done = 0;
        EXPECT_EQ(run_jobs(
                      7, jobs, [&](std::size_t i) { __atomic_add_fetch(&shared.counts[i], 1, 5); },
                      frame_name, [&] { done++; }),
                  0u);
        EXPECT_EQ(done, 7);
        for (int i = 0; i < 7; i++)
            EXPECT_EQ(shared.counts[i], 1);
    }
}

TEST(Jobs, RunInThisProcessWhenThereIsOne) {
    std::vector<std::size_t> order;
    run_jobs(
        3, 1, [&](std::size_t i) { order.push_back(i); }, frame_name, [] {});
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2}));
}

TEST(Jobs, SayWhatFailsAndGoOn) {
    for (const int jobs : {1, 3}) {
        SharedCounts shared;
        testing::internal::CaptureStderr();
        const std::size_t failed = run_jobs(
            4, jobs,
            [&](std::size_t i) {
                if (i == 1)
                    throw WorkFailure("a.exr", "No space left on device");
                shared.counts[i] = 1;
            },
            frame_name, [] {});
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "velmora: a.exr: No space left on device\n");
        EXPECT_EQ(failed, 1u);
        EXPECT_EQ(shared.counts[0] + shared.counts[2] + shared.counts[3], 3);
    }
}

TEST(Jobs, SurviveOneThatDies) {
    SharedCounts shared;
    testing::internal::CaptureStderr();
    const std::size_t failed = run_jobs(
        4, 2,
        [&](std::size_t i) {
            if (i == 2)
                raise(SIGKILL);
            shared.counts[i] = 1;
        },
        frame_name, [] {});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "velmora: frame 2: died: Killed\n");
    EXPECT_EQ(failed, 1u);
    EXPECT_EQ(shared.counts[0] + shared.counts[1] + shared.counts[3], 3);
}

// A caller that ignores SIGCHLD hands that on, and the system then keeps no status of a child.
TEST(Jobs, AreCountedUnderACallerThatIgnoresItsChildren) {
    const sighandler_t before = signal(SIGCHLD, SIG_IGN);
    int done = 0;
    testing::internal::CaptureStderr();
    std::string ended;
    try {
        const std::size_t failed = run_jobs(
            4, 2,
            [](std::size_t i) {
                if (i == 2)
                    throw WorkFailure("2.exr", "No space left on device");
            },
            frame_name, [&] { done++; });
        ended = std::to_string(failed) + " failed";
    } catch (const WorkFailure& failure) {
        ended = failure.what();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "velmora: 2.exr: No space left on device\n");
    EXPECT_EQ(ended, "1 failed");
    EXPECT_EQ(done, 4);
    EXPECT_EQ(signal(SIGCHLD, before), SIG_IGN) << "the disposition is the caller's again";
}
