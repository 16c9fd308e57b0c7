// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "newmatrix"

#include "core/newmatrix.h"
#include "core/xception.h"

#include <cmath>

static const double singular_determinant = 1e-10; // below it, inverse() warns
static const float EPSILON = 0.0001f;             // below it, decompose_lw() takes a number for 0

// The signatures in warnings and assertions, as fixed texts: compilers spell __PRETTY_FUNCTION__ of
// templates differently.
static const char* inverse_signature(const Matrix4<float>&) {
    return "Matrix4<real> Matrix4<real>::inverse() const [with real = float]";
}
static const char* inverse_signature(const Matrix4<double>&) {
    return "Matrix4<real> Matrix4<real>::inverse() const [with real = double]";
}
static const char* const decompose_lw_signature =
    "void Matrix4<real>::decompose_lw(VectorN<T, 3>&, VectorN<T, 3>&, VectorN<T, 3>&) const "
    "[with real = double]";

template <class real>
const Matrix4<real>& Matrix4<real>::the_identity() {
    static const Matrix4& identity = *new Matrix4{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    return identity;
}

// The determinant of the 3x3 block that remains without row i and column j.
template <class real>
static real minor_of(const Matrix4<real>& m, int i, int j) {
    const int r0 = i > 0 ? 0 : 1, r1 = i > 1 ? 1 : 2, r2 = i > 2 ? 2 : 3;
    const int c0 = j > 0 ? 0 : 1, c1 = j > 1 ? 1 : 2, c2 = j > 2 ? 2 : 3;
    return m(r0, c0) * m(r1, c1) * m(r2, c2) - m(r0, c0) * m(r1, c2) * m(r2, c1) +
           m(r0, c1) * m(r1, c2) * m(r2, c0) - m(r0, c1) * m(r1, c0) * m(r2, c2) +
           m(r0, c2) * m(r1, c0) * m(r2, c1) - m(r0, c2) * m(r1, c1) * m(r2, c0);
}

template <class real>
static real cofactor_of(const Matrix4<real>& m, int i, int j) {
    return (i + j) % 2 ? -minor_of(m, i, j) : minor_of(m, i, j);
}

template <class real>
real Matrix4<real>::determinant() const {
    const Matrix4& m = *this;
    // All 24 products: even permutations of the columns are added, odd ones subtracted. Their order
    // decides the rounding of the result.
    return m(0, 0) * m(1, 1) * m(2, 2) * m(3, 3) - m(0, 0) * m(1, 1) * m(2, 3) * m(3, 2) +
           m(0, 0) * m(1, 2) * m(2, 3) * m(3, 1) - m(0, 0) * m(1, 2) * m(2, 1) * m(3, 3) +
           m(0, 0) * m(1, 3) * m(2, 1) * m(3, 2) - m(0, 0) * m(1, 3) * m(2, 2) * m(3, 1) -
           m(0, 1) * m(1, 2) * m(2, 3) * m(3, 0) + m(0, 1) * m(1, 2) * m(2, 0) * m(3, 3) -
           m(0, 1) * m(1, 3) * m(2, 0) * m(3, 2) + m(0, 1) * m(1, 3) * m(2, 2) * m(3, 0) -
           m(0, 1) * m(1, 0) * m(2, 2) * m(3, 3) + m(0, 1) * m(1, 0) * m(2, 3) * m(3, 2) +
           m(0, 2) * m(1, 3) * m(2, 0) * m(3, 1) - m(0, 2) * m(1, 3) * m(2, 1) * m(3, 0) +
           m(0, 2) * m(1, 0) * m(2, 1) * m(3, 3) - m(0, 2) * m(1, 0) * m(2, 3) * m(3, 1) +
           m(0, 2) * m(1, 1) * m(2, 3) * m(3, 0) - m(0, 2) * m(1, 1) * m(2, 0) * m(3, 3) -
           m(0, 3) * m(1, 0) * m(2, 1) * m(3, 2) + m(0, 3) * m(1, 0) * m(2, 2) * m(3, 1) -
           m(0, 3) * m(1, 1) * m(2, 2) * m(3, 0) + m(0, 3) * m(1, 1) * m(2, 0) * m(3, 2) -
           m(0, 3) * m(1, 2) * m(2, 0) * m(3, 1) + m(0, 3) * m(1, 2) * m(2, 1) * m(3, 0);
}

template <class real>
Matrix4<real> Matrix4<real>::inverse() const {
    const real det = determinant();
    if (std::fabs(double(det)) < singular_determinant)
        Xception::warning(inverse_signature(*this),
                          "matrix appears to be singular; inverse may not be reliable");

    // The adjugate is the transposed matrix of the cofactors.
    const real scale = 1 / det;
    Matrix4 result;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            result(i, j) = cofactor_of(*this, j, i) * scale;
    return result;
}

template <class real>
Matrix4<real> Matrix4<real>::from_euler_angles(const real* angles) {
    // Heading (0), pitch (1), bank (2); the product of the three rotations, multiplied out.
    const real s0 = std::sin(angles[0]), c0 = std::cos(angles[0]);
    const real s1 = std::sin(angles[1]), c1 = std::cos(angles[1]);
    const real s2 = std::sin(angles[2]), c2 = std::cos(angles[2]);
    // clang-format off
    return Matrix4{{
        c0 * c2 + s0 * s1 * s2,  c1 * s2,  c0 * s1 * s2 - s0 * c2,  0,
        s0 * s1 * c2 - c0 * s2,  c1 * c2,  c0 * s1 * c2 + s0 * s2,  0,
        s0 * c1,                 -s1,      c0 * c1,                 0,
        0,                       0,        0,                       1,
    }};
    // clang-format on
}

template <class real>
Matrix4<real> Matrix4<real>::perspective(real focal, real near, real far) {
    if (focal < 0)
        return the_identity();
    // z' = a (z - near) and w' = b z, so that the depth z' / w' is 0 at `near` and 1 at `far`.
    const real b = 1 / focal;
    const real a = far > 0 ? 1 / ((1 - near / far) * focal) : 1 / focal;
    // clang-format off
    return Matrix4{{
        1, 0, 0,         0,
        0, 1, 0,         0,
        0, 0, a,         b,
        0, 0, -near * a, 0,
    }};
    // clang-format on
}

template <>
VectorN<double, 3> Matrix4<double>::orthonormal_to_euler() const {
    // Read from the last row and the middle column of the matrix in from_euler_angles, where the
    // angles appear alone or in pairs of equal factors.
    const Matrix4& m = *this;
    return {{std::atan2(m(2, 0), m(2, 2)), std::asin(-m(2, 1)), std::atan2(m(0, 1), m(1, 1))}};
}

template <>
void Matrix4<double>::decompose_lw(VectorN<double, 3>& translation, VectorN<double, 3>& rotation,
                                   VectorN<double, 3>& scale) const {
    const Matrix4& m = *this;
    const auto negligible = [](double value) { return fabsf(float(value)) < EPSILON; };

    // Affine: the last column is that of the identity.
    XASSERT_AT(negligible(m(0, 3)) && negligible(m(1, 3)) && negligible(m(2, 3)) &&
                   negligible(m(3, 3) - 1),
               "fabsf(m(0,3)) < EPSILON && fabsf(m(1,3)) < EPSILON && fabsf(m(2,3)) < EPSILON && "
               "fabsf(m(3,3)-1) < EPSILON",
               decompose_lw_signature, 133);
    translation = {{m(3, 0), m(3, 1), m(3, 2)}};

    // The lengths of the rows are the scale, taken in float; the rows divided by them the rotation.
    Matrix4 rs = the_identity();
    for (int i = 0; i < 3; i++) {
        const float squared = float(m(i, 0) * m(i, 0) + m(i, 1) * m(i, 1) + m(i, 2) * m(i, 2));
        scale[i] = double(sqrtf(squared));
        for (int j = 0; j < 3; j++)
            rs(i, j) = m(i, j) / scale[i];
    }

    // No skew: the rows are perpendicular.
    const auto dot = [&rs](int a, int b) {
        return rs(a, 0) * rs(b, 0) + rs(a, 1) * rs(b, 1) + rs(a, 2) * rs(b, 2);
    };
    XASSERT_AT(negligible(dot(0, 1)) && negligible(dot(0, 2)) && negligible(dot(1, 2)),
               "fabsf(rs[0][0]*rs[1][0] + rs[0][1]*rs[1][1] + rs[0][2]*rs[1][2]) < EPSILON && "
               "fabsf(rs[0][0]*rs[2][0] + rs[0][1]*rs[2][1] + rs[0][2]*rs[2][2]) < EPSILON && "
               "fabsf(rs[1][0]*rs[2][0] + rs[1][1]*rs[2][1] + rs[1][2]*rs[2][2]) < EPSILON",
               decompose_lw_signature, 156);
    rotation = rs.orthonormal_to_euler();
}

template class Matrix4<float>;
template class Matrix4<double>;
