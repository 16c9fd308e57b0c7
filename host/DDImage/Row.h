// SPDX-License-Identifier: BSD-3-Clause

// A span of pixels of one row, columns [x, r), with any channels.
//
// Shapes:    pointers are indexed by the absolute column: row[channel][x] is the first pixel.
// Ownership: pointers are valid until range(), and as long as the row.
// Threads:   a row belongs to one thread at a time.
#pragma once

#include <DDImage/ChannelSet.h>

#include <memory>
#include <vector>

namespace DD::Image {

class Iop;

class DDImage_API Row {
public:
    typedef const float* ReadablePtr;
    typedef float* WritablePtr;

    // All channels are zero.
    Row(int x, int r);
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;
    ~Row();

    int getLeft() const { return left; }
    int getRight() const { return right; }

    // Another span, with all channels zero.
    void range(int x, int r);

    ReadablePtr operator[](Channel channel) const;

    // The channel's buffer, whose contents are unspecified until written.
    WritablePtr writable(Channel channel);
    WritablePtr writableConstant(float value, Channel channel);

    void erase(Channel channel);
    void erase(ChannelMask channels);
    bool is_zero(Channel channel) const;
    ChannelSet writable_channels() const;

    void copy(const Row& source, ChannelMask channels, int x, int r);

    // No effect: a copy needs no preparation here.
    void pre_copy(const Row& source, ChannelMask channels) { (void)source, (void)channels; }

    // Calls the op's get() for this row.
    void get(Iop& op, int y, int x, int r, ChannelMask channels);

    // A channel that was written outside the span, or Chan_Black; only while plug-ins are checked.
    Channel written_beside() const;

private:
    struct Line {
        Channel channel;
        bool used;
        std::unique_ptr<float[]> samples; // with `margin` floats before and after the span
    };

    int left, right;
    int margin;
    std::vector<Line> lines;
    mutable std::unique_ptr<float[]> zeros;

    // Whether new rows get a margin: while plug-ins are checked.
    static bool has_guards();

    std::size_t length() const { return std::size_t(right - left); }
    Line* find(Channel channel);
    const Line* find(Channel channel) const;
};

} // namespace DD::Image
