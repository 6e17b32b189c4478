// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/vsplit.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// The seam rule: of two vertices on a UV seam, one that ends, branches or bends it must not slide
/// away along the seam, nor another onto it.
inline bool isHeldBySeam(const ProgressiveMesh& pm, std::int32_t a, std::int32_t b) {
    const DMesh& mesh = pm.mesh;
    return pm.m_handleUVs_internal && mesh.uvSeamVertices.Test(a) && mesh.uvSeamVertices.Test(b) &&
           (mesh.uvSeamCorners.Test(a) || mesh.uvSeamCorners.Test(b));
}

/// The cheapest collapse of a vertex.
struct RankedVertex {
    float cost = kNotCollapsible;
    std::int32_t partner = kNone;
};

/// Ranks one vertex against its ring from the triangles as they stand; the first best neighbour
/// wins. Changes nothing of the mesh; `ring` is scratch.
///
/// The neighbours' quadric is summed up over the ring and not cleared in between, so that later
/// neighbours look dearer than they are.
template <typename Metric>
RankedVertex rankVertex(const ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring);

/// Appends the distinct vertices around the corners of a split that are still active.
void gatherRingOfSplit(const DMesh& mesh, const VSplit& split, IndexList& around);

/// Ranks one vertex against its ring with the plain metric and writes its `cost` and `partner`.
/// The vertex must not be queued.
void RecomputeVertexCost(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring);

/// The same from the stored triangle quadrics, with border factor and plane quadric.
void RecomputeVertexCostFromStored(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring);

/// The update for a kept vertex that is not active any more: ranks what is left around the corners
/// of its record one by one, with the plain metric in every driver.
void RefreshRingCosts(ProgressiveMesh& pm, const VSplit& split);

}  // namespace korvalite
