// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cmath>
#include <DDImage/Matrix4.h>
#include <ostream>

namespace DD::Image {

Matrix4::Matrix4(const float columns[16]) {
    std::copy(columns, columns + 16, &a00);
}

const Matrix4& Matrix4::identity() {
    static const float columns[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    static const Matrix4 made(columns);
    return made;
}

Matrix4 Matrix4::operator*(const Matrix4& m) const {
    Matrix4 product;
    for (int column = 0; column < 4; column++) {
        for (int row = 0; row < 4; row++) {
            // From the first term on, so that the order of additions is fixed.
            float sum = (*this)[0][row] * m[column][0];
            for (int k = 1; k < 4; k++)
                sum += (*this)[k][row] * m[column][k];
            product[column][row] = sum;
        }
    }
    return product;
}

Matrix4 Matrix4::operator*(float f) const {
    Matrix4 scaled;
    std::transform(array(), array() + 16, scaled[0], [f](float element) { return element * f; });
    return scaled;
}

Matrix4 Matrix4::operator+(const Matrix4& m) const {
    Matrix4 sum;
    std::transform(array(), array() + 16, m.array(), sum[0], std::plus<float>());
    return sum;
}

Matrix4 Matrix4::operator-(const Matrix4& m) const {
    Matrix4 difference;
    std::transform(array(), array() + 16, m.array(), difference[0], std::minus<float>());
    return difference;
}

bool Matrix4::operator==(const Matrix4& m) const {
    return std::equal(array(), array() + 16, m.array());
}

Vector4 Matrix4::operator*(const Vector4& v) const {
    Vector4 result;
    for (int row = 0; row < 4; row++)
        result[row] = (*this)[0][row] * v.x + (*this)[1][row] * v.y + (*this)[2][row] * v.z +
                      (*this)[3][row] * v.w;
    return result;
}

Vector3 Matrix4::transform(const Vector3& point) const {
    return (*this * Vector4(point, 1)).truncate_w();
}

Vector3 Matrix4::vtransform(const Vector3& direction) const {
    return (*this * Vector4(direction, 0)).truncate_w();
}

Vector3 Matrix4::ntransform(const Vector3& normal) const {
    return {x_axis().dot(normal), y_axis().dot(normal), z_axis().dot(normal)};
}

Matrix4 Matrix4::transpose() const {
    Matrix4 turned;
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            turned[column][row] = (*this)[row][column];
    return turned;
}

// The signed determinant of the 3x3 matrix without one row and one column.
static double cofactor(const Matrix4& m, int row, int column) {
    const auto element = [&](int i, int j) {
        return double(m[j < column ? j : j + 1][i < row ? i : i + 1]);
    };
    const double minor =
        element(0, 0) * (element(1, 1) * element(2, 2) - element(1, 2) * element(2, 1)) -
        element(0, 1) * (element(1, 0) * element(2, 2) - element(1, 2) * element(2, 0)) +
        element(0, 2) * (element(1, 0) * element(2, 1) - element(1, 1) * element(2, 0));
    return (row + column) % 2 == 0 ? minor : -minor;
}

double Matrix4::determinant() const { // expanded along the first row
    double sum = 0;
    for (int column = 0; column < 4; column++)
        sum += double((*this)[column][0]) * cofactor(*this, 0, column);
    return sum;
}

Matrix4 Matrix4::inverse() const {
    // By Cramer's rule: the transposed cofactors over the determinant.
    const double scale = 1 / determinant();
    Matrix4 inverted;
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            inverted[column][row] = float(cofactor(*this, column, row) * scale);
    return inverted;
}

// ---- transformations ----------------------------------------------------------------------------

void Matrix4::translation(float x, float y, float z) {
    makeIdentity();
    a03 = x;
    a13 = y;
    a23 = z;
}

void Matrix4::scaling(float x, float y, float z) {
    makeIdentity();
    a00 = x;
    a11 = y;
    a22 = z;
}

void Matrix4::rotationX(float angle) {
    makeIdentity();
    a11 = a22 = std::cos(angle);
    a21 = std::sin(angle);
    a12 = -a21;
}

void Matrix4::rotationY(float angle) {
    makeIdentity();
    a00 = a22 = std::cos(angle);
    a02 = std::sin(angle);
    a20 = -a02;
}

void Matrix4::rotationZ(float angle) {
    makeIdentity();
    a00 = a11 = std::cos(angle);
    a10 = std::sin(angle);
    a01 = -a10;
}

void Matrix4::translate(float x, float y, float z) {
    Matrix4 m;
    m.translation(x, y, z);
    *this *= m;
}

void Matrix4::scale(float x, float y, float z) {
    Matrix4 m;
    m.scaling(x, y, z);
    *this *= m;
}

void Matrix4::skew(float a) {
    Matrix4 m = identity();
    m.a01 = std::tan(a);
    *this *= m;
}

void Matrix4::rotateX(float angle) {
    Matrix4 m;
    m.rotationX(angle);
    *this *= m;
}

void Matrix4::rotateY(float angle) {
    Matrix4 m;
    m.rotationY(angle);
    *this *= m;
}

void Matrix4::rotateZ(float angle) {
    Matrix4 m;
    m.rotationZ(angle);
    *this *= m;
}

//     | 2 lens   0      0                        0                      |
//     |   0    2 lens   0                        0                      |
//     |   0      0     (far+near)/(near-far)    2 far near/(near-far)   |    perspective; w' = -z
//     |   0      0     -1                        0                      |
//
// Without perspective w' stays 1 and z is mapped linearly.
void Matrix4::projection(float lens, float near, float far, bool perspective) {
    makeIdentity();
    a00 = a11 = 2 * lens;
    a22 = perspective ? (far + near) / (near - far) : 2 / (near - far);
    a23 = perspective ? 2 * far * near / (near - far) : (far + near) / (near - far);
    if (perspective) {
        a32 = -1;
        a33 = 0;
    }
}

void Matrix4::translationOnly() {
    translation(a03, a13, a23);
}

static float length_or_one(const Vector3& axis) {
    const float length = axis.length();
    return length > 0 ? length : 1;
}

void Matrix4::rotationOnly() {
    const Matrix4 whole = *this;
    makeIdentity();
    for (int column = 0; column < 3; column++) {
        const Vector3 axis(whole[column][0], whole[column][1], whole[column][2]);
        for (int row = 0; row < 3; row++)
            (*this)[column][row] = whole[column][row] / length_or_one(axis);
    }
}

void Matrix4::scaleOnly() {
    scaling(x_axis().length(), y_axis().length(), z_axis().length());
}

std::ostream& operator<<(std::ostream& out, const Matrix4& matrix) {
    for (int row = 0; row < 4; row++)
        for (int column = 0; column < 4; column++)
            out << matrix[column][row] << (column < 3 ? " " : "\n");
    return out;
}

} // namespace DD::Image
