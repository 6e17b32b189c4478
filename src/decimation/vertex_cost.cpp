// SPDX-License-Identifier: MIT
#include "decimation/vertex_cost.h"

#include "decimation/edge_cost.h"
#include "decimation/vertex_quadrics.h"

namespace korvalite {

namespace {

/// `addQuadric` adds a vertex's quadric to its argument.
template <typename AddQuadric>
void rankAgainstRing(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring,
                     AddQuadric addQuadric) {
    Quadric3D own;
    Quadric3D neighbours;
    addQuadric(own, vertex);
    GetVertexNeighbours(pm.mesh, vertex, ring);

    float best = kNotCollapsible;
    std::int32_t bestPartner = kNone;
    EdgeEvaluation edge;
    for (const std::int32_t x : ring) {
        if (x == vertex || isHeldBySeam(pm, vertex, x)) continue;
        addQuadric(neighbours, x);
        EvaluateEdgeCost(pm, edge, vertex, x, own + neighbours);
        if (best > edge.cost) {
            best = edge.cost;
            bestPartner = x;
        }
    }
    VertexRecord& record = pm.mesh.vertices[static_cast<std::size_t>(vertex)];
    record.cost = best;
    record.partner = bestPartner;
}

void appendIfAbsent(IndexList& list, std::int32_t item) {
    if (!contains(list, item)) list.push_back(item);
}

}  // namespace

void RecomputeVertexCost(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring) {
    rankAgainstRing(pm, vertex, ring, [&pm](Quadric3D& inOut, std::int32_t x) {
        ComputeVertexQuadricFromTriangles(pm, inOut, x);
    });
}

void RecomputeVertexCostFromStored(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring) {
    rankAgainstRing(pm, vertex, ring, [&pm](Quadric3D& inOut, std::int32_t x) {
        AccumulateVertexQuadric(pm, inOut, x);
    });
}

void RefreshRingCosts(ProgressiveMesh& pm, const VSplit& split) {
    IndexList around;
    for (const std::int32_t corner : split.corners) {
        appendIfAbsent(around, vertexAt(pm.mesh, nextCorner(corner)));
        appendIfAbsent(around, vertexAt(pm.mesh, previousCorner(corner)));
    }
    IndexList ring;
    for (const std::int32_t vertex : around) {
        if (!pm.mesh.vertexActive.Test(vertex)) continue;
        pm.costQueue.Remove(vertex);
        RecomputeVertexCost(pm, vertex, ring);
        pm.costQueue.Insert(vertex);
    }
}

}  // namespace korvalite
