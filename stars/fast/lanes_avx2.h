// SPDX-License-Identifier: BSD-3-Clause

// Eight floats or four doubles at a time, with AVX2; the same operations as in lanes_sse2.h.
//
// Shapes:    F is two pixels of four interleaved floats, or as many floats in a row; D is half of
//            that many doubles. M and MD are what their comparisons give.
// Accuracy:  every operation is rounded once, as IEEE 754 has it; none is fused.
// Threads:   pure functions over registers.
#pragma once

#include <immintrin.h>

namespace velmora {
namespace avx2_lanes {

typedef __m256 F;
typedef __m256d D;
typedef __m256 M;
typedef __m256d MD;

constexpr int float_lanes = 8;
constexpr int double_lanes = 4;
constexpr int pixels_per_vector = 2;

// ---- Floats ----------------------------------------------------------------------------------

static inline F all(float v) {
    return _mm256_set1_ps(v);
}
static inline F load(const float* p) {
    return _mm256_loadu_ps(p);
}
static inline void store(float* p, F v) {
    _mm256_storeu_ps(p, v);
}
// 0, 1, 2, …
static inline F lane_numbers() {
    return _mm256_setr_ps(0, 1, 2, 3, 4, 5, 6, 7);
}
// b when either is NaN.
static inline F larger(F a, F b) {
    return _mm256_max_ps(a, b);
}
static inline F smaller(F a, F b) {
    return _mm256_min_ps(a, b);
}
static inline F bits_and(F a, F b) {
    return _mm256_and_ps(a, b);
}
static inline F bits_or(F a, F b) {
    return _mm256_or_ps(a, b);
}
static inline M less(F a, F b) {
    return _mm256_cmp_ps(a, b, _CMP_LT_OQ);
}
static inline M at_least(F a, F b) {
    return _mm256_cmp_ps(a, b, _CMP_GE_OQ);
}
static inline M both(M a, M b) {
    return _mm256_and_ps(a, b);
}
static inline M either(M a, M b) {
    return _mm256_or_ps(a, b);
}
// Lanes of a that are not in b.
static inline M without(M a, M b) {
    return _mm256_andnot_ps(b, a);
}
// Lanes of `yes` where m is set, of `no` elsewhere.
static inline F select(M m, F yes, F no) {
    return _mm256_blendv_ps(no, yes, m);
}
static inline bool any(M m) {
    return _mm256_movemask_ps(m) != 0;
}
// One bit per lane, the first lane's lowest.
static inline int mask_bits(M m) {
    return _mm256_movemask_ps(m);
}

static inline F add_to_exponent(F y, F n_bits) {
    return _mm256_castsi256_ps(_mm256_add_epi32(
        _mm256_castps_si256(y), _mm256_slli_epi32(_mm256_castps_si256(n_bits), 23)));
}

// ---- Interleaved pixels ----------------------------------------------------------------------

static inline int lane_of_pixel(int i) {
    return i % 2 * 4 + i / 2;
}
static inline F in_pixel_order(F v) {
    return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
}

template <int group>
static inline F spread(F v) {
    return _mm256_permute_ps(v, group * 0x55);
}

// The floats of the first `pixels` pixels.
static inline M floats_of(int pixels) {
    const int second = pixels == 2 ? -1 : 0;
    return _mm256_castsi256_ps(_mm256_setr_epi32(-1, -1, -1, -1, second, second, second, second));
}
// Loads the first `count` pixels and touches no others; the rest is 0.
static inline F load_pixels(const float* p, int count) {
    return count == 2 ? _mm256_loadu_ps(p)
                      : _mm256_insertf128_ps(_mm256_setzero_ps(), _mm_loadu_ps(p), 0);
}
// Stores the first `count` pixels and touches no others.
static inline void store_pixels(float* p, F v, int count) {
    if (count == 2)
        _mm256_storeu_ps(p, v);
    else
        _mm_storeu_ps(p, _mm256_castps256_ps128(v));
}
// One color's four floats for every pixel of a vector.
static inline F color_floats(const float c[4]) {
    return _mm256_broadcast_ps(reinterpret_cast<const __m128*>(c));
}
// Each pixel's first float in all four of its floats.
static inline F spread_first(F v) {
    return _mm256_permute_ps(v, 0);
}
// The first float of every pixel.
static inline M first_of_pixels() {
    return _mm256_castsi256_ps(_mm256_setr_epi32(-1, 0, 0, 0, -1, 0, 0, 0));
}
static inline int pixels_in(M m) {
    const int bits = _mm256_movemask_ps(m);
    return (bits & 1) + (bits >> 4 & 1);
}
static inline bool any_first(F v) {
    return !_mm256_testz_si256(_mm256_castps_si256(v), _mm256_castps_si256(first_of_pixels()));
}

// ---- Doubles ---------------------------------------------------------------------------------

static inline D all(double v) {
    return _mm256_set1_pd(v);
}
static inline D load(const double* p) {
    return _mm256_loadu_pd(p);
}
static inline void store(double* p, D v) {
    _mm256_storeu_pd(p, v);
}
static inline D larger(D a, D b) {
    return _mm256_max_pd(a, b);
}
static inline D root(D v) {
    return _mm256_sqrt_pd(v);
}
static inline D bits_and(D a, D b) {
    return _mm256_and_pd(a, b);
}
static inline D bits_xor(D a, D b) {
    return _mm256_xor_pd(a, b);
}
static inline MD less(D a, D b) {
    return _mm256_cmp_pd(a, b, _CMP_LT_OQ);
}
static inline MD at_least(D a, D b) {
    return _mm256_cmp_pd(a, b, _CMP_GE_OQ);
}
static inline MD differs(D a, D b) {
    return _mm256_cmp_pd(a, b, _CMP_NEQ_UQ);
}
static inline MD both(MD a, MD b) {
    return _mm256_and_pd(a, b);
}
static inline MD either(MD a, MD b) {
    return _mm256_or_pd(a, b);
}
static inline D select(MD m, D yes, D no) {
    return _mm256_blendv_pd(no, yes, m);
}
static inline int mask_bits(MD m) {
    return _mm256_movemask_pd(m);
}

template <int count>
static inline D shift_left(D v) {
    return _mm256_castsi256_pd(_mm256_slli_epi64(_mm256_castpd_si256(v), count));
}
static inline D add_to_exponent(D y, D n_bits) {
    return _mm256_castsi256_pd(_mm256_add_epi64(
        _mm256_castpd_si256(y), _mm256_slli_epi64(_mm256_castpd_si256(n_bits), 52)));
}

// ---- Between the two -------------------------------------------------------------------------

// Two vectors of doubles as one of floats, in the order that in_pixel_order() takes.
static inline F narrowed(D low, D high) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(low)), _mm256_cvtpd_ps(high),
                                1);
}
static inline D widened_from(const float* p) {
    return _mm256_cvtps_pd(_mm_loadu_ps(p));
}
static inline void store_narrowed(float* p, D v) {
    _mm_storeu_ps(p, _mm256_cvtpd_ps(v));
}
static inline D float_product(D v, float factor) {
    return _mm256_cvtps_pd(_mm_mul_ps(_mm256_cvtpd_ps(v), _mm_set1_ps(factor)));
}

} // namespace avx2_lanes
} // namespace velmora
