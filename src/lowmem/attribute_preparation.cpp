// SPDX-License-Identifier: MIT
#include "lowmem/attribute_preparation.h"

#include "mesh/corner_lists.h"
#include "mesh/uv_seams.h"

namespace korvalite {

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
