// SPDX-License-Identifier: MIT
#pragma once

#include "metric/color_quadric.h"
#include "metric/quadric3d.h"

namespace korvalite {

struct KRDMeshSymmetryCache;

/// The quadric that keeps vertices on the mirror plane, in each form that a cost initialisation
/// uses.
struct SymmetryPlaneQuadric {
    Quadric3DFloat asFloat;
    Quadric3D asDouble;
    ColorQuadric asColor;
};

/// The plane of the cache, with a weight of 200.
SymmetryPlaneQuadric BuildSymmetryPlaneQuadric(const KRDMeshSymmetryCache& cache);

}  // namespace korvalite
