// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/batch.h"

#include <algorithm>
#include <cmath>

namespace velmora {

static const int most_stars = 256;              // of which 32-byte records take 8 KiB
static const uword places_in_cache = 4096;      // of 12 bytes: more leave the nearest cache
static const double largest_film_scale = 1e100; // pixels per film unit; products stay finite

// As many stars as have their places in the nearest cache, in whole vectors.
static int stars_in_batch(uword samples) {
    const uword fitting = places_in_cache / std::max<uword>(samples, 1);
    const int whole = int(std::max<uword>(fitting, lane_padding)) / lane_padding * lane_padding;
    return std::min(most_stars, whole);
}

StarBatch::StarBatch(uword samples)
    : samples(samples), most(stars_in_batch(samples)), count(0), stars(new star[uword(most)]),
      numbers(new double[7 * uword(most)]()), placed(new float[3 * samples * uword(most)]()),
      reaching(new float[uword(most)]()) {}

void StarBatch::fill(KeptStars& input) {
    count = 0;
    input.fill(stars.get(), count, most);
}

static double pixels_per_film(double pixels, double from, double to) {
    return pixels / (to - from);
}

bool StarBatch::can_place(const StarRendererData& data, int width, int height) {
    if (data.projection != OP_STARS_PERSPECTIVE && data.projection != OP_STARS_HEMISPHERICAL &&
        data.projection != OP_STARS_AZIMUTHAL_EQUIDISTANT)
        return false;
    const double x = pixels_per_film(width, data.left, data.right);
    const double y = pixels_per_film(height, data.bottom, data.top);
    return width > 0 && height > 0 && std::isnormal(x) && std::isnormal(y) &&
           std::fabs(x) < largest_film_scale && std::fabs(y) < largest_film_scale;
}

void StarBatch::find_places(const LaneKernels& kernels, const View& view) {
    const StarRendererData& data = *view.data;
    double* const columns = numbers.get();
    double *const ra = columns, *const dec = ra + most, *const distance = dec + most;
    double *const x = distance + most, *const y = x + most, *const z = y + most,
                  *const w = z + most;

    // Direction and inverse distance.
    for (int i = 0; i < count; i++) {
        ra[i] = stars[uword(i)].ra;
        dec[i] = stars[uword(i)].dec;
        distance[i] = stars[uword(i)].distance;
        reaching[uword(i)] = 0;
    }
    kernels.find_directions(
        {count, ra, dec, distance, view.has_distances, data.parallax * 0.01, x, y, z, w});

    // Places, sample by sample, and which segments between them reach the image.
    for (uword sample = 0; sample < samples; sample++) {
        kernels.project({count, x, y, z, w, (*view.matrices)[sample].e, data.projection, data.left,
                         data.top, pixels_per_film(view.width, data.left, data.right),
                         pixels_per_film(view.height, data.bottom, data.top), places(sample)});
        if (sample == 0 && samples > 1)
            continue; // the first segment ends at sample 1
        const uword before = sample == 0 ? 0 : sample - 1;
        kernels.mark_reaching({count, places(before), places(sample), -view.reach_x,
                               float(view.width) + view.reach_x, -view.reach_y,
                               float(view.height) + view.reach_y, reaching.get()});
    }
}

} // namespace velmora
