// Angles of more turns than a double can be reduced by directly.
#pragma once

namespace velmora {

// Splits an angle of 8 or more radians, which must be a float's value, into quarter turns and what
// remains: angle = (quarters + 4 n) * pi / 2 + rest, |rest| <= pi / 4. Infinities and what is no
// number leave a rest that is none.
//
// Accuracy:  the rest to 2e-16 of itself. The same on every machine.
void split_wide_angle(double angle, double& quarters, double& rest);

} // namespace velmora
