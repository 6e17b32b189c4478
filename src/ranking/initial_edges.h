// SPDX-License-Identifier: MIT
//
// The walk over all edges that gives every vertex its first cost from stored quadrics.
#pragma once

#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "metric/edge_cost.h"

#include <cstdint>

namespace korvalite::core {

enum class EdgeVerdict {
    Evaluate,
    Skip,
    SkipUnasked,  // and do not check for a stop request
};

/// Which end of an edge may take its cost.
struct EdgeEnds {
    bool updateA = true;
    bool updateB = true;
};

/// Whether to evaluate the edge from a to b, in the direction it has in a triangle.
EdgeVerdict judgeInitialEdge(const WorkingMesh& work, std::int32_t a, std::int32_t b,
                             EdgeEnds& ends);

/// Evaluates each edge once with evaluate(edge, a, b), in corner order. If the cost is lower than
/// an end's own, the end takes it and took(end, edge) is called; the first of equals wins. A stop
/// request ends the walk.
template <typename Evaluate, typename Took>
void rankInitialEdges(WorkingMesh& work, Evaluate evaluate, Took took) {
    DMesh& mesh = work.mesh;
    const auto rank = [&](std::int32_t end, std::int32_t partner, const EdgeEvaluation& edge) {
        VertexRecord& vertex = mesh.vertices[end];
        if (takeIfLower(vertex.cost, vertex.partner, edge.cost, partner)) took(end, edge);
    };
    for (std::int32_t corner = 0; corner < mesh.cornerCount(); ++corner) {
        // An earlier run removed this triangle.
        if (!mesh.triangleActive.Test(triangleOf(corner))) continue;
        const std::int32_t a = vertexAt(mesh, corner);
        const std::int32_t b = vertexAt(mesh, nextCorner(corner));
        EdgeEnds ends;
        const EdgeVerdict verdict = judgeInitialEdge(work, a, b, ends);
        if (verdict == EdgeVerdict::SkipUnasked) continue;
        if (verdict == EdgeVerdict::Evaluate) {
            EdgeEvaluation edge;
            evaluate(edge, a, b);
            if (ends.updateA) rank(a, b, edge);
            if (ends.updateB) rank(b, a, edge);
        }
        if (work.monitor->stopRequested()) return;
    }
}

/// Fits the queue to the costs and inserts every vertex in index order.
void fillQueue(WorkingMesh& work);

}  // namespace korvalite::core
