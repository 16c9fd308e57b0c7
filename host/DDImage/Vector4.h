// SPDX-License-Identifier: BSD-3-Clause

// Four floats: a homogeneous point, the point (x, y, z) / w.
//
// Errors:    divide_w() with w = 0 gives infinities or NaN.
#pragma once

#include <DDImage/Vector3.h>

namespace DD::Image {

class Vector4 {
public:
    float x, y, z, w;

    Vector4() : x(0), y(0), z(0), w(0) {}
    Vector4(float x, float y, float z, float w) : x(x), y(y), z(z), w(w) {}
    Vector4(const Vector3& v, float w) : x(v.x), y(v.y), z(v.z), w(w) {}

    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
    float operator[](int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
    bool operator==(const Vector4& v) const { return x == v.x && y == v.y && z == v.z && w == v.w; }
    bool operator!=(const Vector4& v) const { return !(*this == v); }
    Vector4 operator+(const Vector4& v) const { return {x + v.x, y + v.y, z + v.z, w + v.w}; }
    Vector4 operator-(const Vector4& v) const { return {x - v.x, y - v.y, z - v.z, w - v.w}; }
    Vector4 operator*(float f) const { return {x * f, y * f, z * f, w * f}; }
    Vector3 divide_w() const { return {x / w, y / w, z / w}; }
    Vector3 truncate_w() const { return {x, y, z}; }
};

} // namespace DD::Image
