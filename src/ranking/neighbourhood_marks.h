// SPDX-License-Identifier: MIT
#pragma once

#include "base/indexed_array.h"
#include "mesh/dmesh.h"

#include <cstdint>

namespace korvalite::core {

/// A thread's marks on vertices while it updates a neighbourhood: 2 bytes per vertex, for each
/// thread.
struct NeighbourhoodMarks {
    // Slots are only 16 bits wide because this array has an entry per vertex of the mesh.
    // COMPAT: vertices past the last slot keep their old costs; outputs depend on it.
    static constexpr std::uint16_t kNoSlot = 65535;

    IndexedArray<std::uint16_t> vertexSlot;  // all kNoSlot between updates

    /// Resizes it for a mesh.
    void prepare(const DMesh& mesh) {
        reserveLarge(vertexSlot, mesh.vertices.size());
        vertexSlot.assign(mesh.vertices.size(), kNoSlot);
    }
};

}  // namespace korvalite::core
