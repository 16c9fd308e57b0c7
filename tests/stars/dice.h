// SPDX-License-Identifier: BSD-3-Clause

// Random numbers that are the same with every standard library.
#pragma once

#include <cmath>
#include <random>

namespace stars_test {

class Dice {
public:
    explicit Dice(unsigned seed) : engine(seed) {}

    double between(double low, double high) {
        return low + (high - low) * double(engine() >> 5) / 134217728.0;
    }

    // Every power of ten as often as any other.
    double log_between(double low, double high) {
        return std::exp(between(std::log(low), std::log(high)));
    }

    int below(int n) { return int(between(0, n)); }

private:
    std::mt19937 engine; // 32 bits a call; the distributions of the library differ, so none is used
};

} // namespace stars_test
