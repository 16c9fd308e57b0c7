// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/wide_angle.h"
#include "core/types.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace velmora {

__extension__ typedef unsigned __int128 u128;
__extension__ typedef __int128 s128;

// The bits of 2 / pi after the binary point.
static const u32 two_over_pi[7] = {0xa2f9836e, 0x4e441529, 0xfc2757d1, 0xf534ddc0,
                                   0xdb629599, 0x3c439041, 0xfe5163ab};

// 24 bits of mantissa times this many stay within 128 bits, and leave 2e-16 of the smallest rest.
static const int window_bits = 104;

static const double half_pi = 1.5707963267948966;

// Bits [first, first + window_bits) of 2 / pi, counted from 1 after the point.
static u128 window_from(int first) {
    u128 window = 0;
    for (int bit = first - 1; bit < first - 1 + window_bits; bit++)
        window = window << 1 | (two_over_pi[bit / 32] >> (31 - bit % 32) & 1);
    return window;
}

void split_wide_angle(double angle, double& quarters, double& rest) {
    quarters = 0;
    rest = angle - angle;
    if (!std::isfinite(angle))
        return;

    // |angle| = mantissa * 2^exponent.
    const float size = float(std::fabs(angle));
    u32 bits;
    memcpy(&bits, &size, sizeof bits);
    const u32 mantissa = (bits & 0x7fffff) | 0x800000;
    const int exponent = int(bits >> 23) - 150;

    // Bits of 2 / pi that make whole turns are left out. The product's lowest `point` bits are the
    // fraction of a quarter turn.
    const int first = std::max(1, exponent - 1);
    const int point = first + window_bits - 1 - exponent;
    const u128 product = mantissa * window_from(first);
    u32 quarter = u32(product >> point) & 3;
    s128 part = s128(product & ((u128(1) << point) - 1));
    if (product >> (point - 1) & 1) { // the next quarter is nearer
        quarter++;
        part -= s128(1) << point;
    }
    quarters = quarter & 3;
    rest = std::ldexp(double(part), -point) * half_pi;
    if (angle < 0) {
        quarters = (4 - quarter) & 3;
        rest = -rest;
    }
}

} // namespace velmora
