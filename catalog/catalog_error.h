// SPDX-License-Identifier: BSD-3-Clause

// What is wrong with a catalogue or a star database: where, and why. `where` is the file's path,
// with ", line N" when one line is meant.
#pragma once

#include "text/text_error.h"

namespace velmora {

class CatalogError : public TextError {
public:
    using TextError::TextError;
};

} // namespace velmora
