// SPDX-License-Identifier: BSD-3-Clause
#include "tools/numbers.h"

#include "text/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace velmora {

bool parse_numbers(const std::string& text, std::vector<double>& numbers) {
    std::string_view rest = text;
    // Braces, as scripts have them, may enclose the list.
    if (rest.size() >= 2 && rest.front() == '{' && rest.back() == '}')
        rest = rest.substr(1, rest.size() - 2);

    // Words between separators, each a number by itself.
    const char* const separators = ", \t";
    while (!rest.empty()) {
        const std::size_t start = rest.find_first_not_of(separators);
        if (start == std::string_view::npos)
            break;
        const std::size_t end = std::min(rest.find_first_of(separators, start), rest.size());
        double number;
        if (!parse_number(rest.substr(start, end - start), number) || !std::isfinite(number))
            return false;
        numbers.push_back(number);
        rest.remove_prefix(end);
    }
    return true;
}

std::string shortest_text(double number) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, number, std::chars_format::general);
    return {text, result.ptr};
}

std::string join_numbers(const std::vector<double>& numbers) {
    std::string joined;
    for (const double number : numbers)
        joined += (joined.empty() ? "" : " ") + shortest_text(number);
    return joined;
}

} // namespace velmora
