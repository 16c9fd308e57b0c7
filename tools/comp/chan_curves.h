// SPDX-License-Identifier: BSD-3-Clause

// The moves of a .chan file as values of a camera's knobs: a key on each of the file's frames, with
// straight lines between.
#pragma once

#include "host/script/chan.h"
#include "host/script/script_text.h"

namespace velmora {

host::ScriptValue translate_curves(const host::Chan& chan);
host::ScriptValue rotate_curves(const host::Chan& chan);

// The focal length, in the aperture's unit. The file must have fields of view.
host::ScriptValue focal_curve(const host::Chan& chan, double vertical_aperture);

} // namespace velmora
