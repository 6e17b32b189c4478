// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/vsplit.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// The seam rule: between two vertices on a UV seam, a vertex where the seam ends, branches or
/// bends must not collapse onto the other, nor the other onto it.
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

/// Ranks one vertex against its ring from the current triangles; the first of equally cheap
/// neighbours wins. Does not change the mesh; `ring` is scratch.
///
/// The quadric of the neighbours accumulates over the ring and is not cleared in between, so later
/// neighbours look costlier than they are.
template <typename Metric>
RankedVertex rankVertex(const ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring);

/// Gathers the distinct vertices around the corners of a split that are still active.
void gatherRingOfSplit(const DMesh& mesh, const VSplit& split, IndexList& around);

/// Ranks one vertex against its ring with the plain metric and writes its `cost` and `partner`.
/// REQUIRES: the vertex is not queued.
void RecomputeVertexCost(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring);

/// The same using the stored triangle quadrics, with border factor and plane quadric.
void RecomputeVertexCostFromStored(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring);

/// The update for a kept vertex that is no longer active: re-ranks the remaining vertices around
/// the corners of its record one by one, always with the plain metric.
void RefreshRingCosts(ProgressiveMesh& pm, const VSplit& split);

}  // namespace korvalite
