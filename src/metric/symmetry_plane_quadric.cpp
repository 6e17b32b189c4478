// SPDX-License-Identifier: MIT
#include "metric/symmetry_plane_quadric.h"

#include "mesh/symmetry_cache.h"

namespace korvalite {

SymmetryPlaneQuadric BuildSymmetryPlaneQuadric(const KRDMeshSymmetryCache& cache) {
    const FloatVec3& normal = cache.planeNormal;
    const float offset = -dot(normal, cache.planePoint);
    const DoubleVec3 n = toDouble(normal);
    Quadric3D plane = planeQuadric(n.x, n.y, n.z, static_cast<double>(offset));
    plane *= 200.0;
    return {narrowed(plane), plane, ColorQuadric(plane)};
}

}  // namespace korvalite
