// SPDX-License-Identifier: MIT
//
// Edge collapse by length times curvature (S. Melax, 1998), which moves no vertex: each that is
// left stands where it stood. Coarser than the quadric drivers, and records no splits, so that its
// result has no levels.
#pragma once

#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Decimates as doDecimation_HS does, by another cost. Always 0; out of memory passes through as
/// std::bad_alloc. Main thread only.
int doDecimation_Melax(ProgressiveMesh& pm);

}  // namespace korvalite
