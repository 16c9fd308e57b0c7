// SPDX-License-Identifier: BSD-3-Clause

// The frame and the view for which an op makes its output.
//
// Threads:   a value.
#pragma once

#include <DDImage/Hash.h>

namespace DD::Image {

class OutputContext {
public:
    OutputContext() : frame_(0), view_(0) {}

    double frame() const { return frame_; }
    void setFrame(double frame) { frame_ = frame; }
    int view() const { return view_; }
    void setView(int view) { view_ = view; }

    void append(Hash& hash) const {
        hash.append(frame_);
        hash.append(view_);
    }

    bool operator==(const OutputContext& other) const {
        return frame_ == other.frame_ && view_ == other.view_;
    }
    bool operator!=(const OutputContext& other) const { return !(*this == other); }
    bool operator<(const OutputContext& other) const {
        return frame_ != other.frame_ ? frame_ < other.frame_ : view_ < other.view_;
    }
    bool operator>(const OutputContext& other) const { return other < *this; }

private:
    double frame_;
    int view_;
};

} // namespace DD::Image
