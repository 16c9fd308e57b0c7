// SPDX-License-Identifier: BSD-3-Clause

// Fixed-size vectors and 4x4 matrices in single and double precision.
//
// Shapes:    a matrix is stored row by row; a point is a row vector on the left, p' = p · M:
//
//                | xx xy xz 0 |    row i, column j is m(i, j) = e[4 * i + j];
//            M = | yx yy yz 0 |    the last row is the translation, the last column makes the
//                | zx zy zz 0 |    perspective divisor.
//                | tx ty tz 1 |
//
// Units:     angles in radians, lengths in the caller's unit.
// Errors:    inverting a nearly singular matrix warns on standard error; decompose_lw throws
//            AssertXception. Indices are not checked.
// Threads:   pure functions of their arguments.
#pragma once

#include "core/types.h"

// N elements of T and nothing else; contents unspecified until they are set.
template <class T, int N>
class VectorN {
public:
    T e[N];

    T& operator[](int i) { return e[i]; }
    const T& operator[](int i) const { return e[i]; }
};

typedef VectorN<float, 2> Vector2; // a position in pixels: x, then y
typedef VectorN<float, 3> Color3;  // linear red, green, blue

// A 4x4 matrix of floats or doubles; contents unspecified until they are set.
template <class real>
class Matrix4 {
public:
    real e[16]; // row by row

    real& operator()(int i, int j) { return e[4 * i + j]; }
    const real& operator()(int i, int j) const { return e[4 * i + j]; }

    // A shared identity matrix, created on first use and never destroyed.
    static const Matrix4& the_identity();

    // By full cofactor expansion.
    real determinant() const;

    // The adjugate times 1 / determinant. Warns when |determinant| < 1e-10, and then goes on: the
    // inverse of a singular matrix holds infinities or NaNs.
    Matrix4 inverse() const;

    // Rotation by angles[0..2] = heading about y, pitch about x, bank about z. A point is rotated
    // about z first, then x, then y: the transpose of the column-vector product Ry · Rx · Rz.
    static Matrix4 from_euler_angles(const real* angles);

    // Pinhole projection of a camera that looks along +z: after the division by w' = z / focal a
    // point is at (x · focal / z, y · focal / z), with depth 0 at `near` and 1 at `far`, or at
    // infinity when `far` <= 0. A negative `focal` gives the identity; 0 gives infinities.
    static Matrix4 perspective(real focal, real near, real far);

    // Double precision only: the angles from which from_euler_angles gives this pure rotation.
    // REQUIRES: the pitch is strictly between ±pi/2.
    VectorN<double, 3> orthonormal_to_euler() const;

    // Double precision only: splits an affine matrix without skew into translation, rotation
    // (angles for from_euler_angles) and scale, which is positive even for a mirrored matrix.
    // Throws AssertXception for any other matrix, with a tolerance of 0.0001.
    void decompose_lw(VectorN<double, 3>& translation, VectorN<double, 3>& rotation,
                      VectorN<double, 3>& scale) const;
};

// The ordinary row-by-column product: p · (a * b) = (p · a) · b.
template <class real>
Matrix4<real> operator*(const Matrix4<real>& a, const Matrix4<real>& b) {
    Matrix4<real> product;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            product(i, j) =
                a(i, 0) * b(0, j) + a(i, 1) * b(1, j) + a(i, 2) * b(2, j) + a(i, 3) * b(3, j);
    return product;
}

typedef Matrix4<double> DblMatrix4;

static_assert(sizeof(Vector2) == 2 * sizeof(float), "a vector is its elements");
static_assert(sizeof(Color3) == 3 * sizeof(float), "a vector is its elements");
static_assert(sizeof(Matrix4<float>) == 16 * sizeof(float), "a matrix is its elements");
static_assert(sizeof(DblMatrix4) == 16 * sizeof(double), "a matrix is its elements");

extern template class Matrix4<float>;
template <>
VectorN<double, 3> Matrix4<double>::orthonormal_to_euler() const;
template <>
void Matrix4<double>::decompose_lw(VectorN<double, 3>&, VectorN<double, 3>&,
                                   VectorN<double, 3>&) const;
extern template class Matrix4<double>;
