// What a user would otherwise only find by wondering at the picture.
#pragma once

#include "tools/comp/view.h"

namespace velmora {

// Says on standard error when the film window stretches the sky, or when the disc of a disc
// projection takes up little of the image.
void say_notes(const View& view);

} // namespace velmora
