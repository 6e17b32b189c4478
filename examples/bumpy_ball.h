// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <cmath>
#include <cstdint>

/// A closed mesh to play with: a ball with bumps, of rows * columns + 2 vertices.
inline korvalite::Mesh bumpyBall(std::uint32_t rows, std::uint32_t columns) {
    constexpr float kPi = 3.14159265F;
    korvalite::Mesh mesh;
    const auto addVertex = [&](float latitude, float longitude) {
        const float radius = 1 + 0.1F * std::sin(9 * latitude) * std::sin(7 * longitude);
        mesh.positions.push_back(radius * std::sin(latitude) * std::cos(longitude));
        mesh.positions.push_back(radius * std::sin(latitude) * std::sin(longitude));
        mesh.positions.push_back(radius * std::cos(latitude));
    };
    const auto addTriangle = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        mesh.triangles.insert(mesh.triangles.end(), {a, b, c});
    };
    for (std::uint32_t row = 0; row < rows; ++row) {
        const float latitude = kPi * static_cast<float>(row + 1) / static_cast<float>(rows + 1);
        for (std::uint32_t column = 0; column < columns; ++column)
            addVertex(latitude, 2 * kPi * static_cast<float>(column) / static_cast<float>(columns));
    }
    const std::uint32_t north = rows * columns;
    const std::uint32_t south = north + 1;
    addVertex(0, 0);
    addVertex(kPi, 0);
    for (std::uint32_t column = 0; column < columns; ++column) {
        const std::uint32_t next = (column + 1) % columns;
        addTriangle(north, column, next);
        for (std::uint32_t row = 0; row + 1 < rows; ++row) {
            const std::uint32_t above = row * columns;
            const std::uint32_t below = above + columns;
            addTriangle(above + column, below + column, below + next);
            addTriangle(above + column, below + next, above + next);
        }
        const std::uint32_t last = (rows - 1) * columns;
        addTriangle(last + column, south, last + next);
    }
    return mesh;
}
