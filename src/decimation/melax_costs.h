// SPDX-License-Identifier: MIT
//
// Edge length times curvature (S. Melax, "A Simple, Fast, and Effective Polygon Reduction
// Algorithm", Game Developer, 1998), without the factor of one half that it usually has. All in
// 32-bit floats.
#pragma once

#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Writes triangleNormals, one unit normal a triangle; that of a triangle without area is zero.
void computeTriangleNormals(ProgressiveMesh& pm);

/// Of collapsing u onto its neighbour x. The curvature is that of the sharpest turn from a triangle
/// at u to the nearest of those that hold the edge: 0 when flat, 2 between opposed normals.
/// `sides` is scratch.
float EdgeCollapseCostMelax(const ProgressiveMesh& pm, std::int32_t u, std::int32_t x,
                            IndexList& sides);

struct MelaxScratch {
    IndexList ring;
    IndexList sides;
};

/// Writes `cost` and `partner`; the first of equally cheap neighbours wins. Not queued.
void ComputeVertexCostMelax(ProgressiveMesh& pm, std::int32_t vertex, MelaxScratch& scratch);

/// Ranks every vertex and queues it.
void InitVerticesCostMelax(ProgressiveMesh& pm, MelaxScratch& scratch);

/// Ranks and queues what CollapseEdge left behind around `kept`. With ProtectTopology off both
/// lists are empty, and only `kept` is ranked: the rest keeps its normals and costs.
void UpdateRingMelax(ProgressiveMesh& pm, std::int32_t kept, const IndexList& ringCorners,
                     const IndexList& neighbours, MelaxScratch& scratch);

}  // namespace korvalite
