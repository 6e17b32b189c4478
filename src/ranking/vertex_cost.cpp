// SPDX-License-Identifier: MIT
#include "ranking/vertex_cost.h"

namespace korvalite::core {

template <typename Metric>
RankedVertex rankVertex(const WorkingMesh& work, std::int32_t vertex, IndexList& ring) {
    return rankAgainstRing<Metric>(work, vertex, ring,
                                   [&work](typename Metric::Quadric& inOut, std::int32_t x) {
                                       Metric::addVertexQuadric(work.mesh, work, inOut, x);
                                   });
}

template RankedVertex rankVertex<PlainMetric>(const WorkingMesh&, std::int32_t, IndexList&);
template RankedVertex rankVertex<ColorMetric>(const WorkingMesh&, std::int32_t, IndexList&);

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

void RecomputeVertexCost(WorkingMesh& work, std::int32_t vertex, IndexList& ring) {
    storeRanking(work.mesh.vertices[vertex], rankVertex<PlainMetric>(work, vertex, ring));
}

}  // namespace korvalite::core
