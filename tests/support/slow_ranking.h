// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"
#include "progressive/progressive_mesh.h"
#include "ranking/vertex_cost.h"

#include <cstdint>

namespace korvalite::core::test {

// Adds the quadrics of all triangles at a vertex, from the highest corner down, which is the order
// of fresh corner lists.
template <typename Metric>
void addTriangles(const ProgressiveMesh& pm, typename Metric::Quadric& sum, std::int32_t vertex) {
    for (std::int32_t corner = pm.mesh.cornerCount() - 1; corner >= 0; --corner) {
        if (vertexAt(pm.mesh, corner) == vertex)
            sum += Metric::triangleQuadric(pm.mesh, pm, corner / 3);
    }
}

// Ranks a vertex against its ring independently of the product: the neighbours' quadric is never
// cleared in between, and edges between two seam vertices are skipped if one is a seam corner.
template <typename Metric>
RankedVertex rankSlowly(const ProgressiveMesh& pm, std::int32_t v) {
    const BitArray& seam = pm.mesh.uvSeamVertices;
    const BitArray& seamCorner = pm.mesh.uvSeamCorners;
    typename Metric::Quadric own;
    typename Metric::Quadric others;
    addTriangles<Metric>(pm, own, v);
    IndexList ring;
    GetVertexNeighbours(pm.mesh, v, ring);
    RankedVertex best;
    for (const std::int32_t x : ring) {
        if (x == v) continue;
        if (pm.m_handleUVs_internal && seam.Test(v) && seam.Test(x) &&
            (seamCorner.Test(v) || seamCorner.Test(x)))
            continue;
        addTriangles<Metric>(pm, others, x);
        EdgeEvaluation edge;
        Metric::evaluateEdge(pm.mesh, pm, edge, v, x, own + others);
        if (best.cost > edge.cost) best = {edge.cost, x};
    }
    return best;
}

}  // namespace korvalite::core::test
