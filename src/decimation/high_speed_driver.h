// SPDX-License-Identifier: MIT
//
// Quadric edge collapse (M. Garland and P. Heckbert, "Surface Simplification Using Quadric Error
// Metrics", 1997) with all quadrics and positions held in memory: about 250 bytes a vertex more
// than the low-memory driver, and no quadric is ever built twice.
//
// A vertex keeps its quadric and takes in the changed triangles around it at each collapse nearby,
// so that the metric remembers what was collapsed. Plain metric only: UVs do not guide it, nor do
// colours, and neither is carried along.
#pragma once

#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Decimates to TargetNumItem, to an empty queue, to nothing left but refused collapses, or to a
/// stop request. Always 0; out of memory passes through as std::bad_alloc. Main thread only.
int doDecimation_HS(ProgressiveMesh& pm);

}  // namespace korvalite
