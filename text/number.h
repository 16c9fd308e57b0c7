// SPDX-License-Identifier: BSD-3-Clause

// Numbers in text from outside, read whole or not at all, and written.
//
// Shapes:    decimal digits with an optional sign, fraction and exponent, nothing before or after;
//            "inf" and "nan" in their usual spellings, where they are not refused by name.
// Errors:    the result says whether the text was a number; if not, `value` keeps what it held.
// Accuracy:  the nearest double. Text from number_text() reads back as the same number.
// Threads:   pure functions, independent of the locale.
#pragma once

#include <string>
#include <string_view>

namespace velmora {

// Fails on numbers too large for a double, and on those so small that only 0 would be left.
bool parse_number(std::string_view text, double& value);

// A whole number.
bool parse_number(std::string_view text, int& value);

// A whole number in [0, largest], without a sign.
bool parse_count(std::string_view text, int largest, int& value);

enum class NumberFault { none, not_a_number, out_of_range, not_finite };

// For messages that give the reason: like parse_number, but refuses infinity and "nan".
NumberFault parse_finite(std::string_view text, double& value);

// What follows the quoted text in a message, such as "is not a number"; `fault` is not `none`.
const char* reason_of(NumberFault fault);

// The shortest text for a finite number.
std::string number_text(double number);

} // namespace velmora
