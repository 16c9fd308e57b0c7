// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/knobs.h"

#include "host/knobs/axis_knob.h"
#include "host/knobs/choice_knob.h"
#include "host/knobs/format_knob.h"
#include "text/number.h"
#include "text/quoted.h"
#include "tools/failure.h"
#include "tools/numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora {

using DD::Image::Format;

// Far beyond use; a typing error must not ask for gigabytes of cameras.
static const int most_blur_segs = 10000;

// Without the parts of the transform knob, which are set through it, and the host's own knobs.
std::vector<host::HostKnob*> own_knobs(const Node& node) {
    std::vector<host::HostKnob*> knobs;
    for (const std::unique_ptr<host::HostKnob>& knob : node.knobs())
        if (knob->declared() && !knob->flag(DD::Image::Knob::NODE_KNOB))
            knobs.push_back(knob.get());
    return knobs;
}

static host::HostKnob* own_knob(const Node& node, const std::string& name) {
    for (host::HostKnob* const knob : own_knobs(node))
        if (knob->name() == name)
            return knob;
    return nullptr;
}

// ---- from text ---------------------------------------------------------------------------------

namespace {

// Thrown when a text is not what a knob takes, with what it does take.
struct Refused {
    std::string takes;
};

} // namespace

static bool fits_float(double number) {
    return std::fabs(number) <= double(std::numeric_limits<float>::max());
}

static void set_number(host::HostKnob& knob, const std::string& text) {
    double number;
    if (!parse_number(text, number) || !std::isfinite(number))
        throw Refused{"takes a number"};
    knob.set_value(number, 0);
}

// Not more than the node draws, and not more than anybody uses.
static void set_whole_number(host::HostKnob& knob, const std::string& text) {
    int number;
    if (!parse_number(text, number) || number > most_blur_segs)
        throw Refused{"takes a whole number up to 10000"};
    knob.set_value(number, 0);
}

static void set_switch(host::HostKnob& knob, const std::string& text) {
    const bool on = text == "true" || text == "1";
    if (!on && text != "false" && text != "0")
        throw Refused{"takes true or false"};
    knob.set_value(on, 0);
}

// One number sets all three.
static void set_color(host::HostKnob& knob, const std::string& text) {
    std::vector<double> numbers;
    if (!parse_numbers(text, numbers) || (numbers.size() != 3 && numbers.size() != 1) ||
        !std::all_of(numbers.begin(), numbers.end(), fits_float))
        throw Refused{"takes three numbers (red, green, blue) or one for all"};
    for (int k = 0; k < 3; k++)
        knob.set_value(numbers[numbers.size() == 3 ? std::size_t(k) : 0], k);
}

// "a, b or c"
static std::string in_words(const std::vector<std::string>& items) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); i++)
        text += (i == 0 ? "" : i + 1 < items.size() ? ", " : " or ") + items[i];
    return text;
}

// By its name or its index in the menu.
static void set_choice(host::ChoiceKnob& knob, const std::string& text) {
    int index;
    const std::vector<std::string>& items = knob.items();
    const bool is_item = std::find(items.begin(), items.end(), text) != items.end();
    const bool is_index = parse_number(text, index) && index >= 0 && index < int(items.size());
    if (!is_item && !is_index)
        throw Refused{"takes " + in_words(items)};
    knob.set_text(text.c_str());
}

// Text has rows; the host keeps columns.
static void set_axis(host::AxisKnob& knob, const std::string& text) {
    std::vector<double> rows;
    if (!parse_numbers(text, rows) || rows.size() != 16 ||
        !std::all_of(rows.begin(), rows.end(), fits_float))
        throw Refused{"takes sixteen numbers, the rows of a matrix for column vectors"};
    host::HostMatrix columns;
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            columns[4 * column + row] = float(rows[4 * row + column]);
    knob.set_matrix(columns);
}

// The kind decides what texts are taken.
static void set_by_kind(host::HostKnob& knob, const std::string& text) {
    switch (knob.ClassID()) {
    case DD::Image::FORMAT_KNOB:
        dynamic_cast<host::FormatKnob&>(knob).set_format(parse_format(text));
        break;
    case DD::Image::INT_KNOB:
        set_whole_number(knob, text);
        break;
    case DD::Image::BOOL_KNOB:
        set_switch(knob, text);
        break;
    case DD::Image::COLOR_KNOB:
        set_color(knob, text);
        break;
    case DD::Image::ENUMERATION_KNOB:
        set_choice(dynamic_cast<host::ChoiceKnob&>(knob), text);
        break;
    case DD::Image::AXIS_KNOB:
        set_axis(dynamic_cast<host::AxisKnob&>(knob), text);
        break;
    case DD::Image::FILE_KNOB:
        knob.set_text(text.c_str());
        break;
    default:
        set_number(knob, text);
    }
}

