// SPDX-License-Identifier: BSD-3-Clause

// An error in what comes from outside, such as a file: where, and why.
//
// Each kind of input has an exception of its own, derived from this one:
//
//     class ChanError : public TextError {
//     public:
//         using TextError::TextError;
//     };
//
// Shapes:    what() is "<where>: <why>", made printable; `where` and `why` keep their bytes.
#pragma once

#include "text/quoted.h"

#include <stdexcept>
#include <string>

namespace velmora {

class TextError : public std::runtime_error {
public:
    const std::string where; // a file, perhaps with a line: the formats differ in how they write it
    const std::string why;

    TextError(const std::string& where, const std::string& why)
        : std::runtime_error(printable(where + ": " + why)), where(where), why(why) {}
};

} // namespace velmora
