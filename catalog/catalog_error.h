// What is wrong with a catalogue or a star database: where, and why.
#pragma once

#include "core/quoted.h"

#include <stdexcept>
#include <string>

namespace velmora {

// what() is "<where>: <why>", printable; `where` and `why` are as they were given.
class CatalogError : public std::runtime_error {
public:
    const std::string where; // the file's path, with ", line N" when one line is meant
    const std::string why;

    CatalogError(const std::string& where, const std::string& why)
        : std::runtime_error(printable(where + ": " + why)), where(where), why(why) {}
};

} // namespace velmora
