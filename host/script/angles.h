// Angles as the host gives them, in degrees, and as the mathematics library takes them.
#pragma once

namespace velmora::host {

const double radians_per_degree = 0.017453292519943295;

} // namespace velmora::host
