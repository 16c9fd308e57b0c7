// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/progress.h"

#include "osapi/osapi.h"

#include <algorithm>
#include <cstdio>

namespace velmora {

Progress::Progress(std::size_t frames, std::size_t stars)
    : terminal(OSAPI::stderr_is_console()), frames(frames), stars(stars),
      start(std::chrono::steady_clock::now()) {
    show();
}

Progress::~Progress() {
    if (terminal)
        fputs("\r\033[K", stderr);
}

void Progress::frame_done() {
    done++;
    show();
}

void Progress::show() const {
    if (!terminal)
        return;
    const std::size_t current = std::min(done + 1, frames);
    // Nothing is known of the speed before the first frame is done.
    if (done == 0) {
        fprintf(stderr, "\r\033[Kframe %zu of %zu", current, frames);
        return;
    }
    // Frames to come are expected to take as long as those that are done.
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    const double left = spent.count() / double(done) * double(frames - done);
    fprintf(stderr, "\r\033[Kframe %zu of %zu, %.3g stars/s, %d:%02d left", current, frames,
            double(done) * double(stars) / spent.count(), int(left) / 60, int(left) % 60);
}

} // namespace velmora
