// SPDX-License-Identifier: MIT
//
// Costs from stored quadrics. For each vertex it ranks, a routine writes `cost` and `partner`, the
// position found by the evaluation to `bestPositions`, and its bit in `hasBestPosition`.
#pragma once

#include "mesh/bit_array.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Builds triangleQuadrics and vertexQuadrics and ranks every vertex; does not queue any.
/// REQUIRES: border bits and, with symmetry, the slaves and the plane quadric.
void InitVerticesCost(ProgressiveMesh& pm);

/// Scratch of UpdateNeighbourCosts, kept from collapse to collapse.
struct RingScratch {
    IndexList ring;
    IndexList outerRing;
    IndexList queued;
    IndexList cursors;  // of warmVertexCorners
    BitArray inRing;    // one bit per vertex, all clear between updates
};

/// Re-ranks `kept` and its ring and queues them. Adds the current quadrics of the triangles around
/// each of these vertices to the stored vertex quadric, which is not rebuilt.
void UpdateNeighbourCosts(ProgressiveMesh& pm, std::int32_t kept, RingScratch& scratch);

}  // namespace korvalite
