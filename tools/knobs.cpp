#include "tools/knobs.h"

#include "core/number.h"
#include "stars/setup.h"
#include "tools/failure.h"
#include "tools/numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora {

const std::array<const char*, 3> projection_names = {"Perspective", "Hemispherical",
                                                     "Azimuthal Equidistant"};

// Far beyond use, and it keeps a slip of the finger from asking for gigabytes of cameras.
static const int most_blur_segs = 10000;

namespace {

// Thrown when a text is not what a knob takes; says what that is.
struct Refused {
    const char* takes;
};

// One kind of knob: read from text, which may throw Refused, and told.
struct Knob {
    KnobDescription description;
    void (*set)(KnobValues& values, const std::string& text);
    KnobValue (*value)(const KnobValues& values);
};

} // namespace

static double finite_number(const std::string& text) {
    double number;
    if (!parse_number(text, number) || !std::isfinite(number))
        throw Refused{"takes a number"};
    return number;
}

static bool fits_float(double number) {
    return std::fabs(number) <= double(std::numeric_limits<float>::max());
}

template <double KnobValues::*member>
static Knob number_knob(const char* name) {
    return {
        {name, "a number"},
        [](KnobValues& values, const std::string& text) { values.*member = finite_number(text); },
        [](const KnobValues& values) { return KnobValue(values.*member); }};
}

template <bool KnobValues::*member>
static Knob switch_knob(const char* name) {
    return {{name, "true or false, 1 or 0"},
            [](KnobValues& values, const std::string& text) {
                const bool on = text == "true" || text == "1";
                if (!on && text != "false" && text != "0")
                    throw Refused{"takes true or false"};
                values.*member = on;
            },
            [](const KnobValues& values) { return KnobValue(values.*member); }};
}

static void set_format(KnobValues& values, const std::string& text) {
    values.format = parse_format(text);
}

static KnobValue format_value(const KnobValues& values) {
    return std::to_string(values.format.width) + "x" + std::to_string(values.format.height);
}

static void set_tint_color(KnobValues& values, const std::string& text) {
    std::vector<double> numbers;
    if (!parse_numbers(text, numbers) || (numbers.size() != 3 && numbers.size() != 1) ||
        !std::all_of(numbers.begin(), numbers.end(), fits_float))
        throw Refused{"takes three numbers (red, green, blue) or one for all"};
    for (std::size_t k = 0; k < 3; k++)
        values.tint_color[k] = numbers[numbers.size() == 3 ? k : 0];
}

static KnobValue tint_color_value(const KnobValues& values) {
    return std::vector<double>(values.tint_color.begin(), values.tint_color.end());
}

static void set_blur_segs(KnobValues& values, const std::string& text) {
    int segments;
    if (!parse_number(text, segments) || segments > most_blur_segs)
        throw Refused{"takes a whole number up to 10000"};
    values.blur_segs = segments;
}

static KnobValue blur_segs_value(const KnobValues& values) {
    return values.blur_segs;
}

static void set_projection(KnobValues& values, const std::string& text) {
    for (int i = 0; i < int(projection_names.size()); i++) {
        if (text == projection_names[std::size_t(i)] || text == std::to_string(i)) {
            values.projection = i;
            return;
        }
    }
    throw Refused{"takes Perspective, Hemispherical or Azimuthal Equidistant"};
}

static KnobValue projection_value(const KnobValues& values) {
    return std::string(projection_names[std::size_t(values.projection)]);
}

static void set_starfile(KnobValues& values, const std::string& text) {
    values.starfile = text;
}

static KnobValue starfile_value(const KnobValues& values) {
    return values.starfile;
}

static void set_transform(KnobValues& values, const std::string& text) {
    std::vector<double> rows;
    if (!parse_numbers(text, rows) || rows.size() != 16 ||
        !std::all_of(rows.begin(), rows.end(), fits_float))
        throw Refused{"takes sixteen numbers, the rows of a matrix for column vectors"};
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            values.transform[4 * column + row] = float(rows[4 * row + column]);
}

static KnobValue transform_value(const KnobValues& values) {
    std::vector<double> rows;
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            rows.push_back(double(values.transform[4 * column + row]));
    return rows;
}

static const std::vector<Knob>& knobs() {
    static const std::vector<Knob> all = {
        {{"format", "<width>x<height> in pixels"}, set_format, format_value},
        number_knob<&KnobValues::brightness>("brightness"),
        number_knob<&KnobValues::bias>("bias"),
        number_knob<&KnobValues::saturation>("saturation"),
        number_knob<&KnobValues::tint_strength>("tint_strength"),
        {{"tint_color", "three numbers, red green blue, or one"}, set_tint_color, tint_color_value},
        number_knob<&KnobValues::lum_max>("lum_max"),
        number_knob<&KnobValues::lum_threshold>("lum_threshold"),
        number_knob<&KnobValues::star_size>("star_size"),
        number_knob<&KnobValues::star_aspect>("star_aspect"),
        {{"blur_segs", "a whole number of segments"}, set_blur_segs, blur_segs_value},
        number_knob<&KnobValues::shutter>("shutter"),
        number_knob<&KnobValues::shutter_offset>("shutter_offset"),
        {{"projection", "Perspective, Hemispherical or Azimuthal Equidistant, or 0 to 2"},
         set_projection,
         projection_value},
        switch_knob<&KnobValues::threed>("threed"),
        number_knob<&KnobValues::parallax>("parallax"),
        switch_knob<&KnobValues::anamorphic_dof>("anamorphic_dof"),
        {{"starfile", "the path of a star database"}, set_starfile, starfile_value},
        {{"transform", "sixteen numbers: a matrix, row by row"}, set_transform, transform_value},
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
    try {
        knob->set(values, text);
    } catch (const Refused& refused) {
        throw UsageFailure(what, refused.takes);
    } catch (const UsageFailure& failure) {
        throw UsageFailure(what, failure.why);
    }
}

KnobValue knob_value(const KnobValues& values, const std::string& name) {
    const Knob* knob = find_knob(name);
    return knob ? knob->value(values) : KnobValue(std::string());
}

std::string knob_text(const KnobValues& values, const std::string& name) {
    struct Text {
        std::string operator()(double number) const { return shortest_text(number); }
        std::string operator()(int number) const { return std::to_string(number); }
        std::string operator()(bool on) const { return on ? "true" : "false"; }
        std::string operator()(const std::string& text) const { return text; }
        std::string operator()(const std::vector<double>& numbers) const {
            return join_numbers(numbers);
        }
    };
    return std::visit(Text(), knob_value(values, name));
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
