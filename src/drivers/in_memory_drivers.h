// SPDX-License-Identifier: MIT
//
// The drivers that hold their metric in memory. Both decimate until TargetNumItem is reached, the
// queue is empty, only refused collapses are left, or a stop is requested. They always return 0,
// throw std::bad_alloc if out of memory, and run on the main thread.
#pragma once

#include "progressive/progressive_mesh.h"

namespace korvalite::core {

/// Quadric edge collapse (M. Garland and P. Heckbert, "Surface Simplification Using Quadric Error
/// Metrics", 1997) with all quadrics and positions held in memory. It takes about 250 bytes per
/// vertex more than the low-memory driver, but never builds the same quadric twice.
///
/// A vertex keeps its quadric and adds the changed triangles around it after each collapse nearby,
/// so the metric remembers what has been collapsed. Plain metric only: UVs and colours do not guide
/// it and are not carried along.
int doDecimation_HS(ProgressiveMesh& pm);

/// Edge collapse by length times curvature (S. Melax, 1998), which never moves the vertices it
/// keeps. Less accurate than the quadric drivers. Records no splits, so its result has no levels.
int doDecimation_Melax(ProgressiveMesh& pm);

}  // namespace korvalite::core
