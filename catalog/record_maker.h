// SPDX-License-Identifier: BSD-3-Clause

// From what a catalogue says about a star to its record in a database.
//
// Units:     see catalog/reader.h and stars/starfile.h; distances in parsec.
// Errors:    none.
// Threads:   pure functions of their arguments.
#pragma once

#include "catalog/reader.h"
#include "stars/starfile.h"

#include <optional>

namespace velmora {

// A parallax whose standard error is this part of it or more gives no distance: the inverse of so
// noisy a number is biased.
const double largest_parallax_error = 0.2;

// 1000 / plx, or 0 for unknown, unless the parallax is above 0 and known well enough. A missing
// standard error is taken to be small.
double distance_of_parallax(std::optional<double> plx, std::optional<double> e_plx);

// The star's record: flux from vmag, colour from bv (white without it), distance from plx and
// e_plx.
star record_of(const CatalogStar& row);

} // namespace velmora
