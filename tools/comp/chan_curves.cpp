// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/chan_curves.h"

#include "host/script/lens.h"
#include "host/script/script_writer.h"

namespace velmora {

// "{curve L x<frame> <value> …}", or the value alone for a single key.
static host::ScriptValue curve_through(const std::vector<double>& frames,
                                       const std::vector<double>& values) {
    if (frames.size() == 1)
        return host::number_value(values[0]);
    std::vector<host::ScriptValue> words = {host::text_value("curve"), host::text_value("L")};
    for (std::size_t i = 0; i < frames.size(); i++) {
        words.push_back(host::text_value("x" + number_text(frames[i])));
        words.push_back(host::number_value(values[i]));
    }
    return host::list_value(words);
}

// The curve of one number of the file's samples.
template <class Value>
static host::ScriptValue curve_of(const host::Chan& chan, Value value) {
    std::vector<double> values;
    for (const double frame : chan.frames())
        values.push_back(value(chan.sample(frame)));
    return curve_through(chan.frames(), values);
}

// The three curves of a part of the transform.
static host::ScriptValue curves_of(const host::Chan& chan,
                                   std::array<double, 3> host::Transform::*part) {
    std::vector<host::ScriptValue> curves;
    for (std::size_t i = 0; i < 3; i++)
        curves.push_back(curve_of(
            chan, [&](const host::ChanSample& sample) { return (sample.transform.*part)[i]; }));
    return host::list_value(curves);
}

host::ScriptValue translate_curves(const host::Chan& chan) {
    return curves_of(chan, &host::Transform::translate);
}

host::ScriptValue rotate_curves(const host::Chan& chan) {
    return curves_of(chan, &host::Transform::rotate);
}

host::ScriptValue focal_curve(const host::Chan& chan, double vertical_aperture) {
    return host::list_value({curve_of(chan, [&](const host::ChanSample& sample) {
        return host::focal_of_fov(*sample.vfov, vertical_aperture);
    })});
}

} // namespace velmora
