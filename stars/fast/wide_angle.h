// SPDX-License-Identifier: BSD-3-Clause

// Reduces angles of so many turns that a double's pi is not exact enough.
//
// Units:     radians.
// Accuracy:  the rest to 2e-16 of itself. The same on every machine.
// Threads:   a pure function.
#pragma once

namespace velmora {

// Splits an angle into quarter turns and a rest: angle = (quarters + 4 n) * pi / 2 + rest with
// |rest| <= pi / 4. Infinities and NaN give a NaN rest. REQUIRES: a float's value, at least 8.
void split_wide_angle(double angle, double& quarters, double& rest);

} // namespace velmora
