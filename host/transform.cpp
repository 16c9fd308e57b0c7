#include "host/transform.h"

#include "host/angles.h"

#include <algorithm>
#include <cmath>

namespace velmora {

HostMatrix Transform::matrix() const {
    const double x = rotate[0] * radians_per_degree;
    const double y = rotate[1] * radians_per_degree;
    const double z = rotate[2] * radians_per_degree;
    const double cx = std::cos(x), sx = std::sin(x);
    const double cy = std::cos(y), sy = std::sin(y);
    const double cz = std::cos(z), sz = std::sin(z);

    // | cy  0  sy |   | 1  0   0  |   | cz -sz 0 |
    // | 0   1  0  | · | 0  cx -sx | · | sz  cz 0 |
    // | -sy 0  cy |   | 0  sx  cx |   | 0   0  1 |
    // clang-format off
    const double columns[16] = {
        cy * cz + sy * sx * sz,  cx * sz,       cy * sx * sz - sy * cz,  0,
        sy * sx * cz - cy * sz,  cx * cz,       sy * sz + cy * sx * cz,  0,
        sy * cx,                 -sx,           cy * cx,                 0,
        translate[0],            translate[1],  translate[2],            1,
    };
    // clang-format on
    HostMatrix matrix;
    std::copy(columns, columns + 16, matrix.begin());
    return matrix;
}

HostMatrix multiply(const float a[16], const float b[16]) {
    HostMatrix product;
    for (std::size_t column = 0; column < 4; column++) {
        for (std::size_t row = 0; row < 4; row++) {
            float sum = a[row] * b[4 * column];
            for (std::size_t k = 1; k < 4; k++)
                sum += a[4 * k + row] * b[4 * column + k];
            product[4 * column + row] = sum;
        }
    }
    return product;
}

std::array<double, 3> look_at_rotation(double ra, double dec, double roll) {
    return {dec, ra - 90.0, roll};
}

} // namespace velmora
