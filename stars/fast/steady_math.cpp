// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/steady_math.h"
#include "core/types.h"
#include "stars/fast/fitted.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace velmora {

static const double ln2 = 0.6931471805599453;

// ln(2) in two parts, the first with so few bits that its product with n is exact.
static const double ln2_high = 0.69314718036912382, ln2_low = 1.9082149292705877e-10;

// Adding and subtracting this leaves the nearest whole number.
static const double rounder = 0x1.8p52;

// e^89 is above the largest float, e^-104 below half the smallest.
static const double largest_exponent = 89, smallest_exponent = -104;
static const float infinity = std::numeric_limits<float>::infinity();
static const float not_a_number = std::numeric_limits<float>::quiet_NaN();

// ln(x) of a finite x above 0.
static double positive_log(float x) {
    // x = m * 2^e with m between the roots of 1/2 and of 2.
    const double wide = x;
    u64 bits;
    memcpy(&bits, &wide, sizeof bits);
    const u64 root_of_half = 0x3fe6a09e667f3bcd;
    const s64 e = s64(bits - root_of_half) >> 52;
    bits -= u64(e) << 52;
    double m;
    memcpy(&m, &bits, sizeof m);

    // ln(x) = e ln(2) + ln(m), and ln(m) = 2 atanh((m - 1) / (m + 1)).
    const double s = (m - 1) / (m + 1);
    const double z = s * s;
    double tail = fitted::atanh_tail[7];
    for (int i = 6; i >= 0; i--)
        tail = tail * z + fitted::atanh_tail[i];
    return double(e) * ln2 + 2 * (s + s * (z * tail));
}

// e^x for |x| <= 700.
static double moderate_exp(double x) {
    // x = n ln(2) + r.
    const double n = (x * (1 / ln2) + rounder) - rounder;
    const double r = (x - n * ln2_high) - n * ln2_low;

    // e^x = e^r * 2^n.
    double y = fitted::exp_double[11];
    for (int i = 10; i >= 0; i--)
        y = y * r + fitted::exp_double[i];
    u64 bits;
    memcpy(&bits, &y, sizeof bits);
    bits += u64(s64(n)) << 52;
    memcpy(&y, &bits, sizeof y);
    return y;
}

float steady_log(float x) {
    if (x > 0 && x < infinity)
        return float(positive_log(x));
    if (x == 0)
        return -infinity;
    return x > 0 ? infinity : not_a_number;
}

// Floats from 2^23 on are whole, from 2^24 on even.
static bool is_whole(float y) {
    return fabsf(y) >= 0x1p23f || float(s32(y)) == y;
}

static bool is_odd(float y) {
    return fabsf(y) < 0x1p24f && s32(y) % 2 != 0;
}

float steady_pow(float x, float y) {
    if (y == 0 || x == 1)
        return 1;
    if (std::isnan(x) || std::isnan(y))
        return not_a_number;
    if (std::isinf(y)) {
        const float size = fabsf(x);
        return size == 1 ? 1 : (size > 1) == (y > 0) ? infinity : 0;
    }

    // A negative x has whole powers only; the odd ones keep its sign, that of -0 too.
    const bool negative = std::signbit(x);
    if (negative && x != 0 && x > -infinity && !is_whole(y))
        return not_a_number;
    const float sign = negative && is_whole(y) && is_odd(y) ? -1.0f : 1.0f;
    const float size = fabsf(x);
    if (size == 0 || std::isinf(size))
        return sign * ((size == 0) == (y > 0) ? 0 : infinity);

    // |x|^y = e^(y ln |x|).
    const double exponent = double(y) * positive_log(size);
    if (exponent > largest_exponent)
        return sign * infinity;
    if (exponent < smallest_exponent)
        return sign * 0;
    return sign * float(moderate_exp(exponent));
}

} // namespace velmora
