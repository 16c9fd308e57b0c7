// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/frame_name.h"

#include "text/quoted.h"
#include "tools/failure.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace velmora {

static const std::size_t width_of_lone_hash = 4;

namespace {

// What a % begins: a frame number of at least `width` digits, or a percent sign for `width` 0, in
// `length` characters. A length of 0 means neither.
struct Sequence {
    std::size_t length;
    std::size_t width;
};

} // namespace

static bool is_digit(char ch) {
    return ch >= '0' && ch <= '9';
}

// What the % at the start of `text` begins.
static Sequence percent_sequence(std::string_view text) {
    if (text.substr(0, 2) == "%%")
        return {2, 0};
    if (text.substr(0, 2) == "%d")
        return {2, 1};
    // %0<n>d with one or two digits, the first above 0
    if (text.substr(0, 2) != "%0" || text.size() < 4 || !is_digit(text[2]) || text[2] == '0')
        return {0, 0};
    const std::size_t width = std::size_t(text[2] - '0');
    if (text[3] == 'd')
        return {4, width};
    if (text.size() < 5 || !is_digit(text[3]) || text[4] != 'd')
        return {0, 0};
    return {5, 10 * width + std::size_t(text[3] - '0')};
}

// As many #s as there are.
static Sequence hash_sequence(std::string_view text) {
    const std::size_t length = std::min(text.find_first_not_of('#'), text.size());
    return {length, length == 1 ? width_of_lone_hash : length};
}

FrameName::FrameName(const std::string& pattern) {
    const std::string what = "output name " + in_quotes(pattern, in_full);
    if (pattern.empty())
        throw UsageFailure(what, "no file named");

    std::string_view rest = pattern;
    while (!rest.empty()) {
        // Copy up to the next place.
        const std::size_t plain = std::min(rest.find_first_of("#%"), rest.size());
        tail.append(rest.substr(0, plain));
        rest.remove_prefix(plain);
        if (rest.empty())
            break;

        // Take the place, or a percent sign.
        const Sequence sequence = rest[0] == '#' ? hash_sequence(rest) : percent_sequence(rest);
        if (sequence.length == 0)
            throw UsageFailure(what, in_quotes(rest, in_full) +
                                         " does not begin with %d, %04d or the like; a percent "
                                         "sign itself is %%");
        if (sequence.width == 0)
            tail += '%';
        else
            places.push_back({std::exchange(tail, ""), sequence.width});
        rest.remove_prefix(sequence.length);
    }
}

// Zeros go between the sign and the digits.
static std::string padded(int frame, std::size_t width) {
    std::string digits = std::to_string(frame);
    const std::size_t sign = frame < 0 ? 1 : 0;
    if (digits.size() < width)
        digits.insert(sign, width - digits.size(), '0');
    return digits;
}

std::string FrameName::at(int frame) const {
    std::string name;
    for (const Place& place : places)
        name += place.text + padded(frame, place.width);
    return name + tail;
}

} // namespace velmora
