// SPDX-License-Identifier: MIT
//
// Surfaces for tests of measuring.
#pragma once

#include "library/small_meshes.h"
#include "support/random.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>

namespace korvalite::test {

inline Mesh moved(Mesh mesh, const std::array<float, 3>& by, float scale = 1) {
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
        mesh.positions[i] = scale * mesh.positions[i] + by[i % 3];
    return mesh;
}

inline Mesh square(float z) {
    return {.positions = {0, 0, z, 1, 0, z, 1, 1, z, 0, 1, z},
            .triangles = {0, 1, 2, 0, 2, 3},
            .colors = {},
            .mask = {},
            .uvs = {},
            .triangleUVs = {}};
}

/// Normals outward; the poles have a vertex for each column.
inline Mesh sphere(std::uint32_t columns, float radius) {
    const std::uint32_t rows = columns / 2;
    Mesh mesh = grid(columns, rows);
    for (std::size_t v = 0; v < mesh.vertexCount(); ++v) {
        float* p = &mesh.positions[3 * v];
        const double east = 2 * std::numbers::pi * static_cast<double>(p[0]) / columns;
        const double south = std::numbers::pi * static_cast<double>(p[1]) / rows;
        p[0] = radius * static_cast<float>(std::sin(south) * std::cos(east));
        p[1] = radius * static_cast<float>(-std::sin(south) * std::sin(east));
        p[2] = radius * static_cast<float>(std::cos(south));
    }
    return mesh;
}

/// Triangles without any order, which cross each other.
inline Mesh soup(std::uint32_t triangles, std::uint32_t seed, float size = 0.2F) {
    core::test::Random random(seed);
    Mesh mesh;
    for (std::uint32_t t = 0; t < triangles; ++t) {
        const std::array<float, 3> center{random.around(1), random.around(1), random.around(1)};
        for (std::uint32_t k = 0; k < 3; ++k) {
            for (const float c : center)
                mesh.positions.push_back(c + random.around(size));
            mesh.triangles.push_back(3 * t + k);
        }
    }
    return mesh;
}

}  // namespace korvalite::test
