// Logarithm and power of floats that come out the same on every machine: made of additions,
// products, quotients and moves of bits only, without the C library, whose functions may take
// another way on another processor.
//
// Accuracy:  worked out in double and rounded once: within 0.501 last bits of a float.
// Threads:   pure functions.
#pragma once

namespace velmora {

// The natural logarithm; -infinity of 0, not a number below.
float steady_log(float x);

// x to the power y, with every special case that C's powf has.
float steady_pow(float x, float y);

} // namespace velmora
