// SPDX-License-Identifier: BSD-3-Clause

// File names with a place for the frame number.
//
//     sky.####.exr  sky.%04d.exr    sky.0007.exr   padded with zeros to as many digits
//     sky.#.exr                     sky.0007.exr   a single # means four
//     sky.%d.exr                    sky.7.exr
//     100%%.#.exr                   100%.0007.exr
//
// Shapes:    a minus sign counts as a digit of the width, as in printf: -007. Every place of a name
//            with several is filled. A # cannot be escaped.
// Errors:    UsageFailure "output name '<pattern>'" for an empty name or a % before anything else.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

class FrameName {
public:
    explicit FrameName(const std::string& pattern);

    // Whether the name depends on the frame.
    bool has_frame() const { return !places.empty(); }

    std::string at(int frame) const;

private:
    struct Place {
        std::string text;  // before the number
        std::size_t width; // digits, at least
    };
    std::vector<Place> places;
    std::string tail; // after the last number
};

} // namespace velmora
