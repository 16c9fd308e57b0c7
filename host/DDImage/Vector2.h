// SPDX-License-Identifier: BSD-3-Clause

// Two floats: a point or a size on a plane.
//
// Accuracy:  plain float arithmetic, term by term.
#pragma once

#include <cmath>

namespace DD::Image {

class Vector2 {
public:
    float x, y;

    Vector2() : x(0), y(0) {}
    Vector2(float x, float y) : x(x), y(y) {}

    float& operator[](int i) { return i == 0 ? x : y; }
    float operator[](int i) const { return i == 0 ? x : y; }
    bool operator==(const Vector2& v) const { return x == v.x && y == v.y; }
    bool operator!=(const Vector2& v) const { return !(*this == v); }
    Vector2 operator+(const Vector2& v) const { return {x + v.x, y + v.y}; }
    Vector2 operator-(const Vector2& v) const { return {x - v.x, y - v.y}; }
    Vector2 operator*(float f) const { return {x * f, y * f}; }
    float dot(const Vector2& v) const { return x * v.x + y * v.y; }
    Vector2 operator/(float f) const { return {x / f, y / f}; }
    Vector2& operator+=(const Vector2& v) { return *this = *this + v; }
    Vector2& operator-=(const Vector2& v) { return *this = *this - v; }
    Vector2& operator*=(float f) { return *this = *this * f; }
    void set(float x, float y) { *this = Vector2(x, y); }
    float lengthSquared() const { return dot(*this); }
    float length() const { return std::sqrt(dot(*this)); }
};

} // namespace DD::Image
