// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/progress.h"

#include "tests/tools/standard_error.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

using namespace velmora;

namespace {

// A terminal that is standard error while this lives.
class Terminal {
public:
    Terminal() : ours(posix_openpt(O_RDWR | O_NOCTTY)), before(dup(STDERR_FILENO)) {
        if (ours == -1 || grantpt(ours) != 0 || unlockpt(ours) != 0)
            return;
        const int theirs = open(ptsname(ours), O_RDWR | O_NOCTTY);
        dup2(theirs, STDERR_FILENO);
        close(theirs);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        dup2(before, STDERR_FILENO);
        close(before);
        close(ours);
    }

    bool works() const { return isatty(STDERR_FILENO) == 1; }

    // What has been written since the last call.
    std::string text() const {
        std::string bytes;
        pollfd waiting = {ours, POLLIN, 0};
        char block[256];
        while (poll(&waiting, 1, 100) == 1) {
            const ssize_t count = read(ours, block, sizeof block);
            if (count <= 0)
                break;
            bytes.append(block, std::size_t(count));
        }
        return bytes;
    }

private:
    const int ours, before;
};

} // namespace

// Each line takes the place of the one before: back to its start, and clear to its end. Frames
// without stars leave a rate that can be known, and no time.
TEST(Progress, ShowsTheFrameOnATerminal) {
    std::string started, went_on, ended, gone;
    {
        const Terminal terminal;
        ASSERT_TRUE(terminal.works());
        {
            Progress progress(2, 0);
            started = terminal.text();
            progress.frame_done();
            went_on = terminal.text();
            progress.frame_done();
            ended = terminal.text();
        }
        gone = terminal.text();
    }
    EXPECT_EQ(started, "\r\033[Kframe 1 of 2");
    EXPECT_EQ(went_on, "\r\033[Kframe 2 of 2, 0 stars/s, 0:00 left");
    EXPECT_EQ(ended, "\r\033[Kframe 2 of 2, 0 stars/s, 0:00 left");
    EXPECT_EQ(gone, "\r\033[K");
}

TEST(Progress, IsSilentElsewhere) {
    StandardError error;
    {
        Progress progress(2, 100);
        progress.frame_done();
    }
    EXPECT_EQ(error.text(), "");
}
