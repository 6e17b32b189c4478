// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_transform.h"

#include <vector>

namespace korva {

namespace {

/// Makes the transform a rotation alone.
void setRotation(const std::vector<double>& quaternion, GltfTransform& transform) {
    const double x = quaternion[0];
    const double y = quaternion[1];
    const double z = quaternion[2];
    const double w = quaternion[3];
    transform.rows = {1 - 2 * (y * y + z * z), 2 * (x * y - z * w),     2 * (x * z + y * w),     0,
                      2 * (x * y + z * w),     1 - 2 * (x * x + z * z), 2 * (y * z - x * w),     0,
                      2 * (x * z - y * w),     2 * (y * z + x * w),     1 - 2 * (x * x + y * y), 0};
}

}  // namespace

GltfTransform transformOf(const GltfItem& node) {
    GltfTransform transform;
    const std::vector<double> matrix = node.numbers("matrix", 16);
    if (!matrix.empty()) {
        for (std::size_t row = 0; row < 3; ++row)
            for (std::size_t column = 0; column < 4; ++column)
                transform.rows[4 * row + column] = matrix[4 * column + row];
        return transform;
    }
    const std::vector<double> rotation = node.numbers("rotation", 4);
    const std::vector<double> scale = node.numbers("scale", 3);
    const std::vector<double> translation = node.numbers("translation", 3);
    if (!rotation.empty()) setRotation(rotation, transform);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3 && !scale.empty(); ++column)
            transform.rows[4 * row + column] *= scale[column];
        if (!translation.empty()) transform.rows[4 * row + 3] = translation[row];
    }
    return transform;
}

GltfTransform operator*(const GltfTransform& first, const GltfTransform& second) {
    GltfTransform product;
    for (std::size_t row = 0; row < 3; ++row) {
        const double* a = &first.rows[4 * row];
        for (std::size_t column = 0; column < 4; ++column) {
            const double* b = &second.rows[column];
            product.rows[4 * row + column] =
                a[0] * b[0] + a[1] * b[4] + a[2] * b[8] + (column == 3 ? a[3] : 0);
        }
    }
    return product;
}

bool isMirroring(const GltfTransform& transform) {
    const auto& m = transform.rows;
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
               m[2] * (m[4] * m[9] - m[5] * m[8]) <
           0;
}

void applyTransform(const GltfTransform& transform, float* points, std::size_t count) {
    if (transform == GltfTransform{}) return;
    const auto& m = transform.rows;
    for (; count > 0; --count, points += 3) {
        const double x = points[0];
        const double y = points[1];
        const double z = points[2];
        points[0] = static_cast<float>(m[0] * x + m[1] * y + m[2] * z + m[3]);
        points[1] = static_cast<float>(m[4] * x + m[5] * y + m[6] * z + m[7]);
        points[2] = static_cast<float>(m[8] * x + m[9] * y + m[10] * z + m[11]);
    }
}

}  // namespace korva
