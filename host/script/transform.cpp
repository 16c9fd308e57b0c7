// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/transform.h"

#include "host/script/angles.h"

#include <cmath>

namespace velmora::host {

namespace {

struct Matrix {
    double row[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

} // namespace

// Sums start from their first term, not from 0, so that -0 survives.
static Matrix operator*(const Matrix& a, const Matrix& b) {
    Matrix product;
    for (int i = 0; i < 4; i++) {
        for (int j = 0; j < 4; j++) {
            double sum = a.row[i][0] * b.row[0][j];
            for (int k = 1; k < 4; k++)
                sum += a.row[i][k] * b.row[k][j];
            product.row[i][j] = sum;
        }
    }
    return product;
}

static Matrix moved(const std::array<double, 3>& by, double sign = 1) {
    Matrix m;
    for (int i = 0; i < 3; i++)
        m.row[i][3] = sign * by[std::size_t(i)];
    return m;
}

static Matrix scaled(const std::array<double, 3>& by, double uniform) {
    Matrix m;
    for (int i = 0; i < 3; i++)
        m.row[i][i] = by[std::size_t(i)] * uniform;
    return m;
}

// A rotation about axis 0, 1 or 2, which takes the next axis towards the one after it.
static Matrix turned(int axis, double degrees) {
    const double angle = degrees * radians_per_degree;
    const int next = (axis + 1) % 3, after = (axis + 2) % 3;
    Matrix m;
    m.row[next][next] = m.row[after][after] = std::cos(angle);
    m.row[after][next] = std::sin(angle);
    m.row[next][after] = -m.row[after][next];
    return m;
}

// Matrices apply to column vectors: the first rotation is the rightmost factor.
static Matrix turned(const std::array<double, 3>& by, RotationOrder order) {
    static const int axes[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                                   {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    const int* const axis = axes[int(order)];
    const auto turn = [&](int i) { return turned(axis[i], by[std::size_t(axis[i])]); };
    return turn(2) * turn(1) * turn(0);
}

HostMatrix Transform::matrix() const {
    // The parts, and the orders in which they apply.
    const Matrix s = scaled(scaling, uniform_scale);
    const Matrix r = turned(rotate, rotation_order);
    const Matrix t = moved(translate);
    const Matrix* const orders[6][3] = {{&s, &r, &t}, {&s, &t, &r}, {&r, &s, &t},
                                        {&r, &t, &s}, {&t, &s, &r}, {&t, &r, &s}};
    const Matrix* const* const parts = orders[int(order)];
    const Matrix whole = moved(pivot) * (*parts[2] * *parts[1] * *parts[0]) * moved(pivot, -1);

    // Column by column, rounded to float.
    HostMatrix matrix;
    for (std::size_t column = 0; column < 4; column++)
        for (std::size_t row = 0; row < 4; row++)
            matrix[4 * column + row] = float(whole.row[row][column]);
    return matrix;
}

} // namespace velmora::host
