// SPDX-License-Identifier: BSD-3-Clause

// Lists of frames as users type them: `5`, `1-100`, `1-100x2`, `10-1x3`, `-5--1`, `1,5 8-12`.
//
// Shapes:    pieces are separated by blanks, commas or both. <a>-<b> runs from a to b, downwards when
//            b is less; x<n> takes every nth frame of it, from a on.
// Errors:    UsageFailure "frame range '<text>'", quoting the piece at fault. A colon (1-100:2) is
//            refused: to some programs it means every second frame, to others an order.
#pragma once

#include <string>
#include <vector>

namespace velmora {

const int most_frames = 1000000;

// Each frame once, in the order in which they are first named; at least one, at most most_frames.
std::vector<int> parse_frame_range(const std::string& text);

// From `first` to `last`, downwards when `last` is less. Fails as <first>-<last> would.
std::vector<int> frames_from_to(int first, int last);

} // namespace velmora
