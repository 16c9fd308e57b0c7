#include "stars/fast/batch.h"

#include <algorithm>
#include <cmath>

namespace velmora {

// About as many places as the nearest cache holds, in whole vectors.
static int stars_in_block(uword samples) {
    const int fitting = int(std::max<uword>(4096 / std::max<uword>(samples, 1), lane_padding));
    return std::min(256, fitting / lane_padding * lane_padding);
}

StarBlock::StarBlock(uword samples)
    : samples(samples), most(stars_in_block(samples)), count(0), stars(new star[uword(most)]),
      numbers(new double[7 * uword(most)]()), placed(new float[3 * samples * uword(most)]()),
      reaching(new float[uword(most)]()) {}

static double pixels_per_film(double pixels, double from, double to) {
    return pixels / (to - from);
}

bool StarBlock::can_decode(const View& view) {
    const op_stars_projection projection = view.data->projection;
    if (projection != OP_STARS_PERSPECTIVE && projection != OP_STARS_HEMISPHERICAL &&
        projection != OP_STARS_AZIMUTHAL_EQUIDISTANT)
        return false;
    const double x = pixels_per_film(view.width, view.data->left, view.data->right);
    const double y = pixels_per_film(view.height, view.data->bottom, view.data->top);
    return view.width > 0 && view.height > 0 && std::isnormal(x) && std::isnormal(y) &&
           std::fabs(x) < 1e100 && std::fabs(y) < 1e100;
}

void StarBlock::decode(const LaneKernels& kernels, const View& view) {
    const StarRendererData& data = *view.data;
    double* const columns = numbers.get();
    double *const ra = columns, *const dec = ra + most, *const distance = dec + most;
    double *const x = distance + most, *const y = x + most, *const z = y + most,
                  *const w = z + most;

    // Directions.
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
            continue;
        const uword before = sample == 0 ? 0 : sample - 1;
        kernels.mark_reaching({count, places(before), places(sample), -view.reach_x,
                               float(view.width) + view.reach_x, -view.reach_y,
                               float(view.height) + view.reach_y, reaching.get()});
    }
}

} // namespace velmora
