// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/notes.h"

#include "stars/film.h"
#include "tools/say.h"

#include <cmath>
#include <cstdio>

namespace velmora {

static const double smallest_disc = 0.25;   // of the image's height
static const double largest_stretch = 0.01; // of square pixels

// The disc of a disc projection is two film units high.
static void note_small_disc(const View& view) {
    const double disc = 2 / (view.data.top - view.data.bottom);
    if (view.data.projection == OP_STARS_PERSPECTIVE || disc >= smallest_disc)
        return;
    const bool hemispherical = view.data.projection == OP_STARS_HEMISPHERICAL;
    say(std::string("note: the ") + (hemispherical ? "Hemispherical" : "Azimuthal Equidistant") +
        " disc takes up " + std::to_string(std::lround(disc * view.height)) + " of the image's " +
        std::to_string(view.height) + " rows with these apertures: --no-camera fits it");
}

// The window keeps its width, so another height gives square pixels.
static void note_stretch(const View& view) {
    const double stretch = film_stretch(view.data, view.width, view.height);
    if (std::fabs(stretch - 1) <= largest_stretch)
        return;
    char fitting[32];
    snprintf(fitting, sizeof fitting, "%.6g",
             (view.data.right - view.data.left) * view.height / view.width);
    say("note: the apertures' shape is not the image's, so the sky is stretched: --vaperture " +
        std::string(fitting) + " gives square pixels");
}

void say_notes(const View& view) {
    note_small_disc(view);
    note_stretch(view);
}

} // namespace velmora
