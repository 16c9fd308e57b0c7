// SPDX-License-Identifier: BSD-3-Clause

// A rectangle of pixels.
//
// Shapes:    half-open: columns [x, r), rows [y, t), counted from the bottom row up. A box of at
//            most one pixel is "constant", and is ignored when boxes are merged.
// Threads:   a value.
#pragma once

#include <algorithm>

namespace DD::Image {

class Box {
public:
    Box() : x_(0), y_(0), r_(1), t_(1) {}
    Box(int x, int y, int r, int t) : x_(x), y_(y), r_(r), t_(t) {}

    int x() const { return x_; }
    int y() const { return y_; }
    int r() const { return r_; }
    int t() const { return t_; }
    int w() const { return r_ - x_; }
    int h() const { return t_ - y_; }
    void x(int value) { x_ = value; }
    void y(int value) { y_ = value; }
    void r(int value) { r_ = value; }
    void t(int value) { t_ = value; }

    float center_x() const { return float(x_ + r_) / 2; }
    float center_y() const { return float(y_ + t_) / 2; }

    void set(int x, int y, int r, int t) { *this = Box(x, y, r, t); }
    void set(const Box& other) { *this = other; }

    // One pixel, enough for an image of one colour.
    void clear() { *this = Box(); }
    bool is_constant() const { return w() <= 1 && h() <= 1; }
    long area() const { return long(w()) * h(); }

    void move(int dx, int dy) { set(x_ + dx, y_ + dy, r_ + dx, t_ + dy); }
    void pad(int amount) { pad(-amount, -amount, amount, amount); }
    void pad(int dx, int dy, int dr, int dt) { set(x_ + dx, y_ + dy, r_ + dr, t_ + dt); }

    // Becomes the smallest box around both.
    void merge(const Box& other) {
        if (other.is_constant())
            return;
        if (is_constant())
            *this = other;
        else
            set(std::min(x_, other.x_), std::min(y_, other.y_), std::max(r_, other.r_),
                std::max(t_, other.t_));
    }

    void merge(int x, int y, int r, int t) { merge(Box(x, y, r, t)); }

    // Grows to include the pixel.
    void merge(int x, int y) {
        if (is_constant())
            set(x, y, x + 1, y + 1);
        else
            set(std::min(x_, x), std::min(y_, y), std::max(r_, x + 1), std::max(t_, y + 1));
    }

    // Becomes what both have in common; of disjoint boxes one pixel, as after clear().
    void intersect(const Box& other) {
        set(std::max(x_, other.x_), std::max(y_, other.y_), std::min(r_, other.r_),
            std::min(t_, other.t_));
        if (r_ <= x_ || t_ <= y_)
            clear();
    }

    void intersect(int x, int y, int r, int t) { intersect(Box(x, y, r, t)); }

    // The nearest column and row in the box.
    int clampx(int x) const { return std::max(x_, std::min(x, r_ - 1)); }
    int clampy(int y) const { return std::max(y_, std::min(y, t_ - 1)); }

    bool operator==(const Box& other) const {
        return x_ == other.x_ && y_ == other.y_ && r_ == other.r_ && t_ == other.t_;
    }
    bool operator!=(const Box& other) const { return !(*this == other); }

private:
    int x_, y_, r_, t_;
};

} // namespace DD::Image
