// One image op taken through a render: validated, asked, opened, pulled row by row, closed.
//
//     Opened opened(op);                                     throws OpFailure
//     pull_rows(opened.iop(), box, Mask_RGBA, {}, sink);     throws OpFailure and what engine
//     throws
//
// Threads:   pull_rows starts as many as it is asked for and waits for them.
#pragma once

#include "text/quoted.h"

#include <DDImage/Iop.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace velmora::host {

// An op called error(). Says "<node>: <message>", printable.
class DDImage_API OpFailure : public std::runtime_error {
public:
    const std::string node;
    const std::string why;

    OpFailure(const std::string& node, const std::string& why)
        : std::runtime_error(printable(node + ": " + why)), node(node), why(why) {}
};

// Validates for real and throws when the op or one of its inputs has failed.
DDImage_API void validate(DD::Image::Op& op);

// Validates, requests all of an op's box and opens it, until this goes.
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
    int span = 0;          // columns at a time; 0 for whole rows
    unsigned shuffled = 0; // another order of spans for each number; 0 for bottom row first
};

// Takes what get() made of one span. Several at once may come from different threads.
typedef std::function<void(const DD::Image::Row& row, int y, int x, int r)> RowSink;

// Pulls every pixel of `box` once. Stops early, and in silence, when the op is aborted. The first
// exception of any thread stops the others and is thrown again.
DDImage_API void pull_rows(DD::Image::Iop& iop, const DD::Image::Box& box,
                           DD::Image::ChannelMask channels, const Pulling& pulling,
                           const RowSink& sink);

} // namespace velmora::host
