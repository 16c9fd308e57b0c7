// SPDX-License-Identifier: BSD-3-Clause

// Measures how long the phases of some work take.
//
// Units:     seconds of a clock that never goes back. No result depends on it.
#pragma once

#include <chrono>

namespace velmora {

class Stopwatch {
public:
    // Seconds since the last lap, at first since this was made.
    double lap() {
        const auto now = std::chrono::steady_clock::now();
        const std::chrono::duration<double> passed = now - last;
        last = now;
        return passed.count();
    }

private:
    std::chrono::steady_clock::time_point last = std::chrono::steady_clock::now();
};

} // namespace velmora
