#include "tools/knobs.h"

#include "core/number.h"
#include "stars/setup.h"
#include "tools/failure.h"
#include "tools/numbers.h"

#include <cmath>
#include <limits>

namespace velmora {

const std::array<const char*, 3> projection_names = {"Perspective", "Hemispherical",
                                                     "Azimuthal Equidistant"};

// Far beyond use, and it keeps a slip of the finger from asking for gigabytes of cameras.
static const int most_blur_segs = 10000;

namespace {

// How one kind of knob is read from text and written back.
struct Knob {
    KnobDescription description;
    // Returns what is wrong with the text, or an empty string.
    std::string (*set)(KnobValues& values, const std::string& text);
    std::string (*text)(const KnobValues& values);
};

} // namespace

template <double KnobValues::*member>
static Knob number_knob(const char* name) {
    return {{name, "a number"},
            [](KnobValues& values, const std::string& text) -> std::string {
                double value;
                if (!parse_number(text, value) || !std::isfinite(value))
                    return "takes a number";
                values.*member = value;
                return "";
            },
            [](const KnobValues& values) { return shortest_text(values.*member); }};
}

template <bool KnobValues::*member>
static Knob switch_knob(const char* name) {
    return {
        {name, "true or false"},
        [](KnobValues& values, const std::string& text) -> std::string {
            const bool on = text == "true" || text == "1";
            if (!on && text != "false" && text != "0")
                return "takes true or false";
            values.*member = on;
            return "";
        },
        [](const KnobValues& values) { return std::string(values.*member ? "true" : "false"); }};
}

static std::string set_format(KnobValues& values, const std::string& text) {
    try {
        values.format = parse_format(text);
    } catch (const Failure& failure) {
        return failure.why;
    }
    return "";
}

static std::string format_text(const KnobValues& values) {
    return std::to_string(values.format.width) + "x" + std::to_string(values.format.height);
}

static std::string set_tint_color(KnobValues& values, const std::string& text) {
    std::vector<double> numbers;
    if (!parse_numbers(text, numbers) || (numbers.size() != 3 && numbers.size() != 1))
        return "takes three numbers (red, green, blue) or one for all";
    for (std::size_t k = 0; k < 3; k++)
        values.tint_color[k] = numbers[numbers.size() == 3 ? k : 0];
    return "";
}

static std::string tint_color_text(const KnobValues& values) {
    return join_numbers({values.tint_color.begin(), values.tint_color.end()});
}

static std::string set_blur_segs(KnobValues& values, const std::string& text) {
    int value;
    if (!parse_number(text, value) || value > most_blur_segs)
        return "takes a whole number up to " + std::to_string(most_blur_segs);
    values.blur_segs = value;
    return "";
}

static std::string blur_segs_text(const KnobValues& values) {
    return std::to_string(values.blur_segs);
}

static std::string set_projection(KnobValues& values, const std::string& text) {
    for (int i = 0; i < int(projection_names.size()); i++) {
        if (text == projection_names[std::size_t(i)] || text == std::to_string(i)) {
            values.projection = i;
            return "";
        }
    }
    return "takes Perspective, Hemispherical or Azimuthal Equidistant";
}

static std::string projection_text(const KnobValues& values) {
    return projection_names[std::size_t(values.projection)];
}

static std::string set_starfile(KnobValues& values, const std::string& text) {
    values.starfile = text;
    return "";
}

static std::string starfile_text(const KnobValues& values) {
    return values.starfile;
}

static std::string set_transform(KnobValues& values, const std::string& text) {
    const char* const takes = "takes sixteen numbers, the rows of a matrix for column vectors";
    std::vector<double> rows;
    if (!parse_numbers(text, rows) || rows.size() != 16)
        return takes;
    for (std::size_t row = 0; row < 4; row++) {
        for (std::size_t column = 0; column < 4; column++) {
            const double element = rows[4 * row + column];
            if (std::fabs(element) > double(std::numeric_limits<float>::max()))
                return takes;
            values.transform[4 * column + row] = float(element);
        }
    }
    return "";
}

static std::string transform_text(const KnobValues& values) {
    std::vector<double> rows;
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            rows.push_back(double(values.transform[4 * column + row]));
    return join_numbers(rows);
}

static const std::vector<Knob>& knobs() {
    static const std::vector<Knob> all = {
        {{"format", "<width>x<height> in pixels"}, set_format, format_text},
        number_knob<&KnobValues::brightness>("brightness"),
        number_knob<&KnobValues::bias>("bias"),
        number_knob<&KnobValues::saturation>("saturation"),
        number_knob<&KnobValues::tint_strength>("tint_strength"),
        {{"tint_color", "three numbers: red green blue"}, set_tint_color, tint_color_text},
        number_knob<&KnobValues::lum_max>("lum_max"),
        number_knob<&KnobValues::lum_threshold>("lum_threshold"),
        number_knob<&KnobValues::star_size>("star_size"),
        number_knob<&KnobValues::star_aspect>("star_aspect"),
        {{"blur_segs", "a whole number of segments"}, set_blur_segs, blur_segs_text},
        number_knob<&KnobValues::shutter>("shutter"),
        number_knob<&KnobValues::shutter_offset>("shutter_offset"),
        {{"projection", "Perspective, Hemispherical or Azimuthal Equidistant"},
         set_projection,
         projection_text},
        switch_knob<&KnobValues::threed>("threed"),
        number_knob<&KnobValues::parallax>("parallax"),
        switch_knob<&KnobValues::anamorphic_dof>("anamorphic_dof"),
        {{"starfile", "the path of a star database"}, set_starfile, starfile_text},
        {{"transform", "sixteen numbers: a matrix, row by row"}, set_transform, transform_text},
    };
    return all;
}

static const Knob* find_knob(const std::string& name) {
    for (const Knob& knob : knobs())
        if (name == knob.description.name)
            return &knob;
    return nullptr;
}

const std::vector<KnobDescription>& knob_descriptions() {
    static const std::vector<KnobDescription> all = [] {
        std::vector<KnobDescription> descriptions;
        for (const Knob& knob : knobs())
            descriptions.push_back(knob.description);
        return descriptions;
    }();
    return all;
}

void set_knob(KnobValues& values, const std::string& name, const std::string& text) {
    const std::string what = "--knob " + name + "=" + text;
    const Knob* knob = find_knob(name);
    if (!knob)
        throw UsageFailure(what, "the node has no such knob (velmora info lists them)");
    const std::string wrong = knob->set(values, text);
    if (!wrong.empty())
        throw UsageFailure(what, wrong);
}

std::string knob_text(const KnobValues& values, const std::string& name) {
    const Knob* knob = find_knob(name);
    return knob ? knob->text(values) : "";
}

Format parse_format(const std::string& text) {
    const std::size_t cross = text.find('x');
    Format format;
    if (cross == std::string::npos || !parse_number(text.substr(0, cross), format.width) ||
        !parse_number(text.substr(cross + 1), format.height) || format.width < 1 ||
        format.height < 1)
        throw UsageFailure("format '" + text + "'", "takes <width>x<height> in pixels");

    const double bytes = 16.0 * format.width * format.height;
    if (bytes >= 4294967296.0)
        throw UsageFailure("format '" + text + "'",
                           "an image takes 16 bytes per pixel and must stay below 4 GiB");
    return format;
}

void fill_render_data(const KnobValues& values, StarRendererData& data) {
    data.spot_width = values.star_size * values.star_aspect;
    data.star_size = values.star_size;
    data.lum_threshold = values.lum_threshold;
    data.lum_max = values.lum_max;
    data.brightness = values.brightness;
    data.saturation = values.saturation;
    data.bias_exponent = bias_exponent_of(values.bias);
    data.tint_strength = values.tint_strength;
    data.parallax = values.parallax;
    for (int k = 0; k < 3; k++)
        data.tint_color[k] = float(values.tint_color[std::size_t(k)]);
    data.projection = projection_of_index(values.projection);
    data.lines = OP_STARS_LINES_ALL;
    data.threed = values.threed;
}

} // namespace velmora
