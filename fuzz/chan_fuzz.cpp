// SPDX-License-Identifier: BSD-3-Clause

// Any bytes read as a camera file: refused with a ChanError of one line, or a camera that is finite
// at all times.
#include "fuzz/law.h"
#include "host/script/chan.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

using namespace velmora;
using namespace velmora::host;

typedef std::vector<double> Columns;

static Columns columns_of(const ChanSample& sample) {
    const auto& t = sample.transform.translate;
    const auto& r = sample.transform.rotate;
    Columns columns = {t[0], t[1], t[2], r[0], r[1], r[2]};
    if (sample.vfov)
        columns.push_back(*sample.vfov);
    return columns;
}

static std::optional<Chan> parse(const std::string& text) {
    try {
        return Chan::parse(text, "shot.chan");
    } catch (const ChanError& error) {
        require_printable_line(error.what());
        return std::nullopt;
    }
}

static void check_sample(const Chan& chan, double time) {
    const ChanSample sample = chan.sample(time);
    for (const double column : columns_of(sample))
        require(std::isfinite(column), "every column is finite at all times");
    require(sample.vfov.has_value() == chan.has_vfov(), "all frames have the same columns");
    require(!sample.vfov || (*sample.vfov > 0 && *sample.vfov <= 180), "fields of view are angles");
}

// The frame's line, with digits enough for every double.
static std::string line_of(const Chan& chan, double frame) {
    std::string line;
    char number[32];
    Columns columns = columns_of(chan.sample(frame));
    columns.insert(columns.begin(), frame);
    for (const double column : columns) {
        snprintf(number, sizeof number, "%.17g ", column);
        line += number;
    }
    return line + "\n";
}

static void check_writing(const Chan& chan) {
    const double first = chan.first_frame(), last = chan.last_frame();
    std::string text = line_of(chan, first);
    if (first < last)
        text += line_of(chan, last);
    const std::optional<Chan> again = parse(text);
    require(again.has_value(), "the numbers of a frame can be read");
    for (const double frame : {first, last})
        require(columns_of(again->sample(frame)) == columns_of(chan.sample(frame)),
                "a frame's numbers come back exactly");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::optional<Chan> chan = parse(std::string(data, data + size));
    if (!chan)
        return 0;
    const double first = chan->first_frame(), last = chan->last_frame();
    require(first <= last, "frames grow");
    for (const double time :
         {first - 1, first, first + 0.25 * (last - first), 0.5 * (first + last), last, last + 1})
        check_sample(*chan, time);
    require(columns_of(chan->sample(first - 1)) == columns_of(chan->sample(first)) &&
                columns_of(chan->sample(last + 1)) == columns_of(chan->sample(last)),
            "a camera stands still before the first frame and after the last");
    check_writing(*chan);
    return 0;
}
