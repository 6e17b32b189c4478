// SPDX-License-Identifier: MIT
//
// Small meshes in the arrays of the public interface.
#pragma once

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace korvalite::test {

// Vertices on the curve (x, x^2, x^3), so that no two are at one place and no three on a line.
inline Mesh meshOf(std::size_t vertexCount, std::vector<std::uint32_t> triangles) {
    Mesh mesh;
    for (std::size_t i = 0; i < vertexCount; ++i) {
        const auto x = static_cast<float>(i);
        mesh.positions.insert(mesh.positions.end(), {x, x * x, x * x * x});
    }
    mesh.triangles = std::move(triangles);
    return mesh;
}

// Vertex v is at the bits of v; normals outward.
inline Mesh cube() {
    Mesh mesh;
    for (unsigned v = 0; v < 8; ++v) {
        for (unsigned axis = 0; axis < 3; ++axis)
            mesh.positions.push_back(static_cast<float>((v >> axis) & 1U));
    }
    mesh.triangles = {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                      2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5};
    return mesh;
}

// Vertex (c, r) has the index r * (columns + 1) + c. Two triangles for each square for which
// hasSquare(c, r).
template <typename HasSquare>
Mesh gridOf(std::uint32_t columns, std::uint32_t rows, HasSquare hasSquare) {
    Mesh mesh;
    for (std::uint32_t r = 0; r <= rows; ++r) {
        for (std::uint32_t c = 0; c <= columns; ++c) {
            mesh.positions.insert(mesh.positions.end(),
                                  {static_cast<float>(c), static_cast<float>(r), 0});
        }
    }
    for (std::uint32_t r = 0; r < rows; ++r) {
        for (std::uint32_t c = 0; c < columns; ++c) {
            if (!hasSquare(c, r)) continue;
            const std::uint32_t a = r * (columns + 1) + c;
            const std::uint32_t above = a + columns + 1;
            mesh.triangles.insert(mesh.triangles.end(), {a, a + 1, above + 1, a, above + 1, above});
        }
    }
    return mesh;
}

inline Mesh grid(std::uint32_t columns, std::uint32_t rows) {
    return gridOf(columns, rows, [](auto, auto) { return true; });
}

inline void append(Mesh& mesh, const Mesh& other) {
    const auto offset = static_cast<std::uint32_t>(mesh.vertexCount());
    mesh.positions.insert(mesh.positions.end(), other.positions.begin(), other.positions.end());
    for (const std::uint32_t vertex : other.triangles)
        mesh.triangles.push_back(offset + vertex);
}

// A band of squares that closes on itself: vertex 2 i + 1 is above vertex 2 i. Each vertex has its
// own UV point, and two more follow, because the last square does not end at u = 0 but at u = 1.
inline Mesh cylinder(std::uint32_t sides) {
    Mesh mesh;
    for (std::uint32_t i = 0; i < sides; ++i) {
        const auto x = static_cast<float>(i);
        mesh.positions.insert(mesh.positions.end(), {x, x * x, 0, x, x * x, 1});
    }
    for (std::uint32_t i = 0; i <= sides; ++i) {
        const float u = static_cast<float>(i) / static_cast<float>(sides);
        mesh.uvs.insert(mesh.uvs.end(), {u, 0, u, 1});
    }
    for (std::uint32_t i = 0; i < sides; ++i) {
        const std::uint32_t a = 2 * i;
        for (const std::uint32_t uv : {a, a + 2, a + 3, a, a + 3, a + 1}) {
            mesh.triangleUVs.push_back(uv);
            mesh.triangles.push_back(uv % (2 * sides));
        }
    }
    return mesh;
}

}  // namespace korvalite::test
