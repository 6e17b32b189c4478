// SPDX-License-Identifier: MIT
//
// Edge length times curvature (S. Melax, "A Simple, Fast, and Effective Polygon Reduction
// Algorithm", Game Developer, 1998), without the usual factor of one half. All in 32-bit floats.
#pragma once

#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Writes triangleNormals: one unit normal per triangle, zero if the triangle has no area.
void computeTriangleNormals(ProgressiveMesh& pm);

/// The cost of collapsing u onto its neighbour x. For each triangle at u, takes the smallest turn
/// between its normal and that of a triangle on the edge. The largest of these is the curvature: 0
/// when flat, 2 between opposite normals. `sides` is scratch.
float EdgeCollapseCostMelax(const ProgressiveMesh& pm, std::int32_t u, std::int32_t x,
                            IndexList& sides);

struct MelaxScratch {
    IndexList ring;
    IndexList sides;
};

/// Writes `cost` and `partner`; the first of equally cheap neighbours wins. Does not queue.
void ComputeVertexCostMelax(ProgressiveMesh& pm, std::int32_t vertex, MelaxScratch& scratch);

/// Ranks and queues every vertex.
void InitVerticesCostMelax(ProgressiveMesh& pm, MelaxScratch& scratch);

/// Re-ranks and queues `kept` and the ring that CollapseEdge gathered around it. With
/// ProtectTopology off both lists are empty, so only `kept` is ranked; its neighbours keep their
/// normals and costs.
void UpdateRingMelax(ProgressiveMesh& pm, std::int32_t kept, const IndexList& ringCorners,
                     const IndexList& neighbours, MelaxScratch& scratch);

}  // namespace korvalite
