// SPDX-License-Identifier: BSD-3-Clause

// Makes the knob that a declaration describes.
//
// Ownership: the caller's; a knob of a format borrows the project.
#pragma once

#include "host/knobs/host_knob.h"
#include "host/runtime/project.h"

#include <memory>
#include <vector>

namespace velmora::host {

// The knob that `spec` declares, with the op's own value, followed by the knobs that are its parts.
std::vector<std::unique_ptr<HostKnob>> make_knobs(const DD::Image::KnobSpec& spec,
                                                  const Project& project);

} // namespace velmora::host
