// SPDX-License-Identifier: BSD-3-Clause

// Renders one image op: validate, request, open, pull the rows, close.
//
//     Opened opened(op);
//     pull_rows(opened.iop(), box, Mask_RGBA, {}, sink);
//
// Errors:    OpFailure, and whatever the op throws.
// Threads:   main thread only; pull_rows() starts threads and waits for them.
#pragma once

#include "text/quoted.h"

#include <DDImage/Iop.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace velmora::host {

// An op called error(). what() is "<node>: <message>", printable.
class DDImage_API OpFailure : public std::runtime_error {
public:
    const std::string node;
    const std::string why;

    OpFailure(const std::string& node, const std::string& why)
        : std::runtime_error(printable(node + ": " + why)), node(node), why(why) {}
};

// Validates `for_real`, and throws if the op or one of its inputs has failed.
DDImage_API void validate(DD::Image::Op& op);

// Validates an op, requests all of its box, and keeps it open during this object's life.
class DDImage_API Opened {
public:
    explicit Opened(DD::Image::Op& op,
                    const DD::Image::ChannelSet& channels = DD::Image::Mask_RGBA);
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    ~Opened();

    DD::Image::Iop& iop() const { return image; }

private:
    DD::Image::Iop& image;
};

struct Pulling {
    int threads = 1;
    int span = 0;          // columns per call; 0 for whole rows
    unsigned shuffled = 0; // the seed of a random order of spans; 0 for from the bottom row up
};

// Receives the pixels [x, r) of row y. Called from all threads at once.
typedef std::function<void(const DD::Image::Row& row, int y, int x, int r)> RowSink;

// Pulls every pixel of `box` once. Returns early when the op is aborted. The first exception in any
// thread stops the others and is rethrown.
DDImage_API void pull_rows(DD::Image::Iop& iop, const DD::Image::Box& box,
                           DD::Image::ChannelMask channels, const Pulling& pulling,
                           const RowSink& sink);

} // namespace velmora::host
