// SPDX-License-Identifier: BSD-3-Clause

// Infinity and NaN under one name each: a test takes those of its type.
//
//     using namespace velmora_test::doubles;
//     EXPECT_FALSE(is_valid(-infinity) || is_valid(not_a_number));
#pragma once

#include <limits>

namespace velmora_test {

namespace floats {
inline constexpr float infinity = std::numeric_limits<float>::infinity();
inline constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();
} // namespace floats

namespace doubles {
inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
} // namespace doubles

} // namespace velmora_test
