// SPDX-License-Identifier: MIT
//
// Quadric edge collapse (M. Garland and P. Heckbert, "Surface Simplification Using Quadric Error
// Metrics", 1997) with all quadrics and positions held in memory. It takes about 250 bytes per
// vertex more than the low-memory driver, but never builds the same quadric twice.
//
// A vertex keeps its quadric and adds the changed triangles around it after each collapse nearby,
// so the metric remembers what has been collapsed. Plain metric only: UVs and colours do not guide
// it and are not carried along.
#pragma once

#include "progressive/progressive_mesh.h"

namespace korvalite {

/// Decimates until TargetNumItem is reached, the queue is empty, only refused collapses are left,
/// or a stop is requested. Always returns 0; throws std::bad_alloc if out of memory. Main thread
/// only.
int doDecimation_HS(ProgressiveMesh& pm);

}  // namespace korvalite
