// SPDX-License-Identifier: MIT
//
// Costs from stored quadrics. For each vertex it ranks, a routine writes `cost` and `partner`, the
// position found by the evaluation to `bestPositions`, and its bit in `hasBestPosition`.
#pragma once

#include "base/bit_array.h"
#include "base/indexed_array.h"
#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "metric/quadric3d.h"

#include <cstdint>

namespace korvalite::core {

/// What the high-speed driver holds in memory: quadrics per triangle and per vertex, and the
/// positions found with the costs.
struct HighSpeedState {
    IndexedArray<Quadric3D> triangleQuadrics;
    IndexedArray<Quadric3D> vertexQuadrics;
    IndexedArray<FloatVec3> bestPositions;
    BitArray hasBestPosition;  // whether an evaluation has written it

    /// Of UpdateNeighbourCosts, kept from collapse to collapse.
    struct Scratch {
        IndexList ring;
        IndexList outerRing;
        IndexList queued;
        BitArray inRing;  // one bit per vertex, all clear between updates
    } scratch;
};

/// Builds the state from nothing and ranks every vertex; does not queue any.
/// REQUIRES: border bits and, with symmetry, the slaves and the plane quadric.
void InitVerticesCost(WorkingMesh& work, HighSpeedState& state);

/// Re-ranks `kept` and its ring and queues them. Adds the current quadrics of the triangles around
/// each of these vertices to the stored vertex quadric, which is not rebuilt.
void UpdateNeighbourCosts(WorkingMesh& work, HighSpeedState& state, std::int32_t kept);

/// Ranks one vertex against its ring using the stored triangle quadrics, with border factor and
/// plane quadric, and writes its `cost` and `partner`. REQUIRES: the vertex is not queued.
void RecomputeVertexCostFromStored(WorkingMesh& work, const HighSpeedState& state,
                                   std::int32_t vertex, IndexList& ring);

}  // namespace korvalite::core
