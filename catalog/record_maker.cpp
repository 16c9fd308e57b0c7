// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/record_maker.h"

#include "catalog/photometry.h"

#include <cmath>

namespace velmora {

// The parallax must be positive and known well enough, and its inverse finite.
double distance_of_parallax(std::optional<double> plx, std::optional<double> e_plx) {
    if (!plx || !(*plx > 0) || (e_plx && *e_plx / *plx >= largest_parallax_error))
        return 0;
    const double distance = 1000 / *plx;
    return std::isfinite(distance) ? distance : 0;
}

star record_of(const CatalogStar& row) {
    // Photometry gives the flux and the colour, the parallax the distance; places are taken over.
    const ColorBytes color = row.bv ? color_of_bv(*row.bv) : unknown_color;
    star record;
    record.ra = row.ra;
    record.dec = row.dec;
    record.flux = float(flux_of_magnitude(row.vmag));
    record.red = color.red;
    record.green = color.green;
    record.blue = color.blue;
    record.reserved = 0;
    record.distance = distance_of_parallax(row.plx, row.e_plx);
    return record;
}

} // namespace velmora
