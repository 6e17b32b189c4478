// SPDX-License-Identifier: MIT
//
// Edge collapse by length times curvature (S. Melax, 1998), which never moves the vertices it
// keeps. Less accurate than the quadric drivers. Records no splits, so its result has no levels.
#pragma once

#include "progressive/progressive_mesh.h"

namespace korvalite {

/// Like doDecimation_HS, with a different cost. Always returns 0; throws std::bad_alloc if out of
/// memory. Main thread only.
int doDecimation_Melax(ProgressiveMesh& pm);

}  // namespace korvalite
