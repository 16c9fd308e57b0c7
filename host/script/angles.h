// SPDX-License-Identifier: BSD-3-Clause

// From degrees, in which the host gives angles, to the radians of the C library.
#pragma once

namespace velmora::host {

const double radians_per_degree = 0.017453292519943295;

} // namespace velmora::host