void set_knob(Node& node, const std::string& name, const std::string& text) {
    const std::string what = "--knob " + name + "=" + text;
    host::HostKnob* const knob = own_knob(node, name);
    if (!knob)
        throw UsageFailure(what, "the node has no such knob (velmora info lists them)");
    // Failures name the knob and its text, whatever found them.
    try {
        set_by_kind(*knob, text);
    } catch (const Refused& refused) {
        throw UsageFailure(what, refused.takes);
    } catch (const UsageFailure& failure) {
        throw UsageFailure(what, failure.why);
    }
}

Format parse_format(const std::string& text) {
    const std::size_t cross = text.find('x');
    int width = 0, height = 0;
    if (cross == std::string::npos || !parse_number(text.substr(0, cross), width) ||
        !parse_number(text.substr(cross + 1), height) || width < 1 || height < 1)
        throw UsageFailure("format " + in_quotes(text, in_full),
                           "takes <width>x<height> in pixels");
    return Format(width, height);
}

// ---- to text -----------------------------------------------------------------------------------

std::string takes_of(const host::HostKnob& knob) {
    switch (knob.ClassID()) {
    case DD::Image::FORMAT_KNOB:
        return "<width>x<height> in pixels";
    case DD::Image::INT_KNOB:
        return "a whole number";
    case DD::Image::BOOL_KNOB:
        return "true or false, 1 or 0";
    case DD::Image::COLOR_KNOB:
        return "three numbers, red green blue, or one";
    case DD::Image::ENUMERATION_KNOB: {
        const std::vector<std::string>& items = dynamic_cast<const host::ChoiceKnob&>(knob).items();
        return in_words(items) + ", or 0 to " + std::to_string(items.size() - 1);
    }
    case DD::Image::FILE_KNOB:
        return "the path of a file";
    case DD::Image::AXIS_KNOB:
        return "sixteen numbers: a matrix, row by row";
    default:
        return "a number";
    }
}

static std::string size_text(const Format& format) {
    return std::to_string(format.width()) + "x" + std::to_string(format.height());
}

static std::vector<double> numbers_of(const host::HostKnob& knob, double frame) {
    std::vector<double> numbers;
    for (int i = 0; i < knob.size(); i++)
        numbers.push_back(knob.get_value_at(frame, i));
    return numbers;
}

static std::vector<double> rows_of(const host::AxisKnob& knob, double frame) {
    const host::HostMatrix columns = knob.matrix_at(frame);
    std::vector<double> rows;
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            rows.push_back(double(columns[4 * column + row]));
    return rows;
}

KnobValue knob_value(const host::HostKnob& knob, double frame) {
    switch (knob.ClassID()) {
    case DD::Image::FORMAT_KNOB:
        return size_text(dynamic_cast<const host::FormatKnob&>(knob).format());
    case DD::Image::INT_KNOB:
        return int(knob.get_value_at(frame, 0));
    case DD::Image::BOOL_KNOB:
        return knob.get_value_at(frame, 0) != 0;
    case DD::Image::COLOR_KNOB:
        return numbers_of(knob, frame);
    case DD::Image::ENUMERATION_KNOB:
    case DD::Image::FILE_KNOB:
        return std::string(knob.get_text());
    case DD::Image::AXIS_KNOB:
        return rows_of(dynamic_cast<const host::AxisKnob&>(knob), frame);
    default:
        return knob.get_value_at(frame, 0);
    }
}

std::string knob_text(const host::HostKnob& knob, double frame) {
    struct Text {
        std::string operator()(double number) const { return shortest_text(number); }
        std::string operator()(int number) const { return std::to_string(number); }
        std::string operator()(bool on) const { return on ? "true" : "false"; }
        std::string operator()(const std::string& text) const { return text; }
        std::string operator()(const std::vector<double>& numbers) const {
            return join_numbers(numbers);
        }
    };
    return std::visit(Text(), knob_value(knob, frame));
}

// ---- limits ------------------------------------------------------------------------------------

// The arguments' fault, or the script's.
[[noreturn]] static void refuse(const std::string& where, const std::string& what,
                                const char* why) {
    if (where.empty())
        throw UsageFailure(what, why);
    throw WorkFailure(where + what, why);
}

void check_sizes(const Node& node, double frame, const std::string& where) {
    const auto& knob = dynamic_cast<const host::FormatKnob&>(*node.knob("format"));
    // In double, where the product cannot overflow.
    const double bytes = 16.0 * knob.format().width() * knob.format().height();
    if (bytes >= 4294967296.0)
        refuse(where, "format " + in_quotes(size_text(knob.format())),
               "an image takes 16 bytes per pixel and must stay below 4 GiB");
    if (node.knob("blur_segs")->get_value_at(frame) > most_blur_segs)
        refuse(where, "blur_segs", "takes a whole number up to 10000");
}

} // namespace velmora
