// SPDX-License-Identifier: MIT
#include "geometry/compute_symmetry.h"

#include "geometry/mesh_symmetry_cache.h"
#include "mesh/dmesh.h"

#include <cstddef>

namespace korvalite {

namespace {

constexpr std::size_t kLargestWithFixedRatio = 10000;
constexpr float kFixedRatio = 0.01F;

/// In larger meshes neighbours are closer together, so a match must be closer too.
float toleranceRatio(std::size_t vertexCount) {
    if (vertexCount <= kLargestWithFixedRatio) return kFixedRatio;
    return 100.0F / static_cast<float>(vertexCount);
}

}  // namespace

void computeSymmetry(DMesh& mesh) {
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    cache.mesh = nullptr;
    cache.planeNormal = {};
    cache.planePoint = {};
    cache.reset();
    if (mesh.symmetryMode == 0) return;

    cache.computeTolerance(mesh, toleranceRatio(mesh.vertices.size()));
    if (mesh.symmetryMode == -1) {
        cache.detectSymmetry(mesh);
    } else if (mesh.symmetryAxis != kNone) {
        cache.computeForAxis(mesh.symmetryAxis, symmetryCentre(mesh.boundingBox), mesh);
    }
}

}  // namespace korvalite
