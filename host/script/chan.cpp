// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/chan.h"

#include "text/number.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace velmora::host {

static const char* const blanks = " \t\r\v\f";

// Takes the first line off the front, without its LF.
static std::string_view take_line(std::string_view& rest) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    return line;
}

// Larger frame numbers are typing errors.
static const double farthest_frame = 1e9;

// The words of a line up to its comment.
static std::vector<std::string_view> words_of(std::string_view line) {
    std::vector<std::string_view> words;
    std::size_t start = line.find_first_not_of(blanks);
    while (start != std::string_view::npos && line[start] != '#') {
        const std::size_t end = std::min(line.find_first_of(blanks, start), line.size());
        words.push_back(line.substr(start, end - start));
        start = line.find_first_not_of(blanks, end);
    }
    return words;
}

// The number that a word is; `where` is its place in messages.
static double number_of(std::string_view word, const std::string& where) {
    double number = 0.0;
    const NumberFault fault = parse_finite(word, number);
    if (fault != NumberFault::none)
        throw ChanError(where, in_quotes(word) + " " + reason_of(fault));
    return number;
}

// `columns_before` is 0 at the first frame.
static void check_columns(std::size_t columns, std::size_t columns_before,
                          const std::string& where) {
    const std::string found = std::to_string(columns) + (columns == 1 ? " column" : " columns");
    if (columns != 7 && columns != 8)
        throw ChanError(where, found + ", but a frame takes 7 or 8");
    if (columns_before != 0 && columns != columns_before)
        throw ChanError(where,
                        found + ", but the frames before have " + std::to_string(columns_before));
}

// The numbers after the frame: translation, rotation, and perhaps the field of view.
static ChanSample sample_of(const std::vector<std::string_view>& words, const std::string& where) {
    ChanSample sample;
    for (std::size_t k = 0; k < 3; k++)
        sample.transform.translate[k] = number_of(words[1 + k], where);
    for (std::size_t k = 0; k < 3; k++)
        sample.transform.rotate[k] = number_of(words[4 + k], where);
    if (words.size() == 8) {
        sample.vfov = number_of(words[7], where);
        if (*sample.vfov <= 0.0 || *sample.vfov >= 180.0)
            throw ChanError(where, "field of view " + in_quotes(words[7]) +
                                       " is not between 0 and 180 degrees");
    }
    return sample;
}

Chan Chan::parse(const std::string& text, const std::string& name) {
    Chan chan;
    std::size_t columns = 0;
    std::string before; // the last frame's number, as the file has it
    std::string_view rest = text;
    for (int number = 1; !rest.empty(); number++) {
        // Split the line; lines of blanks and comments hold no frame.
        const std::vector<std::string_view> words = words_of(take_line(rest));
        if (words.empty())
            continue;
        const std::string where = name + ":" + std::to_string(number);
        check_columns(words.size(), columns, where);
        columns = words.size();

        // Frames increase.
        const double frame = number_of(words[0], where);
        if (std::fabs(frame) > farthest_frame)
            throw ChanError(where, "frame " + in_quotes(words[0]) + " is out of range");
        if (!chan.lines.empty() && frame <= chan.last_frame())
            throw ChanError(where, "frame " + in_quotes(words[0]) + " does not come after frame " +
                                       in_quotes(before));
        chan.lines.push_back({frame, sample_of(words, where)});
        before = words[0];
    }
    if (chan.lines.empty())
        throw ChanError(name, "no frame in the file");
    return chan;
}

static double between(double a, double b, double part) {
    // Not a + part * (b - a): b - a may overflow where a and b do not.
    return a == b ? a : (1.0 - part) * a + part * b;
}

static ChanSample between(const ChanSample& a, const ChanSample& b, double part) {
    ChanSample sample;
    for (std::size_t k = 0; k < 3; k++) {
        sample.transform.translate[k] =
            between(a.transform.translate[k], b.transform.translate[k], part);
        sample.transform.rotate[k] = between(a.transform.rotate[k], b.transform.rotate[k], part);
    }
    if (a.vfov)
        sample.vfov = between(*a.vfov, *b.vfov, part);
    return sample;
}

std::vector<double> Chan::frames() const {
    std::vector<double> all;
    for (const Line& line : lines)
        all.push_back(line.frame);
    return all;
}

ChanSample Chan::sample(double time) const {
    // Find the first frame at or after `time`.
    const auto next = std::lower_bound(lines.begin(), lines.end(), time,
                                       [](const Line& line, double t) { return line.frame < t; });
    // Outside the file and at a frame itself nothing is interpolated.
    if (next == lines.end())
        return lines.back().sample;
    if (next == lines.begin() || next->frame == time)
        return next->sample;
    // Mix the frames around it.
    const auto previous = next - 1;
    const double part = (time - previous->frame) / (next->frame - previous->frame);
    return between(previous->sample, next->sample, part);
}

} // namespace velmora::host
