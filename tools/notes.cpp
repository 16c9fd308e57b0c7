#include "tools/notes.h"

#include "stars/setup.h"
#include "tools/failure.h"

#include <cmath>
#include <cstdio>

namespace velmora {

static const double smallest_disc = 0.25;   // of the image's height
static const double largest_stretch = 0.01; // of square pixels

static void note_small_disc(const KnobValues& knobs, const StarRendererData& data) {
    const double disc = 2 / (data.top - data.bottom);
    if (projection_of_index(knobs.projection) == OP_STARS_PERSPECTIVE || disc >= smallest_disc)
        return;
    say("note: the " + std::string(projection_names[std::size_t(knobs.projection)]) +
        " disc takes up " + std::to_string(std::lround(disc * knobs.format.height)) +
        " of the image's " + std::to_string(knobs.format.height) +
        " rows with these apertures: --no-camera fits it");
}

static void note_stretch(const KnobValues& knobs, const StarRendererData& data) {
    const double stretch = film_stretch(data, knobs.format.width, knobs.format.height);
    if (std::fabs(stretch - 1) <= largest_stretch)
        return;
    char fitting[32];
    snprintf(fitting, sizeof fitting, "%.6g",
             (data.right - data.left) * knobs.format.height / knobs.format.width);
    say("note: the apertures' shape is not the image's, so the sky is stretched: --vaperture " +
        std::string(fitting) + " gives square pixels");
}

void say_notes(const KnobValues& knobs, const Shot& shot) {
    StarRendererData data;
    shot.set_window(knobs, data);
    note_small_disc(knobs, data);
    note_stretch(knobs, data);
}

} // namespace velmora
