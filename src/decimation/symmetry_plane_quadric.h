// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/color_quadric.h"
#include "decimation/quadric3d.h"

namespace korvalite {

struct ProgressiveMesh;

/// The quadric that holds the vertices of the mirror plane on it, in each form that a cost
/// initialisation adds up.
struct SymmetryPlaneQuadric {
    Quadric3DFloat asFloat;
    Quadric3D asDouble;
    ColorQuadric asColor;
};

/// From the plane of the symmetry cache, weighted 200 times.
void BuildSymmetryPlaneQuadric(ProgressiveMesh& pm);

}  // namespace korvalite
