// Numbers from text, whole or not at all and whatever the locale.
#pragma once

#include "core/types.h"

#include <string_view>

namespace velmora {

// Reads all of `text` as a decimal number, with an optional sign, fraction and exponent, or as
// "inf" or "nan" in their usual spellings. What a double cannot hold fails, as does what it could
// only hold as 0. On failure `value` is left alone.
bool parse_number(std::string_view text, double& value);

// Reads all of `text` as a whole number with an optional sign.
bool parse_number(std::string_view text, int& value);

} // namespace velmora
