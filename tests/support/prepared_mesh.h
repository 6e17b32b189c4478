// SPDX-License-Identifier: MIT
#pragma once

#include "host/host_monitor.h"
#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "progressive/progressive_mesh.h"
#include "ranking/initial_edges.h"
#include "support/mesh_builder.h"

#include <utility>

namespace korvalite::core::test {

// Takes over a mesh and adds what collapses need: corner lists, border bits and an empty cost
// queue.
inline void prepare(ProgressiveMesh& pm, DMesh mesh) {
    pm.mesh = std::move(mesh);
    pm.monitor = &hostMonitor();
    BuildVertexCorners(pm.mesh);
    ComputeBorderVertices(pm.mesh);
    pm.costQueue.Init(pm.mesh.vertexCount());
}

// The same, without a cost at any vertex.
inline void prepareUnranked(ProgressiveMesh& pm, DMesh mesh) {
    prepare(pm, std::move(mesh));
    for (VertexRecord& vertex : pm.mesh.vertices)
        forgetCost(vertex);
}

}  // namespace korvalite::core::test
