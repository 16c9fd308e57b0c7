// Numbers from text, whole or not at all and whatever the locale.
#pragma once

#include <string_view>

namespace velmora {

// Reads all of `text` as a decimal number, with an optional sign, fraction and exponent. Also takes
// "inf" and "nan"; out of range fails. On failure `value` is left alone.
bool parse_number(std::string_view text, double& value);
bool parse_number(std::string_view text, int& value);

} // namespace velmora
