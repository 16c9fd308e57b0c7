// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/frame_attributes.h"

#include "tools/comp/knobs.h"

#include <filesystem>
#include <OpenEXR/ImfFramesPerSecond.h>

namespace velmora {

static std::array<float, 16> narrowed(const DblMatrix4& m) {
    std::array<float, 16> narrow;
    for (std::size_t i = 0; i < 16; i++)
        narrow[i] = float(m.e[i]);
    return narrow;
}

// The renderer's world is the host's with z reversed.
static DblMatrix4 world_to_camera(const camera& cam) {
    DblMatrix4 matrix = cam.matrix;
    for (int column = 0; column < 4; column++)
        matrix(2, column) = -matrix(2, column);
    return matrix;
}

// Film positions to -1 … 1 across the window; w is unchanged.
static DblMatrix4 window_to_ndc(const StarRendererData& data) {
    const double width = data.right - data.left, height = data.top - data.bottom;
    DblMatrix4 m = DblMatrix4::the_identity();
    m(0, 0) = 2 / width;
    m(1, 1) = 2 / height;
    m(3, 0) = -(data.left + data.right) / width;
    m(3, 1) = -(data.bottom + data.top) / height;
    return m;
}

// The nearest ratio that video knows, such as 24000/1001.
static FrameRate frame_rate_of(double fps) {
    const Imf::Rational rational = Imf::guessExactFps(fps);
    return {rational.n, rational.d};
}

// Numbers and switches keep their type, a colour becomes a vector, everything else is text. A
// path is cut to the file's name, which does not depend on the machine.
static ExrValue attribute_of(const host::HostKnob& knob, double frame) {
    const KnobValue value = knob_value(knob, frame);
    if (knob.ClassID() == DD::Image::FILE_KNOB)
        return std::filesystem::path(std::get<std::string>(value)).filename().string();
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* number = std::get_if<int>(&value))
        return *number;
    if (const auto* on = std::get_if<bool>(&value))
        return int(*on);
    const auto* numbers = std::get_if<std::vector<double>>(&value);
    if (numbers && numbers->size() == 3)
        return std::array<float, 3>{float((*numbers)[0]), float((*numbers)[1]),
                                    float((*numbers)[2])};
    return knob_text(knob, frame);
}

ExrMetadata frame_attributes(const RenderedFrame& frame, double fps) {
    ExrMetadata metadata;
    const camera& cam = frame.view.first();
    const DblMatrix4 to_camera = world_to_camera(cam);
    metadata.world_to_camera = narrowed(to_camera);
    // A matrix for the projection exists only where it is linear.
    if (frame.view.data.projection == OP_STARS_PERSPECTIVE)
        metadata.world_to_ndc =
            narrowed(to_camera * DblMatrix4::perspective(cam.focal, cam.near, cam.far) *
                     window_to_ndc(frame.view.data));
    metadata.frame_rate = frame_rate_of(fps);
    metadata.software = "velmora " VELMORA_VERSION;
    // The knobs, under names that no other program uses.
    for (const host::HostKnob* const knob : own_knobs(frame.node))
        metadata.attributes.push_back(
            {"velmora/" + knob->name(), attribute_of(*knob, frame.frame)});
    return metadata;
}

} // namespace velmora
