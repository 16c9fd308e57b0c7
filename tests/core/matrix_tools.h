// SPDX-License-Identifier: BSD-3-Clause

// Plain linear algebra in long double, and random matrices, to measure the library's against.
#pragma once

#include "core/newmatrix.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

struct Plain {
    long double e[4][4];
};

template <class real>
Plain plain(const Matrix4<real>& m) {
    Plain p;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            p.e[i][j] = m(i, j);
    return p;
}

inline Plain identity() {
    return {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
}

inline Plain product(const Plain& a, const Plain& b) {
    Plain p = {};
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            for (int k = 0; k < 4; k++)
                p.e[i][j] += a.e[i][k] * b.e[k][j];
    return p;
}

inline Plain transpose(const Plain& a) {
    Plain p;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            p.e[i][j] = a.e[j][i];
    return p;
}

// The sum over all permutations of the columns, signed by their inversions.
inline long double determinant(const Plain& a) {
    int column[4] = {0, 1, 2, 3};
    long double sum = 0;
    do {
        int inversions = 0;
        for (int i = 0; i < 4; i++)
            for (int j = i + 1; j < 4; j++)
                inversions += column[i] > column[j];
        long double term = inversions % 2 ? -1 : 1;
        for (int i = 0; i < 4; i++)
            term *= a.e[i][column[i]];
        sum += term;
    } while (std::next_permutation(column, column + 4));
    return sum;
}

// Gauss-Jordan elimination with row pivoting.
inline Plain inverse(Plain a) {
    Plain result = identity();
    for (int k = 0; k < 4; k++) {
        int pivot = k;
        for (int i = k + 1; i < 4; i++)
            if (std::fabs(a.e[i][k]) > std::fabs(a.e[pivot][k]))
                pivot = i;
        std::swap(a.e[k], a.e[pivot]);
        std::swap(result.e[k], result.e[pivot]);
        const long double scale = 1 / a.e[k][k];
        for (int j = 0; j < 4; j++) {
            a.e[k][j] *= scale;
            result.e[k][j] *= scale;
        }
        for (int i = 0; i < 4; i++) {
            const long double factor = a.e[i][k];
            for (int j = 0; i != k && j < 4; j++) {
                a.e[i][j] -= factor * a.e[k][j];
                result.e[i][j] -= factor * result.e[k][j];
            }
        }
    }
    return result;
}

// The largest difference between two elements at the same place.
inline long double distance(const Plain& a, const Plain& b) {
    long double largest = 0;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            largest = std::max(largest, std::fabs(a.e[i][j] - b.e[i][j]));
    return largest;
}

template <class real>
Matrix4<real> matrix(const real (&rows)[16]) {
    Matrix4<real> m;
    std::copy(rows, rows + 16, m.e);
    return m;
}

template <class real>
Matrix4<real> diagonal(real a, real b, real c, real d) {
    return matrix<real>({a, 0, 0, 0, 0, b, 0, 0, 0, 0, c, 0, 0, 0, 0, d});
}

// Elements in [-1, 1), and 4 more on the diagonal: far from singular, norm of the inverse below 1.
template <class real>
Matrix4<real> random_matrix(std::mt19937& random) {
    std::uniform_real_distribution<real> element(-1, 1);
    Matrix4<real> m;
    for (real& e : m.e)
        e = element(random);
    for (int i = 0; i < 4; i++)
        m(i, i) += 4;
    return m;
}
