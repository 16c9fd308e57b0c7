#include "core/number.h"

#include <charconv>

namespace velmora {

template <class Number>
static bool parse_whole(std::string_view text, Number& value) {
    // from_chars takes a minus sign only.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    Number parsed;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, parsed);
    if (result.ec != std::errc() || result.ptr != end)
        return false;
    value = parsed;
    return true;
}

bool parse_number(std::string_view text, double& value) {
    return parse_whole(text, value);
}

bool parse_number(std::string_view text, int& value) {
    return parse_whole(text, value);
}

} // namespace velmora
