#include "stars/fast/steady_math.h"
#include "core/types.h"
#include "stars/fast/fitted.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace velmora {

static const double ln2 = 0.6931471805599453;
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

    // ln(m) = 2 atanh((m - 1) / (m + 1)).
    const double s = (m - 1) / (m + 1);
    const double z = s * s;
    double tail = fitted::atanh_tail[7];
    for (int i = 6; i >= 0; i--)
        tail = tail * z + fitted::atanh_tail[i];
    return double(e) * ln2 + 2 * (s + s * (z * tail));
}

// e^x for |x| <= 700.
static double moderate_exp(double x) {
    const double rounder = 6755399441055744.0; // leaves the nearest whole number in the low bits
    const double n = (x * (1 / ln2) + rounder) - rounder;
    const double r = (x - n * 0.69314718036912382) - n * 1.9082149292705877e-10;
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

static bool is_whole(float y) {
    return fabsf(y) >= 8388608.0f || float(s32(y)) == y;
}

static bool is_odd(float y) {
    return fabsf(y) < 16777216.0f && s32(y) % 2 != 0;
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

    // Below 0 there are whole powers only; the odd ones keep the sign, that of -0 too.
    const bool negative = std::signbit(x);
    if (negative && x != 0 && x > -infinity && !is_whole(y))
        return not_a_number;
    const float sign = negative && is_whole(y) && is_odd(y) ? -1.0f : 1.0f;
    const float size = fabsf(x);
    if (size == 0 || std::isinf(size))
        return sign * ((size == 0) == (y > 0) ? 0 : infinity);

    const double exponent = double(y) * positive_log(size);
    if (exponent > 89)
        return sign * infinity;
    if (exponent < -104)
        return sign * 0;
    return sign * float(moderate_exp(exponent));
}

} // namespace velmora
