// SPDX-License-Identifier: MIT
#include "drivers/attribute_preparation.h"

#include "mesh/corner_lists.h"
#include "mesh/uv_seams.h"

namespace korvalite {

namespace {

/// Gives every corner an index, even in triangles that an earlier run has removed.
void weldAllCorners(DMesh& mesh) {
    if (!hasDeadTriangles(mesh)) return WeldCornerUVs(mesh);
    BuildVertexCorners(mesh);
    WeldCornerUVs(mesh);
    dropDeadVertexCorners(mesh);
}

}  // namespace

void prepareUVs(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    if (mesh.indicesUV.empty() && mesh.coordsUV.size() == mesh.triangles.size()) {
        weldAllCorners(mesh);
    }
    pm.m_handleUVs_internal = mesh.indicesUV.size() == mesh.triangles.size();
    if (!pm.m_handleUVs_internal) return;
    BuildUVCorners(mesh);
    dropDeadUVCorners(mesh);
    ComputeUVSeams(mesh);
}

void computeColorScale(ProgressiveMesh& pm) {
    pm.colorScale = static_cast<double>(pm.mesh.boundingBox.diagonal() / 20000.0F * pm.colorWeight);
}

}  // namespace korvalite
