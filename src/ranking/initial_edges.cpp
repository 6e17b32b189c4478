// SPDX-License-Identifier: MIT
#include "ranking/initial_edges.h"

#include "ranking/vertex_cost.h"

namespace korvalite::core {

EdgeVerdict judgeInitialEdge(const WorkingMesh& work, std::int32_t a, std::int32_t b,
                             EdgeEnds& ends) {
    const DMesh& mesh = work.mesh;
    // The walk meets an interior edge from both sides and takes it at its lower end; it meets a
    // border edge once and takes it in either direction.
    const bool atBorder = mesh.borderVertices.Test(a) || mesh.borderVertices.Test(b);
    if (a == b || (a > b && !atBorder)) return EdgeVerdict::Skip;
    if (work.m_handleSymmetry_internal) {
        const auto& pairing = mesh.symmetryCache.pairing;
        const std::int32_t mirrorA = pairing[a];
        const std::int32_t mirrorB = pairing[b];
        // COMPAT: the seam rule spares edges on the plane and across it; first costs depend on it.
        if (mirrorA == a && mirrorB == b) return EdgeVerdict::Evaluate;
        ends = {!work.symmetrySlaves.Test(a), !work.symmetrySlaves.Test(b)};
        if (mirrorA == b) return EdgeVerdict::Evaluate;
        if (!ends.updateA && !ends.updateB) return EdgeVerdict::SkipUnasked;
    }
    return isHeldBySeam(work, a, b) ? EdgeVerdict::SkipUnasked : EdgeVerdict::Evaluate;
}

void fillQueue(WorkingMesh& work) {
    work.costQueue.Init(work.mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < work.mesh.vertexCount(); ++vertex) {
        work.costQueue.Insert(vertex);
    }
}

}  // namespace korvalite::core
