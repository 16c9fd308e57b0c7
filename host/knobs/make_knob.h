// From a knob's declaration to the knob.
#pragma once

#include "host/knobs/host_knob.h"
#include "host/runtime/project.h"

#include <memory>
#include <vector>

namespace velmora::host {

// The knob that `spec` declares, with the value that the op has behind the pointer, and behind it
// the knobs that are its parts.
std::vector<std::unique_ptr<HostKnob>> make_knobs(const DD::Image::KnobSpec& spec,
                                                  const Project& project);

} // namespace velmora::host
