// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cstring>
#include <DDImage/Iop.h>
#include <DDImage/Row.h>

namespace DD::Image {

// What surrounds the span while plug-ins are checked: a NaN that no engine writes by chance.
static const unsigned guard_bits = 0x7fa5a5a5;
static const int guard_floats = 32;

// By its bits: a NaN equals nothing, not even itself.
static void set_guard(float* guard) {
    for (int i = 0; i < guard_floats; i++)
        std::memcpy(guard + i, &guard_bits, sizeof guard_bits);
}

static bool is_guard(const float* guard) {
    for (int i = 0; i < guard_floats; i++)
        if (std::memcmp(guard + i, &guard_bits, sizeof guard_bits) != 0)
            return false;
    return true;
}

Row::Row(int x, int r) : left(x), right(std::max(x, r)), margin(has_guards() ? guard_floats : 0) {}

Row::~Row() {}

void Row::range(int x, int r) {
    left = x;
    right = std::max(x, r);
    lines.clear();
    zeros.reset();
}

Row::Line* Row::find(Channel channel) {
    return const_cast<Line*>(static_cast<const Row*>(this)->find(channel));
}

const Row::Line* Row::find(Channel channel) const {
    const auto line = std::find_if(lines.begin(), lines.end(),
                                   [=](const Line& l) { return l.channel == channel; });
    return line == lines.end() ? nullptr : &*line;
}

Row::ReadablePtr Row::operator[](Channel channel) const {
    const Line* const line = find(channel);
    if (line && line->used)
        return line->samples.get() + margin - left;
    // A channel that was not written reads as zeros, which all of them share.
    if (!zeros)
        zeros = std::make_unique<float[]>(length());
    return zeros.get() - left;
}

Row::WritablePtr Row::writable(Channel channel) {
    // Buffers are made on demand, with guards around them.
    Line* line = find(channel);
    if (!line) {
        const std::size_t floats = length() + 2 * std::size_t(margin);
        lines.push_back({channel, false, std::make_unique<float[]>(floats)});
        line = &lines.back();
        if (margin > 0) {
            set_guard(line->samples.get());
            set_guard(line->samples.get() + margin + length());
        }
    }
    line->used = true;
    return line->samples.get() + margin - left;
}

Row::WritablePtr Row::writableConstant(float value, Channel channel) {
    float* const samples = writable(channel);
    std::fill(samples + left, samples + right, value);
    return samples;
}

void Row::erase(Channel channel) {
    if (Line* const line = find(channel))
        line->used = false;
}

void Row::erase(ChannelMask channels) {
    for (Line& line : lines)
        if (channels.contains(line.channel))
            line.used = false;
}

bool Row::is_zero(Channel channel) const {
    const Line* const line = find(channel);
    return !line || !line->used;
}

ChannelSet Row::writable_channels() const {
    ChannelSet channels;
    for (const Line& line : lines)
        if (line.used)
            channels.insert(line.channel);
    return channels;
}

void Row::copy(const Row& source, ChannelMask channels, int x, int r) {
    foreach (channel, channels) {
        const float* const from = source[channel];
        std::copy(from + x, from + r, writable(channel) + x);
    }
}

void Row::get(Iop& op, int y, int x, int r, ChannelMask channels) {
    op.get(y, x, r, channels, *this);
}

Channel Row::written_beside() const {
    if (margin == 0)
        return Chan_Black;
    for (const Line& line : lines)
        if (!is_guard(line.samples.get()) || !is_guard(line.samples.get() + margin + length()))
            return line.channel;
    return Chan_Black;
}

} // namespace DD::Image
