#include "tools/comp/chan_curves.h"

#include "host/script/lens.h"
#include "host/script/script_writer.h"

namespace velmora {

static ScriptValue curve_through(const std::vector<double>& frames,
                                 const std::vector<double>& values) {
    if (frames.size() == 1)
        return number_value(values[0]);
    std::vector<ScriptValue> words = {text_value("curve"), text_value("L")};
    for (std::size_t i = 0; i < frames.size(); i++) {
        words.push_back(text_value("x" + number_text(frames[i])));
        words.push_back(number_value(values[i]));
    }
    return list_value(words);
}

template <class Value>
static ScriptValue curve_of(const Chan& chan, Value value) {
    std::vector<double> values;
    for (const double frame : chan.frames())
        values.push_back(value(chan.sample(frame)));
    return curve_through(chan.frames(), values);
}

static ScriptValue curves_of(const Chan& chan, std::array<double, 3> Transform::*part) {
    std::vector<ScriptValue> curves;
    for (std::size_t i = 0; i < 3; i++)
        curves.push_back(
            curve_of(chan, [&](const ChanSample& sample) { return (sample.transform.*part)[i]; }));
    return list_value(curves);
}

ScriptValue translate_curves(const Chan& chan) {
    return curves_of(chan, &Transform::translate);
}

ScriptValue rotate_curves(const Chan& chan) {
    return curves_of(chan, &Transform::rotate);
}

ScriptValue focal_curve(const Chan& chan, double vertical_aperture) {
    return list_value({curve_of(chan, [&](const ChanSample& sample) {
        return focal_of_fov(*sample.vfov, vertical_aperture);
    })});
}

} // namespace velmora
