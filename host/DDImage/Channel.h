// SPDX-License-Identifier: BSD-3-Clause

// The channels of an image: numbers from 1, the first ten with fixed names.
//
// Threads:   main thread only, for the names.
#pragma once

#include <DDImage/DDImage_API.h>

namespace DD::Image {

enum Channel {
    Chan_Black = 0, // no channel; false in a condition
    Chan_Red = 1,
    Chan_Green = 2,
    Chan_Blue = 3,
    Chan_Alpha = 4,
    Chan_Z = 5,
    Chan_U = 6,
    Chan_V = 7,
    Chan_Backward_U = 8,
    Chan_Backward_V = 9,
    Chan_Mask = 10,
    Chan_Last = 1023, // the largest number that a channel may have
};

// The name with its layer, "rgba.red"; null for a number without a name.
DDImage_API const char* getName(Channel channel);

// The channel named "rgba.red" or "red", made if there is none; Chan_Black if no number is left.
DDImage_API Channel channel(const char* name);

// The channel of that name, or Chan_Black.
DDImage_API Channel findChannel(const char* name);

// The channel's position in a group of four: 0 to 3 for red, green, blue and alpha.
inline int colourIndex(Channel channel) {
    return (int(channel) - 1) & 3;
}

} // namespace DD::Image
