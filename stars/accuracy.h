// SPDX-License-Identifier: BSD-3-Clause

// How near both readings come to the formulas in streak.h, taken in double. The tests hold both to
// these figures.
//
// Units:     parts of the largest value of a picture of up to 57 by 47 pixels that holds the path's
//            midpoint.
// Source:    two to three times the largest error of 100,000 random calls of each kind, with sizes
//            from 0.2 (spots) or 0.3 (streaks) to 200 and amplitudes from 2e-4 to 1e5. For streaks most of
//            it is the rounding of the midpoint to a float, which both readings have.
#pragma once

namespace velmora {

struct Accuracy {
    double fast, plain;
};

constexpr Accuracy spot_accuracy = {1.5e-7, 3e-6};
constexpr Accuracy tiny_streak_accuracy = {6e-5, 3}; // shorter than 1e-3 pixels, for which the
                                                     // plain reading can lose or double the light
constexpr Accuracy short_streak_accuracy = {6e-5, 3e-2}; // from there to 1 pixel
constexpr Accuracy wide_streak_accuracy = {6e-7, 3e-4};  // 0.1 to 30 pixels, sizes from 10 on
constexpr Accuracy streak_accuracy = {5e-5, 5e-5};       // from 1 pixel on
constexpr Accuracy long_streak_accuracy = {2e-5, 2e-5};  // from 10 pixels to 1e7

} // namespace velmora
