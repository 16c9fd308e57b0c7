// SPDX-License-Identifier: BSD-3-Clause

// Three floats: a point or a direction in space.
//
// Accuracy:  plain float arithmetic, term by term.
#pragma once

#include <cmath>

namespace DD::Image {

class Vector3 {
public:
    float x, y, z;

    Vector3() : x(0), y(0), z(0) {}
    explicit Vector3(float all) : x(all), y(all), z(all) {}
    Vector3(float x, float y, float z) : x(x), y(y), z(z) {}

    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }
    float operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    bool operator==(const Vector3& v) const { return x == v.x && y == v.y && z == v.z; }
    bool operator!=(const Vector3& v) const { return !(*this == v); }
    Vector3 operator-() const { return {-x, -y, -z}; }
    Vector3 operator+(const Vector3& v) const { return {x + v.x, y + v.y, z + v.z}; }
    Vector3 operator-(const Vector3& v) const { return {x - v.x, y - v.y, z - v.z}; }
    Vector3 operator*(float f) const { return {x * f, y * f, z * f}; }
    float dot(const Vector3& v) const { return x * v.x + y * v.y + z * v.z; }
    Vector3 cross(const Vector3& v) const {
        return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
    }
    Vector3 operator/(float f) const { return {x / f, y / f, z / f}; }
    Vector3& operator+=(const Vector3& v) { return *this = *this + v; }
    Vector3& operator-=(const Vector3& v) { return *this = *this - v; }
    Vector3& operator*=(float f) { return *this = *this * f; }
    Vector3& operator/=(float f) { return *this = *this / f; }
    void set(float x, float y, float z) { *this = Vector3(x, y, z); }
    float lengthSquared() const { return dot(*this); }
    float length() const { return std::sqrt(dot(*this)); }

    // Makes the length 1, unless it is 0; returns the old length.
    float normalize() {
        const float before = length();
        if (before > 0)
            *this /= before;
        return before;
    }
};

} // namespace DD::Image
