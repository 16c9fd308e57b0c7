// SPDX-License-Identifier: BSD-3-Clause

// Lists of numbers in arguments and attributes.
//
// Accuracy:  text from here reads back as the same numbers.
// Threads:   pure functions, independent of the locale.
#pragma once

#include <string>
#include <vector>

namespace velmora {

// Reads numbers separated by commas or blanks, all finite, in braces or not. False when any is not.
bool parse_numbers(const std::string& text, std::vector<double>& numbers);

// The shortest decimal text that reads back as the same number; with blanks between for several.
std::string shortest_text(double number);
std::string join_numbers(const std::vector<double>& numbers);

} // namespace velmora
