// SPDX-License-Identifier: MIT
//
// One reversible half-edge collapse of a removed vertex onto a kept one (H. Hoppe, "Progressive
// Meshes", 1996). The kept vertex is not stored here: it is the `partner` of the removed one.
#pragma once

#include "geometry/vec3.h"
#include "mesh/corner_lists.h"

#include <cstdint>
#include <vector>

namespace korvalite::core {

/// A UV index of the removed vertex and the UV index it was merged into.
struct UVIndexPair {
    std::int32_t oldIndex = kNone;
    std::int32_t newIndex = kNone;
};

/// `position`, `savedColor` and `savedUVs` are swapped with the mesh whenever the record is
/// applied, in either direction: a record always holds the values that the mesh does not.
struct VSplit {
    std::int32_t vertex = kNone;    // the removed vertex
    FloatVec3 position;             // of the kept vertex before the collapse
    IndexList corners;              // every corner that was at the removed vertex
    IndexList removedTriangles;     // those that became degenerate, usually two
    std::vector<UVCoord> savedUVs;  // one per entry of uvIndexPairs
    IndexList cornerUVIndices;      // parallel to corners: their old UV indices
    std::vector<UVIndexPair> uvIndexPairs;
    std::uint32_t savedColor = 0;  // of the kept vertex before the collapse

    /// Empties the record; the lists keep their capacity.
    void clear() {
        vertex = kNone;
        position = {};
        corners.clear();
        removedTriangles.clear();
        savedUVs.clear();
        cornerUVIndices.clear();
        uvIndexPairs.clear();
        savedColor = 0;
    }
};

/// What the driver and the collapse exchange besides the record.
struct CollapseFlags {
    bool collapsed = false;          // the collapse has not been undone
    bool survivorWasBorder = false;  // the kept vertex's bit before it; needed to undo
};

}  // namespace korvalite::core
