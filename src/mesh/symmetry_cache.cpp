// SPDX-License-Identifier: MIT
#include "mesh/symmetry_cache.h"

#include "mesh/dmesh.h"

namespace korvalite::core {

void KRDMeshSymmetryCache::reset() {
    IndexedArray<std::int32_t>().swap(pairing);
    secondSide.Reset(secondSide.count());
    pairedRatio = 0.0F;
    axisRatios = {-1.0F, -1.0F, -1.0F};
    autoDetected = false;
}

bool KRDMeshSymmetryCache::isValidFor() const {
    if (mesh == nullptr) return false;
    return mesh->vertices.empty() || pairing.size() == mesh->vertices.size();
}

}  // namespace korvalite::core
