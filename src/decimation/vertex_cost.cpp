// SPDX-License-Identifier: MIT
#include "decimation/vertex_cost.h"

#include "decimation/metric.h"
#include "decimation/vertex_quadrics.h"

namespace korvalite {

namespace {

/// addQuadric(inOut, vertex) adds a vertex's quadric to `inOut`.
template <typename Metric, typename AddQuadric>
RankedVertex rankAgainstRing(const ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring,
                             AddQuadric addQuadric) {
    typename Metric::Quadric own;
    typename Metric::Quadric neighbours;
    addQuadric(own, vertex);
    GetVertexNeighbours(pm.mesh, vertex, ring);

    RankedVertex best;
    EdgeEvaluation edge;
    for (const std::int32_t x : ring) {
        if (x == vertex || isHeldBySeam(pm, vertex, x)) continue;
        addQuadric(neighbours, x);
        Metric::evaluateEdge(pm, edge, vertex, x, own + neighbours);
        if (best.cost > edge.cost) best = {edge.cost, x};
    }
    return best;
}

void store(VertexRecord& vertex, const RankedVertex& ranked) {
    vertex.cost = ranked.cost;
    vertex.partner = ranked.partner;
}

}  // namespace

template <typename Metric>
RankedVertex rankVertex(const ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring) {
    return rankAgainstRing<Metric>(pm, vertex, ring,
                                   [&pm](typename Metric::Quadric& inOut, std::int32_t x) {
                                       Metric::addVertexQuadric(pm, inOut, x);
                                   });
}

template RankedVertex rankVertex<PlainMetric>(const ProgressiveMesh&, std::int32_t, IndexList&);
template RankedVertex rankVertex<ColorMetric>(const ProgressiveMesh&, std::int32_t, IndexList&);

void gatherRingOfSplit(const DMesh& mesh, const VSplit& split, IndexList& around) {
    around.clear();
    for (const std::int32_t corner : split.corners) {
        for (const std::int32_t other : {nextCorner(corner), previousCorner(corner)}) {
            const std::int32_t vertex = vertexAt(mesh, other);
            if (mesh.vertexActive.Test(vertex) && !contains(around, vertex))
                around.push_back(vertex);
        }
    }
}

void RecomputeVertexCost(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring) {
    store(pm.mesh.vertices[static_cast<std::size_t>(vertex)],
          rankVertex<PlainMetric>(pm, vertex, ring));
}

void RecomputeVertexCostFromStored(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring) {
    store(pm.mesh.vertices[static_cast<std::size_t>(vertex)],
          rankAgainstRing<PlainMetric>(pm, vertex, ring, [&pm](Quadric3D& inOut, std::int32_t x) {
              AccumulateVertexQuadric(pm, inOut, x);
          }));
}

void RefreshRingCosts(ProgressiveMesh& pm, const VSplit& split) {
    IndexList around;
    gatherRingOfSplit(pm.mesh, split, around);
    IndexList ring;
    for (const std::int32_t vertex : around) {
        pm.costQueue.Remove(vertex);
        RecomputeVertexCost(pm, vertex, ring);
        pm.costQueue.Insert(vertex);
    }
}

}  // namespace korvalite
