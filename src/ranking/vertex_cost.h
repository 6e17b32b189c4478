// SPDX-License-Identifier: MIT
#pragma once

#include "collapse/sharing.h"
#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "splits/vsplit.h"

#include <cstdint>
#include <type_traits>

namespace korvalite::core {

/// The seam rule: between two vertices on a UV seam, a vertex where the seam ends, branches or
/// bends must not collapse onto the other, nor the other onto it.
inline bool isHeldBySeam(const WorkingMesh& work, std::int32_t a, std::int32_t b) {
    const DMesh& mesh = work.mesh;
    return work.m_handleUVs_internal && mesh.uvSeamVertices.Test(a) &&
           mesh.uvSeamVertices.Test(b) &&
           (mesh.uvSeamCorners.Test(a) || mesh.uvSeamCorners.Test(b));
}

/// Ranks one vertex against its ring with the quadrics that addQuadric(inOut, vertex) adds to
/// `inOut`; the first of equally cheap neighbours wins. Does not change the mesh; `ring` is
/// scratch.
// COMPAT: the neighbours' quadric is not cleared between neighbours; costs depend on it.
template <typename Metric, typename AddQuadric>
RankedVertex rankAgainstRing(const WorkingMesh& work, std::int32_t vertex, IndexList& ring,
                             AddQuadric addQuadric) {
    typename Metric::Quadric own;
    typename Metric::Quadric neighbours;
    addQuadric(own, vertex);
    GetVertexNeighbours(work.mesh, vertex, ring);

    RankedVertex best;
    for (const std::int32_t x : ring) {
        if (x == vertex || isHeldBySeam(work, vertex, x)) continue;
        addQuadric(neighbours, x);
        EdgeEvaluation edge;
        Metric::evaluateEdge(work.mesh, work, edge, vertex, x, own + neighbours);
        takeIfLower(best.cost, best.partner, edge.cost, x);
    }
    return best;
}

/// The same with quadrics from the current triangles.
template <typename Metric>
RankedVertex rankVertex(const WorkingMesh& work, std::int32_t vertex, IndexList& ring);

/// Gathers the distinct vertices around the corners of a split that are still active.
void gatherRingOfSplit(const DMesh& mesh, const VSplit& split, IndexList& around);

/// Ranks one vertex against its ring with the plain metric and writes its `cost` and `partner`.
/// REQUIRES: the vertex is not queued.
void RecomputeVertexCost(WorkingMesh& work, std::int32_t vertex, IndexList& ring);

/// The metric that ranks a vertex by itself.
// COMPAT: alone, that is the plain one even with colours; costs depend on it.
template <typename Metric, SharingPolicy Sharing>
using MetricForOne = std::conditional_t<Sharing::kIsShared, Metric, PlainMetric>;

/// The update for a kept vertex that is no longer active: re-ranks the remaining vertices around
/// the corners of its record one by one.
template <typename Metric, SharingPolicy Sharing>
void RefreshRingCosts(WorkingMesh& work, const VSplit& split, Sharing& sharing) {
    IndexList around;
    gatherRingOfSplit(work.mesh, split, around);
    IndexList ring;
    for (const std::int32_t vertex : around)
        sharing.rankAgain(vertex, rankVertex<MetricForOne<Metric, Sharing>>(work, vertex, ring));
}

}  // namespace korvalite::core
