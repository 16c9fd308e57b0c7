// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/format_text.h"

namespace velmora::host {

using DD::Image::Format;

static bool parse_side(const std::string& text, int& number) {
    return parse_number(text, number) && number >= -largest_format_side &&
           number <= largest_format_side;
}

static bool parse_aspect(const std::string& text, double& number) {
    return parse_finite(text, number) == NumberFault::none && number > 0;
}

Format parse_format_text(const ScriptValue& value, const std::string& script) {
    const ScriptError refused(script, value.place,
                              in_quotes(value) +
                                  " is not a format: width height [x y r t] [aspect] "
                                  "[name]");
    // Split it; a quoted text is a list, too. Whole numbers come first.
    ScriptValue list = value;
    list.kind = ScriptValue::Kind::braced;
    const std::vector<ScriptValue> words = list_items(list, script);
    int sides[6];
    std::size_t count = 0;
    while (count < words.size() && count < 6 && parse_side(words[count].text, sides[count]))
        count++;
    // A name alone.
    if (count == 0 && words.size() == 1) {
        if (const Format* const named = Format::findNamed(words[0].text.c_str()))
            return *named;
        throw ScriptError(script, value.place, "there is no format named " + in_quotes(words[0]));
    }
    // The box is all of x y r t or none; a third whole number is the pixel aspect.
    if (count > 2 && count < 6)
        count = 2;
    if (count < 2 || sides[0] < 1 || sides[1] < 1)
        throw refused;

    Format format(sides[0], sides[1]);
    if (count == 6) {
        format.set(sides[2], sides[3], sides[4], sides[5]);
        const bool inside =
            format.x() >= 0 && format.y() >= 0 && format.r() <= sides[0] && format.t() <= sides[1];
        if (!inside || format.w() < 1 || format.h() < 1)
            throw refused;
    }
    // The rest: pixel aspect and name.
    double aspect;
    if (count < words.size() && parse_aspect(words[count].text, aspect)) {
        format.pixel_aspect(aspect);
        count++;
    }
    if (count < words.size())
        format.name(words[count++].text.c_str());
    if (count < words.size())
        throw refused;
    return format;
}

std::string format_text(const Format& format) {
    std::string text;
    for (const int side :
         {format.width(), format.height(), format.x(), format.y(), format.r(), format.t()})
        text += std::to_string(side) + " ";
    text += number_text(format.pixel_aspect());
    return format.name() ? text + " " + format.name() : text;
}

} // namespace velmora::host
