// SPDX-License-Identifier: BSD-3-Clause

// What an image op says about its image: the box that it fills, its format and its channels.
//
// Ownership: formats are borrowed.
#pragma once

#include <DDImage/Box.h>
#include <DDImage/ChannelSet.h>
#include <DDImage/Format.h>

namespace DD::Image {

class DDImage_API IopInfo : public Box {
public:
    // The format in effect, and the one without proxy scale.
    const Format& format() const { return *format_; }
    void format(const Format& value) { format_ = &value; }
    const Format& full_size_format() const { return *full_size_format_; }
    void full_size_format(const Format& value) { full_size_format_ = &value; }

    // Channels that are not listed read as zero.
    ChannelMask channels() const { return channels_; }
    ChannelSet& channels() { return channels_; }
    void channels(const ChannelSet& value) { channels_ = value; }
    void channels(ChannelSetInit value) { channels_ = value; }
    void turn_on(const ChannelSet& set) { channels_ += set; }
    void turn_off(const ChannelSet& set) { channels_ -= set; }

    // Whether the image is black outside the box; otherwise the edge is repeated.
    bool black_outside() const { return black_outside_; }
    void black_outside(bool value) { black_outside_ = value; }

    // The frame range of the image.
    int first_frame() const { return first_frame_; }
    int last_frame() const { return last_frame_; }
    void first_frame(int value) { first_frame_ = value; }
    void last_frame(int value) { last_frame_ = value; }

private:
    const Format* format_ = &Format::None;
    const Format* full_size_format_ = &Format::None;
    ChannelSet channels_;
    bool black_outside_ = false;
    int first_frame_ = 1, last_frame_ = 1;
};

// The base of what has an info, with short cuts to it.
class DDImage_API IopInfoOwner {
public:
    const IopInfo& info() const { return info_; }
    int x() const { return info_.x(); }
    int y() const { return info_.y(); }
    int r() const { return info_.r(); }
    int t() const { return info_.t(); }
    int w() const { return info_.w(); }
    int h() const { return info_.h(); }
    const Format& format() const { return info_.format(); }
    const Format& full_size_format() const { return info_.full_size_format(); }
    ChannelMask channels() const { return info_.channels(); }

protected:
    IopInfo info_;
};

} // namespace DD::Image
