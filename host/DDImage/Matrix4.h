// SPDX-License-Identifier: BSD-3-Clause

// A 4x4 matrix of floats for column vectors, kept column by column.
//
//     | a00 a01 a02 a03 |    m[column][row] is a<row><column>; array() runs down the columns:
//     | a10 a11 a12 a13 |    a00, a10, a20, a30, a01, …
//     | a20 a21 a22 a23 |
//     | a30 a31 a32 a33 |    p' = M · p; the translation is a03, a13, a23.
//
// Units:     angles in radians.
// Accuracy:  products and sums in float, from the first term to the last; inverse and determinant
//            in double, the inverse then rounded to float.
// Threads:   a value.
#pragma once

#include <DDImage/DDImage_API.h>
#include <DDImage/Hash.h>
#include <DDImage/Vector2.h>
#include <DDImage/Vector3.h>
#include <DDImage/Vector4.h>

#include <iosfwd>

namespace DD::Image {

class DDImage_API Matrix4 {
public:
    // Named in order of application: eSRT scales first and translates last, eZXY rotates about z
    // first and about y last.
    enum TransformOrder { eSRT = 0, eSTR, eRST, eRTS, eTSR, eTRS };
    enum RotationOrder { eXYZ = 0, eXZY, eYXZ, eYZX, eZXY, eZYX };

    float a00, a10, a20, a30;
    float a01, a11, a21, a31;
    float a02, a12, a22, a32;
    float a03, a13, a23, a33;

    // Leaves the elements unspecified, as in the host: call makeIdentity().
    Matrix4() {}

    // Sixteen floats column by column, as array() gives them.
    explicit Matrix4(const float columns[16]);

    // A column.
    float* operator[](int column) { return &a00 + 4 * column; }
    const float* operator[](int column) const { return &a00 + 4 * column; }
    const float* array() const { return &a00; }

    static const Matrix4& identity();
    void makeIdentity() { *this = identity(); }

    // Products apply from the right: (a * b) * v is a * (b * v).
    Matrix4 operator*(const Matrix4& m) const;
    Matrix4& operator*=(const Matrix4& m) { return *this = *this * m; }
    Matrix4 operator*(float f) const;
    Matrix4 operator+(const Matrix4& m) const;
    Matrix4 operator-(const Matrix4& m) const;
    bool operator==(const Matrix4& m) const;
    bool operator!=(const Matrix4& m) const { return !(*this == m); }

    // Points, directions and normals.
    Vector4 operator*(const Vector4& v) const;
    Vector4 transform(const Vector4& v) const { return *this * v; }
    Vector4 transform(const Vector3& v, float w) const { return *this * Vector4(v, w); }
    Vector3 transform(const Vector3& point) const;  // with w = 1; drops w
    Vector2 transform(const Vector2& point) const { // with z = 0, w = 1; drops z and w
        const Vector3 moved = transform(Vector3(point.x, point.y, 0));
        return {moved.x, moved.y};
    }
    Vector3 vtransform(const Vector3& direction) const; // with w = 0
    Vector3 ntransform(const Vector3& normal) const;    // by the transposed matrix

    [[nodiscard]] Matrix4 transpose() const;
    double determinant() const;

    // Of a singular matrix, elements are infinite or NaN.
    [[nodiscard]] Matrix4 inverse() const;

    // Replace this matrix by the transformation.
    void translation(float x, float y, float z = 0);
    void translation(const Vector3& v) { translation(v.x, v.y, v.z); }
    void scaling(float x, float y, float z);
    void scaling(float s) { scaling(s, s, s); }
    void rotationX(float angle);
    void rotationY(float angle);
    void rotationZ(float angle);

    // Multiply by the transformation from the right: it applies before this matrix.
    void translate(float x, float y, float z = 0);
    void translate(const Vector3& v) { translate(v.x, v.y, v.z); }
    void scale(float x, float y, float z);
    void scale(const Vector3& v) { scale(v.x, v.y, v.z); }
    void scale(float s) { scale(s, s, s); }
    void skew(float a); // x moves by tan(a) per y
    void rotateX(float angle);
    void rotateY(float angle);
    void rotateZ(float angle);
    void rotate(float angle) { rotateZ(angle); }

    // Becomes the projection to [-1, 1] of a camera that looks along -z: `lens` is focal length
    // over horizontal aperture; depths `near` and `far` are mapped to -1 and 1.
    void projection(float lens, float near, float far, bool perspective = true);

    // The parts of an affine matrix: the images of the axes, and of the origin.
    Vector3 x_axis() const { return {a00, a10, a20}; }
    Vector3 y_axis() const { return {a01, a11, a21}; }
    Vector3 z_axis() const { return {a02, a12, a22}; }
    Vector3 translation() const { return {a03, a13, a23}; }

    // Keep one part and drop the others.
    void translationOnly();
    void rotationOnly(); // normalises the axes; those of length 0 stay
    void scaleOnly();

    void append(Hash& hash) const { hash.append(array(), sizeof *this); }
};

static_assert(sizeof(Matrix4) == 16 * sizeof(float), "sixteen floats without gaps");

DDImage_API std::ostream& operator<<(std::ostream& out, const Matrix4& matrix);

} // namespace DD::Image
