// SPDX-License-Identifier: MIT
//
// Edge length times curvature (S. Melax, "A Simple, Fast, and Effective Polygon Reduction
// Algorithm", Game Developer, 1998), without the usual factor of one half. All in 32-bit floats.
#pragma once

#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"

#include <cstdint>
#include <vector>

namespace korvalite::core {

/// One unit normal per triangle, zero if the triangle has no area.
IndexedArray<FloatVec3> computeTriangleNormals(const DMesh& mesh);

/// The cost of collapsing u onto its neighbour x. For each triangle at u, takes the smallest turn
/// between its normal and that of a triangle on the edge. The largest of these is the curvature: 0
/// when flat, 2 between opposite normals. `sides` is scratch.
float EdgeCollapseCostMelax(const DMesh& mesh, const IndexedArray<FloatVec3>& normals,
                            std::int32_t u, std::int32_t x, IndexList& sides);

/// What the driver by curvature holds in memory.
struct MelaxState {
    IndexedArray<FloatVec3> triangleNormals;
    // Scratch.
    IndexList ring;
    IndexList sides;
};

/// Writes `cost` and `partner`; the first of equally cheap neighbours wins. Does not queue.
void ComputeVertexCostMelax(WorkingMesh& work, std::int32_t vertex, MelaxState& state);

/// Computes the normals, then ranks and queues every vertex.
void InitVerticesCostMelax(WorkingMesh& work, MelaxState& state);

/// Re-ranks and queues `kept` and the ring that CollapseEdge gathered around it. With
/// ProtectTopology off both lists are empty, so only `kept` is ranked; its neighbours keep their
/// normals and costs.
void UpdateRingMelax(WorkingMesh& work, std::int32_t kept, const IndexList& ringCorners,
                     const IndexList& neighbours, MelaxState& state);

}  // namespace korvalite::core
