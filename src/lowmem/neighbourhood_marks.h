// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/bit_array.h"
#include "mesh/dmesh.h"

#include <cstdint>
#include <vector>

namespace korvalite {

/// What a thread notes about single vertices and triangles while it updates a neighbourhood: 2
/// bytes a vertex and 1 bit a triangle, for each thread.
struct NeighbourhoodMarks {
    // Slots are 16 bits wide because this array is as long as the mesh.
    static constexpr std::uint16_t kNoSlot = 65535;

    std::vector<std::uint16_t> vertexSlot;  // all kNoSlot between two updates
    BitArray triangleMark;                  // all clear between two updates

    /// Sizes both for a mesh.
    void prepare(const DMesh& mesh) {
        reserveLarge(vertexSlot, mesh.vertices.size());
        vertexSlot.assign(mesh.vertices.size(), kNoSlot);
        triangleMark.Free();
        triangleMark.Resize(mesh.triangleCount(), false);
    }
};

}  // namespace korvalite
