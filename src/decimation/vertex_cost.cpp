// SPDX-License-Identifier: MIT
#include "decimation/vertex_cost.h"

#include "decimation/edge_cost.h"
#include "decimation/vertex_quadrics.h"

namespace korvalite {

void RecomputeVertexCost(ProgressiveMesh& pm, std::int32_t vertex, IndexList& ring) {
    Quadric3D own;
    Quadric3D neighbours;
    ComputeVertexQuadricFromTriangles(pm, own, vertex);
    GetVertexNeighbours(pm.mesh, vertex, ring);

    float best = kNotCollapsible;
    std::int32_t bestPartner = kNone;
    EdgeEvaluation edge;
    for (const std::int32_t x : ring) {
        if (x == vertex || isHeldBySeam(pm, vertex, x)) continue;
        ComputeVertexQuadricFromTriangles(pm, neighbours, x);
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

}  // namespace korvalite
