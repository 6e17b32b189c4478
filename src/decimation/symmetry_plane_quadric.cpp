// SPDX-License-Identifier: MIT
#include "decimation/symmetry_plane_quadric.h"

#include "mesh/progressive_mesh.h"

namespace korvalite {

void BuildSymmetryPlaneQuadric(ProgressiveMesh& pm) {
    const FloatVec3& normal = pm.mesh.symmetryCache.planeNormal;
    const float offset = -dot(normal, pm.mesh.symmetryCache.planePoint);
    const DoubleVec3 n = toDouble(normal);
    Quadric3D plane = planeQuadric(n.x, n.y, n.z, static_cast<double>(offset));
    plane *= 200.0;
    pm.symmetryPlaneQuadric = {narrowed(plane), plane, ColorQuadric(plane)};
}

}  // namespace korvalite
