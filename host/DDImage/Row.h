// One line of pixels of some channels, from column x up to but not including r.
//
// Shapes:    pointers are indexed by the absolute column: row[channel][x] is the first pixel.
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

    // Zeros again, over another span.
    void range(int x, int r);

    ReadablePtr operator[](Channel channel) const;

    // The channel's buffer; its contents are unspecified until they are written.
    WritablePtr writable(Channel channel);
    WritablePtr writableConstant(float value, Channel channel);

    void erase(Channel channel);
    void erase(ChannelMask channels);
    bool is_zero(Channel channel) const;
    ChannelSet writable_channels() const;

    void copy(const Row& source, ChannelMask channels, int x, int r);

    // Nothing needs to be prepared here for a copy.
    void pre_copy(const Row& source, ChannelMask channels) { (void)source, (void)channels; }

    // Takes the channels from an op's get().
    void get(Iop& op, int y, int x, int r, ChannelMask channels);

    // The first channel that was written beside the span, or Chan_Black; found only while the host
    // checks its plug-ins.
    Channel written_beside() const;

private:
    struct Line {
        Channel channel;
        bool used;
        std::unique_ptr<float[]> samples; // with `margin` floats in front and behind
    };

    int left, right;
    int margin;
    std::vector<Line> lines;
    mutable std::unique_ptr<float[]> zeros;

    // Whether new rows get guards: while the host checks its plug-ins.
    static bool has_guards();

    std::size_t length() const { return std::size_t(right - left); }
    Line* find(Channel channel);
    const Line* find(Channel channel) const;
};

} // namespace DD::Image
