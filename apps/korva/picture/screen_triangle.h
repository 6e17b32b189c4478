// SPDX-License-Identifier: MIT
#pragma once

#include "korva/picture/camera.h"

#include <korvalite/korvalite.h>

#include <array>
#include <cstddef>
#include <utility>

namespace korva {

/// A triangle in the picture, in units of samples. Corners are on a grid that is too fine to
/// see, but coarse enough that doubles compute the edge functions without rounding: each sample on
/// a shared edge belongs to exactly one of the two triangles.
struct ScreenTriangle {
    std::array<double, 3> x;
    std::array<double, 3> y;
    std::array<double, 3> z;
    double area;    // twice, above 0
    bool seesBack;  // then the last two corners are swapped

    /// The function of the edge opposite to a corner: 0 on it, `area` at the corner.
    [[nodiscard]] double edge(std::size_t corner, double px, double py) const {
        const std::size_t a = (corner + 1) % 3;
        const std::size_t b = (corner + 2) % 3;
        return (y[b] - y[a]) * (px - x[a]) - (x[b] - x[a]) * (py - y[a]);
    }

    /// Whether samples exactly on the edge belong to this triangle; the reversed edge, which a
    /// neighbour has, says the opposite.
    [[nodiscard]] bool ownsEdge(std::size_t corner) const {
        const std::size_t a = (corner + 1) % 3;
        const std::size_t b = (corner + 2) % 3;
        return y[b] > y[a] || (y[b] == y[a] && x[b] < x[a]);
    }

    /// Which corner of the triangle in the mesh this is.
    [[nodiscard]] std::size_t cornerInMesh(std::size_t corner) const {
        return seesBack && corner > 0 ? 3 - corner : corner;
    }
};

/// False if a vertex is not finite or the triangle has no area in the picture.
[[nodiscard]] inline bool project(const korvalite::Mesh& mesh, std::size_t triangle,
                                  const Projection& projection, ScreenTriangle& result) {
    // Adding and subtracting this rounds to 1/256.
    constexpr double kGrid = 1.5 * static_cast<double>(std::size_t{1} << 44U);
    for (std::size_t corner = 0; corner < 3; ++corner) {
        const std::size_t vertex = mesh.triangles[3 * triangle + corner];
        const Vector3 point = projection(&mesh.positions[3 * vertex]);
        result.x[corner] = (point[0] + kGrid) - kGrid;
        result.y[corner] = (point[1] + kGrid) - kGrid;
        result.z[corner] = point[2];
    }
    result.area = result.edge(0, result.x[0], result.y[0]);
    result.seesBack = result.area < 0;
    if (result.seesBack) {
        result.area = -result.area;
        std::swap(result.x[1], result.x[2]);
        std::swap(result.y[1], result.y[2]);
        std::swap(result.z[1], result.z[2]);
    }
    return result.area > 0 && result.area < 1e300;  // false for NaN too
}

}  // namespace korva
