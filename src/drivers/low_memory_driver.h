// SPDX-License-Identifier: MIT
//
// The driver that a job runs on one thread: quadric edge collapse (M. Garland and P. Heckbert,
// 1997) without keeping quadrics between evaluations.
//
// A quadric is always rebuilt from the current triangles, so it measures the error against the
// current surface, not against everything that has been collapsed into it. Between collapses only
// `cost` and `partner` are kept, in the vertex records.
//
// Invariants: numActiveVertices and numActiveTriangles equal the number of set bits; a turn ends
// with its collapse complete and recorded, or with the mesh unchanged.
#pragma once

#include "metric/metric.h"
#include "progressive/progressive_mesh.h"

namespace korvalite::core {

/// Decimates until TargetNumItem is reached, the queue is empty, only refused collapses are left,
/// or a stop is requested. Always returns 0; throws std::bad_alloc if out of memory, with the mesh
/// left in its current state. One run per mesh at a time, on the main thread.
template <typename Metric>
int doDecimation_LM(ProgressiveMesh& pm);

/// The two halves of the above: the preparation before the first collapse, and the loop.
template <typename Metric>
int doDecimationInit_LM(ProgressiveMesh& pm);
template <typename Metric>
int doDecimationLoop_LM(ProgressiveMesh& pm);

}  // namespace korvalite::core
