// SPDX-License-Identifier: MIT
#include "lowmem/driver_init.h"

#include "decimation/symmetric_collapse.h"
#include "decimation/symmetry_plane_quadric.h"
#include "geometry/compute_symmetry.h"
#include "mesh/corner_lists.h"
#include "mesh/uv_seams.h"
#include "shell/base/progress_channel.h"

#include <cmath>
#include <cstdlib>

namespace korvalite {

namespace {

bool colorsDiffer(std::uint32_t a, std::uint32_t b) {
    for (unsigned channel = 0; channel < 3; ++channel) {
        const auto byteA = static_cast<int>((a >> (8 * channel)) & 0xFFU);
        const auto byteB = static_cast<int>((b >> (8 * channel)) & 0xFFU);
        if (std::abs(byteA - byteB) >= 2) return true;
    }
    return false;
}

template <typename Differ>
void unpairWhere(DMesh& mesh, Differ differ) {
    auto& pairing = mesh.symmetryCache.pairing;
    for (std::size_t vertex = 0; vertex < pairing.size(); ++vertex) {
        const std::int32_t mirror = pairing[vertex];
        if (mirror == kNone || !differ(vertex, static_cast<std::size_t>(mirror))) continue;
        pairing[static_cast<std::size_t>(mirror)] = kNone;
        pairing[vertex] = kNone;
    }
}

void unpairUnlike(DMesh& mesh) {
    if (mesh.hasMask()) {
        unpairWhere(mesh, [&](std::size_t a, std::size_t b) {
            return mesh.maskValues[a] != mesh.maskValues[b];
        });
    }
    if (mesh.hasColors()) {
        unpairWhere(mesh, [&](std::size_t a, std::size_t b) {
            return colorsDiffer(mesh.vertexColors[a], mesh.vertexColors[b]);
        });
    }
}

}  // namespace

void prepareSymmetry(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    pm.m_handleSymmetry_internal = pm.handleSymmetry;
    // One coordinate stands for a mesh that is no number at all.
    if (!mesh.vertices.empty() && !std::isfinite(mesh.vertices.front().x)) {
        pm.m_handleSymmetry_internal = false;
    }
    if (!pm.m_handleSymmetry_internal) return;
    progressChannel().BeginSubTask("analysing mesh", -1);
    if (!mesh.symmetryCache.isValidFor()) computeSymmetry(mesh);
    if (mesh.symmetryCache.pairing.size() != mesh.vertices.size()) {
        pm.m_handleSymmetry_internal = false;
    } else {
        unpairUnlike(mesh);
        BuildSymmetrySlaves(pm);
        BuildSymmetryPlaneQuadric(pm);
    }
    progressChannel().EndSubTask();
}

void prepareUVs(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    if (mesh.indicesUV.empty() && mesh.coordsUV.size() == mesh.triangles.size()) {
        WeldCornerUVs(mesh);
    }
    pm.m_handleUVs_internal = mesh.indicesUV.size() == mesh.triangles.size();
    if (!pm.m_handleUVs_internal) return;
    BuildUVCorners(mesh);
    ComputeUVSeams(mesh);
}

void computeColorScale(ProgressiveMesh& pm) {
    pm.colorScale = static_cast<double>(pm.mesh.boundingBox.diagonal() / 20000.0F * pm.colorWeight);
}

}  // namespace korvalite
