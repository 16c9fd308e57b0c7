// SPDX-License-Identifier: BSD-3-Clause

// Warnings about framing mistakes that only show in the picture.
//
// Errors:    none: a note that cannot be written is lost.
#pragma once

#include "tools/comp/view.h"

namespace velmora {

// Writes a note to standard error when the film window stretches the sky, or when the disc of a disc
// projection takes up little of the image.
void say_notes(const View& view);

} // namespace velmora
