// SPDX-License-Identifier: BSD-3-Clause
#include "text/number.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace velmora {

// Reads all of `text`, as from_chars does; on failure `value` is unchanged.
template <class Number>
static NumberFault parse_whole(std::string_view text, Number& value) {
    // from_chars takes a minus sign only.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    Number parsed;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, parsed);
    if (result.ec == std::errc::invalid_argument || result.ptr != end)
        return NumberFault::not_a_number;
    if (result.ec != std::errc())
        return NumberFault::out_of_range;
    value = parsed;
    return NumberFault::none;
}

bool parse_number(std::string_view text, double& value) {
    return parse_whole(text, value) == NumberFault::none;
}

bool parse_number(std::string_view text, int& value) {
    return parse_whole(text, value) == NumberFault::none;
}

bool parse_count(std::string_view text, int largest, int& value) {
    const bool has_sign = !text.empty() && (text[0] == '+' || text[0] == '-');
    int parsed;
    if (has_sign || !parse_number(text, parsed) || parsed > largest)
        return false;
    value = parsed;
    return true;
}

NumberFault parse_finite(std::string_view text, double& value) {
    double parsed;
    const NumberFault fault = parse_whole(text, parsed);
    if (fault != NumberFault::none)
        return fault;
    if (!std::isfinite(parsed))
        return NumberFault::not_finite;
    value = parsed;
    return NumberFault::none;
}

const char* reason_of(NumberFault fault) {
    switch (fault) {
    case NumberFault::out_of_range:
        return "is out of range";
    case NumberFault::not_finite:
        return "is not a finite number";
    default:
        return "is not a number";
    }
}

std::string number_text(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

} // namespace velmora
