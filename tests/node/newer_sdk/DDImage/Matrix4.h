// SPDX-License-Identifier: BSD-3-Clause

// Matrices of the host, as little of them as a camera's place takes: column by column.
#pragma once

namespace DD::Image {

template <class T>
class Matrix4Of {
public:
    T* operator[](int column) { return columns[column]; }
    const T* operator[](int column) const { return columns[column]; }

private:
    T columns[4][4];
};

typedef Matrix4Of<float> Matrix4;

} // namespace DD::Image
