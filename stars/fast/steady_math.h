// SPDX-License-Identifier: BSD-3-Clause

// Logarithm and power of floats, the same on every machine: they consist of sums, products,
// quotients and moves of bits, without the C library, whose functions may differ between processors.
//
// Accuracy:  computed in double and rounded once: within 0.501 last bits of a float.
// Threads:   pure functions.
#pragma once

namespace velmora {

// The natural logarithm; -infinity for 0, NaN for negative numbers.
float steady_log(float x);

// x to the power y, with every special case that C's powf has.
float steady_pow(float x, float y);

} // namespace velmora
