// SPDX-License-Identifier: BSD-3-Clause

// Four floats or two doubles at a time, with what every x86-64 processor has.
//
// Shapes:    F is one pixel of four interleaved floats, or four floats in a row; D is half of that
//            many doubles. M and MD are what their comparisons give.
// Accuracy:  every operation is rounded once, as IEEE 754 has it; none is fused.
// Threads:   pure functions over registers.
#pragma once

#include <emmintrin.h>

namespace velmora {
namespace sse2_lanes {

typedef __m128 F;
typedef __m128d D;
typedef __m128 M;
typedef __m128d MD;

constexpr int float_lanes = 4;
constexpr int double_lanes = 2;
constexpr int pixels_per_vector = 1;

// ---- Floats ----------------------------------------------------------------------------------

// v in every lane.
static inline F all(float v) {
    return _mm_set1_ps(v);
}
static inline F load(const float* p) {
    return _mm_loadu_ps(p);
}
static inline void store(float* p, F v) {
    _mm_storeu_ps(p, v);
}
// 0, 1, 2, …
static inline F lane_numbers() {
    return _mm_setr_ps(0, 1, 2, 3);
}

// b when either is NaN.
static inline F larger(F a, F b) {
    return _mm_max_ps(a, b);
}
static inline F smaller(F a, F b) {
    return _mm_min_ps(a, b);
}

static inline F bits_and(F a, F b) {
    return _mm_and_ps(a, b);
}
static inline F bits_or(F a, F b) {
    return _mm_or_ps(a, b);
}
static inline M less(F a, F b) {
    return _mm_cmplt_ps(a, b);
}
static inline M at_least(F a, F b) {
    return _mm_cmpge_ps(a, b);
}
static inline M both(M a, M b) {
    return _mm_and_ps(a, b);
}
static inline M either(M a, M b) {
    return _mm_or_ps(a, b);
}
// Lanes of a that are not in b.
static inline M without(M a, M b) {
    return _mm_andnot_ps(b, a);
}
// Lanes of `yes` where m is set, of `no` elsewhere.
static inline F select(M m, F yes, F no) {
    return _mm_or_ps(_mm_and_ps(m, yes), _mm_andnot_ps(m, no));
}
static inline bool any(M m) {
    return _mm_movemask_ps(m) != 0;
}
// One bit per lane, the first lane's lowest.
static inline int mask_bits(M m) {
    return _mm_movemask_ps(m);
}

// y * 2^n, where n is in the low bits of `n_bits`: added to y's exponent. REQUIRES: the result is a
// normal number.
static inline F add_to_exponent(F y, F n_bits) {
    return _mm_castsi128_ps(
        _mm_add_epi32(_mm_castps_si128(y), _mm_slli_epi32(_mm_castps_si128(n_bits), 23)));
}

// ---- Interleaved pixels ----------------------------------------------------------------------

// Values in the order of their pixels to the order that spread() takes: pixel i in lane
// lane_of_pixel(i).
static inline int lane_of_pixel(int i) {
    return i;
}
static inline F in_pixel_order(F v) {
    return v;
}

// From that order, the value of pixel `group * pixels_per_vector + i` in all four floats of pixel
// i.
template <int group>
static inline F spread(F v) {
    return _mm_shuffle_ps(v, v, group * 0x55);
}

// The floats of the first `pixels` pixels of a vector; wider levels than this one need the number.
static inline M floats_of(int) {
    return _mm_castsi128_ps(_mm_set1_epi32(-1));
}
static inline F load_pixels(const float* p, int) {
    return _mm_loadu_ps(p);
}
static inline void store_pixels(float* p, F v, int) {
    _mm_storeu_ps(p, v);
}
// One color's four floats for every pixel of a vector.
static inline F color_floats(const float c[4]) {
    return _mm_loadu_ps(c);
}
// Each pixel's first float in all four of its floats.
static inline F spread_first(F v) {
    return _mm_shuffle_ps(v, v, 0);
}
// The first float of every pixel.
static inline M first_of_pixels() {
    return _mm_castsi128_ps(_mm_setr_epi32(-1, 0, 0, 0));
}

// How many pixels have their first float in the mask.
static inline int pixels_in(M m) {
    return _mm_movemask_ps(m) & 1;
}

// Whether the first float of any pixel has a bit set.
static inline bool any_first(F v) {
    const __m128i zero = _mm_cmpeq_epi32(_mm_castps_si128(v), _mm_setzero_si128());
    return (_mm_movemask_epi8(zero) & 15) != 15;
}

// ---- Doubles ---------------------------------------------------------------------------------

static inline D all(double v) {
    return _mm_set1_pd(v);
}
static inline D load(const double* p) {
    return _mm_loadu_pd(p);
}
static inline void store(double* p, D v) {
    _mm_storeu_pd(p, v);
}
static inline D larger(D a, D b) {
    return _mm_max_pd(a, b);
}
static inline D root(D v) {
    return _mm_sqrt_pd(v);
}
static inline D bits_and(D a, D b) {
    return _mm_and_pd(a, b);
}
static inline D bits_xor(D a, D b) {
    return _mm_xor_pd(a, b);
}
static inline MD less(D a, D b) {
    return _mm_cmplt_pd(a, b);
}
static inline MD at_least(D a, D b) {
    return _mm_cmpge_pd(a, b);
}
static inline MD differs(D a, D b) {
    return _mm_cmpneq_pd(a, b);
}
static inline MD both(MD a, MD b) {
    return _mm_and_pd(a, b);
}
static inline MD either(MD a, MD b) {
    return _mm_or_pd(a, b);
}
static inline D select(MD m, D yes, D no) {
    return _mm_or_pd(_mm_and_pd(m, yes), _mm_andnot_pd(m, no));
}
static inline int mask_bits(MD m) {
    return _mm_movemask_pd(m);
}

template <int count>
static inline D shift_left(D v) {
    return _mm_castsi128_pd(_mm_slli_epi64(_mm_castpd_si128(v), count));
}
static inline D add_to_exponent(D y, D n_bits) {
    return _mm_castsi128_pd(
        _mm_add_epi64(_mm_castpd_si128(y), _mm_slli_epi64(_mm_castpd_si128(n_bits), 52)));
}

// ---- Between the two -------------------------------------------------------------------------

// Two vectors of doubles as one of floats, in the order that in_pixel_order() takes.
static inline F narrowed(D low, D high) {
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
}
static inline D widened_from(const float* p) {
    return _mm_cvtps_pd(_mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p)));
}
static inline void store_narrowed(float* p, D v) {
    _mm_storel_pi(reinterpret_cast<__m64*>(p), _mm_cvtpd_ps(v));
}

// v narrowed, times a float, widened again.
static inline D float_product(D v, float factor) {
    return _mm_cvtps_pd(_mm_mul_ps(_mm_cvtpd_ps(v), _mm_set1_ps(factor)));
}

} // namespace sse2_lanes
} // namespace velmora
