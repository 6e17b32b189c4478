// SPDX-License-Identifier: MIT
#include "metric/metric_rules.h"

#include "mesh/symmetry_cache.h"

namespace korvalite::core {

SymmetryPlaneQuadric BuildSymmetryPlaneQuadric(const KRDMeshSymmetryCache& cache) {
    const FloatVec3& normal = cache.planeNormal;
    // COMPAT: the offset is a float, unlike those of triangles; costs depend on it.
    const float offset = -dot(normal, cache.planePoint);
    const DoubleVec3 n = toDouble(normal);
    Quadric3D plane = planeQuadric(n.x, n.y, n.z, static_cast<double>(offset));
    plane *= 200.0;
    // COMPAT: the colour form has C = 1, although a plane has no colours; first costs depend on it.
    return {narrowed(plane), plane, ColorQuadric(plane)};
}

const char* borderModeText(std::int32_t value) {
    switch (value) {
    case BORDER_MODE_NONE: return "BORDER_MODE_NONE";
    case BORDERMODE_PROTECT: return "BORDERMODE_PROTECT";
    case BORDERMODE_FREEZE: return "BORDERMODE_FREEZE";
    default: return "BORDER_MODE_UNKNOWN";
    }
}

}  // namespace korvalite::core
