// SPDX-License-Identifier: MIT
//
// Costs from stored quadrics. Each routine writes `cost` and `partner` of the vertices it ranks,
// and `bestPositions`, the position that the evaluation found, with its bit in `hasBestPosition`.
#pragma once

#include "mesh/bit_array.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Builds triangleQuadrics and vertexQuadrics and ranks every vertex; nothing is queued.
/// REQUIRES: border bits and, with symmetry, the slaves and the plane quadric.
void InitVerticesCost(ProgressiveMesh& pm);

/// Scratch of UpdateNeighbourCosts, kept from collapse to collapse.
struct RingScratch {
    IndexList ring;
    IndexList outerRing;
    IndexList queued;
    IndexList cursors;  // of warmVertexCorners
    BitArray inRing;    // one bit a vertex, all clear between two updates
};

/// Ranks `kept` and its ring again and queues them. The quadrics of all of them grow by the
/// triangles around them as they stand: they are not built anew.
void UpdateNeighbourCosts(ProgressiveMesh& pm, std::int32_t kept, RingScratch& scratch);

}  // namespace korvalite
