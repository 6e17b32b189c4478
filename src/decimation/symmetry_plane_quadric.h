// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/color_quadric.h"
#include "decimation/quadric3d.h"

namespace korvalite {

struct ProgressiveMesh;

/// The quadric that keeps vertices on the mirror plane, in each form that a cost initialisation
/// uses.
struct SymmetryPlaneQuadric {
    Quadric3DFloat asFloat;
    Quadric3D asDouble;
    ColorQuadric asColor;
};

/// Uses the plane of the symmetry cache, with a weight of 200.
void BuildSymmetryPlaneQuadric(ProgressiveMesh& pm);

}  // namespace korvalite
