// SPDX-License-Identifier: MIT
#include "decimation/initial_edges.h"

#include "decimation/vertex_cost.h"

namespace korvalite {

EdgeVerdict judgeInitialEdge(const ProgressiveMesh& pm, std::int32_t a, std::int32_t b,
                             EdgeEnds& ends) {
    const DMesh& mesh = pm.mesh;
    // The walk meets an interior edge from both sides and takes it at its lower end; it meets a
    // border edge once and takes it in either direction.
    const bool atBorder = mesh.borderVertices.Test(a) || mesh.borderVertices.Test(b);
    if (a == b || (a > b && !atBorder)) return EdgeVerdict::Skip;
    if (pm.m_handleSymmetry_internal) {
        const auto& pairing = mesh.symmetryCache.pairing;
        const std::int32_t mirrorA = pairing[static_cast<std::size_t>(a)];
        const std::int32_t mirrorB = pairing[static_cast<std::size_t>(b)];
        // The seam rule does not apply to edges on the plane and across it.
        if (mirrorA == a && mirrorB == b) return EdgeVerdict::Evaluate;
        ends = {!pm.symmetrySlaves.Test(a), !pm.symmetrySlaves.Test(b)};
        if (mirrorA == b) return EdgeVerdict::Evaluate;
        if (!ends.updateA && !ends.updateB) return EdgeVerdict::SkipUnasked;
    }
    return isHeldBySeam(pm, a, b) ? EdgeVerdict::SkipUnasked : EdgeVerdict::Evaluate;
}

void fillQueue(ProgressiveMesh& pm) {
    pm.costQueue.Init(pm.mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < pm.mesh.vertexCount(); ++vertex) {
        pm.costQueue.Insert(vertex);
    }
}

}  // namespace korvalite
