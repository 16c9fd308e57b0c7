// SPDX-License-Identifier: BSD-3-Clause

// Sixteen floats or eight doubles at a time, with AVX-512; the same operations as in lanes_sse2.h.
//
// Shapes:    F is four pixels of four interleaved floats, or as many floats in a row; D is half of
//            that many doubles. M and MD are what their comparisons give.
// Accuracy:  every operation is rounded once, as IEEE 754 has it; none is fused.
// Threads:   pure functions over registers.
#pragma once

#include <immintrin.h>

namespace velmora {
namespace avx512_lanes {

typedef __m512 F;
typedef __m512d D;
typedef __mmask16 M;
typedef __mmask8 MD;

constexpr int float_lanes = 16;
constexpr int double_lanes = 8;
constexpr int pixels_per_vector = 4;

// ---- Floats ----------------------------------------------------------------------------------

static inline F all(float v) {
    return _mm512_set1_ps(v);
}
static inline F load(const float* p) {
    return _mm512_loadu_ps(p);
}
static inline void store(float* p, F v) {
    _mm512_storeu_ps(p, v);
}
// 0, 1, 2, …
static inline F lane_numbers() {
    return _mm512_setr_ps(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
// b when either is NaN.
static inline F larger(F a, F b) {
    return _mm512_max_ps(a, b);
}
static inline F smaller(F a, F b) {
    return _mm512_min_ps(a, b);
}
static inline F bits_and(F a, F b) {
    return _mm512_and_ps(a, b);
}
static inline F bits_or(F a, F b) {
    return _mm512_or_ps(a, b);
}
static inline M less(F a, F b) {
    return _mm512_cmp_ps_mask(a, b, _CMP_LT_OQ);
}
static inline M at_least(F a, F b) {
    return _mm512_cmp_ps_mask(a, b, _CMP_GE_OQ);
}
static inline M both(M a, M b) {
    return static_cast<M>(a & b);
}
static inline M either(M a, M b) {
    return static_cast<M>(a | b);
}
// Lanes of a that are not in b.
static inline M without(M a, M b) {
    return static_cast<M>(a & ~b);
}
// Lanes of `yes` where m is set, of `no` elsewhere.
static inline F select(M m, F yes, F no) {
    return _mm512_mask_blend_ps(m, no, yes);
}
static inline bool any(M m) {
    return m != 0;
}
// One bit per lane, the first lane's lowest.
static inline int mask_bits(M m) {
    return m;
}

static inline F add_to_exponent(F y, F n_bits) {
    return _mm512_castsi512_ps(_mm512_add_epi32(
        _mm512_castps_si512(y), _mm512_slli_epi32(_mm512_castps_si512(n_bits), 23)));
}

// ---- Interleaved pixels ----------------------------------------------------------------------

static inline int lane_of_pixel(int i) {
    return i % 4 * 4 + i / 4;
}
static inline F in_pixel_order(F v) {
    return _mm512_permutexvar_ps(
        _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), v);
}

template <int group>
static inline F spread(F v) {
    return _mm512_permute_ps(v, group * 0x55);
}

// The floats of the first `pixels` pixels.
static inline M floats_of(int pixels) {
    return static_cast<M>((1u << (4 * pixels)) - 1);
}
// Loads the first `count` pixels and touches no others; the rest is 0.
static inline F load_pixels(const float* p, int count) {
    return _mm512_maskz_loadu_ps(floats_of(count), p);
}
// Stores the first `count` pixels and touches no others.
static inline void store_pixels(float* p, F v, int count) {
    _mm512_mask_storeu_ps(p, floats_of(count), v);
}
// One color's four floats for every pixel of a vector.
static inline F color_floats(const float c[4]) {
    return _mm512_broadcast_f32x4(_mm_loadu_ps(c));
}
// Each pixel's first float in all four of its floats.
static inline F spread_first(F v) {
    return _mm512_permute_ps(v, 0);
}
// The first float of every pixel.
static inline M first_of_pixels() {
    return 0x1111;
}
static inline int pixels_in(M m) {
    return (m & 1) + (m >> 4 & 1) + (m >> 8 & 1) + (m >> 12 & 1);
}
static inline bool any_first(F v) {
    const __m512i bits = _mm512_castps_si512(v);
    return (_mm512_test_epi32_mask(bits, bits) & 0x1111) != 0;
}

// ---- Doubles ---------------------------------------------------------------------------------

static inline D all(double v) {
    return _mm512_set1_pd(v);
}
static inline D load(const double* p) {
    return _mm512_loadu_pd(p);
}
static inline void store(double* p, D v) {
    _mm512_storeu_pd(p, v);
}
static inline D larger(D a, D b) {
    return _mm512_max_pd(a, b);
}
static inline D root(D v) {
    return _mm512_sqrt_pd(v);
}
static inline D bits_and(D a, D b) {
    return _mm512_and_pd(a, b);
}
static inline D bits_xor(D a, D b) {
    return _mm512_xor_pd(a, b);
}
static inline MD less(D a, D b) {
    return _mm512_cmp_pd_mask(a, b, _CMP_LT_OQ);
}
static inline MD at_least(D a, D b) {
    return _mm512_cmp_pd_mask(a, b, _CMP_GE_OQ);
}
static inline MD differs(D a, D b) {
    return _mm512_cmp_pd_mask(a, b, _CMP_NEQ_UQ);
}
static inline MD both(MD a, MD b) {
    return static_cast<MD>(a & b);
}
static inline MD either(MD a, MD b) {
    return static_cast<MD>(a | b);
}
static inline D select(MD m, D yes, D no) {
    return _mm512_mask_blend_pd(m, no, yes);
}
static inline int mask_bits(MD m) {
    return m;
}

template <int count>
static inline D shift_left(D v) {
    return _mm512_castsi512_pd(_mm512_slli_epi64(_mm512_castpd_si512(v), count));
}
static inline D add_to_exponent(D y, D n_bits) {
    return _mm512_castsi512_pd(_mm512_add_epi64(
        _mm512_castpd_si512(y), _mm512_slli_epi64(_mm512_castpd_si512(n_bits), 52)));
}

// ---- Between the two -------------------------------------------------------------------------

// Two vectors of doubles as one of floats, in the order that in_pixel_order() takes.
static inline F narrowed(D low, D high) {
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(low)), _mm512_cvtpd_ps(high),
                              1);
}
static inline D widened_from(const float* p) {
    return _mm512_cvtps_pd(_mm256_loadu_ps(p));
}
static inline void store_narrowed(float* p, D v) {
    _mm256_storeu_ps(p, _mm512_cvtpd_ps(v));
}
static inline D float_product(D v, float factor) {
    return _mm512_cvtps_pd(_mm256_mul_ps(_mm512_cvtpd_ps(v), _mm256_set1_ps(factor)));
}

} // namespace avx512_lanes
} // namespace velmora
