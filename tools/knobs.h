// The node's nineteen parameters as the command line sets them: names, defaults and what they mean.
//
// Units:     luminances and brightness linear; sizes in 1/2000 of the image's width; shutter times in
//            frames; `parallax` in hundredths of an inverse scene unit.
// Errors:    UsageFailure naming the knob, its value and what it takes.
#pragma once

#include "stars/stars.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace velmora {

struct Format {
    int width = 1920;
    int height = 1080;
};

struct KnobValues {
    Format format;
    double brightness = 5.0;
    double bias = 1.0;
    double saturation = 0.4;
    double tint_strength = 0.0;
    std::array<double, 3> tint_color = {0.0, 0.0, 0.0};
    double lum_max = 0.5;
    double lum_threshold = 0.0001;
    double star_size = 2.5;
    double star_aspect = 1.0;
    int blur_segs = 1;
    double shutter = 0.5;
    double shutter_offset = 0.0;
    int projection = 0; // index into projection_names
    bool threed = true;
    double parallax = 100.0;
    bool anamorphic_dof = false; // kept with the node; nothing draws by it
    std::string starfile;
    // Column by column, for column vectors: multiplied onto the camera's matrix from the right, or
    // the whole view where there is no camera.
    std::array<float, 16> transform = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

extern const std::array<const char*, 3> projection_names;

// What `velmora info` and the pictures' attributes show of a knob.
struct KnobDescription {
    const char* name;
    const char* takes;
};

// In the order of the node's panel.
const std::vector<KnobDescription>& knob_descriptions();

// Sets the knob from the text that a user gave; the value's forms are those of knob_descriptions.
void set_knob(KnobValues& values, const std::string& name, const std::string& text);

// The knob's value, by its kind; a matrix as its rows.
typedef std::variant<double, int, bool, std::string, std::vector<double>> KnobValue;
KnobValue knob_value(const KnobValues& values, const std::string& name);

// The same as text that set_knob takes back.
std::string knob_text(const KnobValues& values, const std::string& name);

// `text` as <width>x<height>, such that an image of four floats per pixel stays below 4 GiB.
Format parse_format(const std::string& text);

// The renderer's parameters but for the film window, which is the camera's.
void fill_render_data(const KnobValues& values, StarRendererData& data);

} // namespace velmora
