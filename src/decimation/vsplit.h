// SPDX-License-Identifier: MIT
//
// One reversible half-edge collapse of a vertex v onto its `partner` w (H. Hoppe, "Progressive
// Meshes", 1996). w itself is not kept here: v's vertex record names it for ever.
#pragma once

#include "geometry/vec3.h"
#include "mesh/dmesh.h"

#include <cstdint>
#include <vector>

namespace korvalite {

/// A pair of UV indices: the one of the removed vertex and the one it was merged into.
struct UVIndexPair {
    std::int32_t oldIndex = kNone;
    std::int32_t newIndex = kNone;
};

/// `position`, `savedColor` and `savedUVs` are exchanged with the mesh whenever the record is
/// applied in either direction: a record always holds the state that is not on the mesh.
struct VSplit {
    std::int32_t vertex = kNone;                 // the removed vertex v
    FloatVec3 position;                          // where w stood before the collapse
    std::vector<std::int32_t> corners;           // every corner that named v
    std::vector<std::int32_t> removedTriangles;  // those that became degenerate, mostly two
    std::vector<UVCoord> savedUVs;               // one per entry of uvIndexPairs
    std::vector<std::int32_t> cornerUVIndices;   // parallel to corners: the UV indices before
    std::vector<UVIndexPair> uvIndexPairs;
    std::uint32_t savedColor = 0;  // w's colour before the collapse

    /// Back to the empty record; the lists keep their capacity.
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

/// What the driver and the collapse tell each other beside the record.
struct CollapseFlags {
    bool collapsed = false;          // the collapse stands
    bool survivorWasBorder = false;  // w's border bit before it; needed to undo
};

}  // namespace korvalite
