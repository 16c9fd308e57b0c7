// SPDX-License-Identifier: BSD-3-Clause

// Whole renders of small skies into pictures.
#pragma once

#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

namespace stars_test {

// Draws every star of `input`; returns whether light got into a pixel.
inline bool render(const StarRendererData& data, StarInput& input, const std::vector<camera>& list,
                   Picture& picture) {
    const Array<camera> cams = cameras(list);
    bool drew = false;
    StarRenderer(data, picture.fb, input, cams).render_all(drew);
    return drew;
}

// The same for one camera at rest.
inline bool render(const StarRendererData& data, const std::vector<star>& stars, Picture& picture) {
    CountingInput input(stars);
    return render(data, input, {make_camera()}, picture);
}

} // namespace stars_test
