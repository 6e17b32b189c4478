// SPDX-License-Identifier: MIT
//
// How the arrays of a MeshView are walked, and what their sizes must be.
#pragma once

#include <korvalite/korvalite.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace korvalite {

/// Throws Error(BadMesh) unless the sizes of the arrays fit each other and the limits of the core.
void requireFittingSizes(const MeshView& mesh);

/// Calls visit(triangle, corners) for each triangle in order, quads split; the corners are places
/// in `faces` and `faceUVs`. REQUIRES: requireFittingSizes has passed.
template <typename Visit>
void forEachTriangle(const MeshView& mesh, Visit visit) {
    using Corners = std::array<std::size_t, 3>;
    std::size_t triangle = 0;
    for (std::size_t face = 0; face < mesh.faces.size(); face += mesh.verticesPerFace) {
        visit(triangle++, Corners{face, face + 1, face + 2});
        if (mesh.verticesPerFace == 4 && mesh.faces[face + 3] != kNoVertex)
            visit(triangle++, Corners{face, face + 2, face + 3});
    }
}

[[nodiscard]] std::size_t countTriangles(const MeshView& mesh);

/// Throws Error(BadMesh) if a coordinate of the vertex is not finite. REQUIRES: the vertex exists.
void requireFinite(const MeshView& mesh, std::size_t vertex);

/// Throws the Error(BadMesh) for an index that is not below `count`.
[[noreturn]] void refuseIndex(std::size_t triangle, const char* what, std::uint32_t index,
                              std::size_t count);

}  // namespace korvalite
