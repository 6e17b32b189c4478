// SPDX-License-Identifier: MIT
//
// The driver that a job runs on one thread: quadric edge collapse (M. Garland and P. Heckbert,
// 1997) without a quadric held between two evaluations.
//
// A quadric is always built again from the triangles of the mesh as it stands, so that it measures
// the error against the current surface and not against all that was collapsed into it. Of the
// decimation only `cost` and `partner` live in the vertex records between two collapses.
//
// Invariants: numActiveVertices and numActiveTriangles equal the set bits; a turn ends with its
// collapse complete and recorded, or with the mesh as before it.
#pragma once

#include "decimation/metric.h"
#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Decimates to TargetNumItem, to an empty queue, to nothing left but refused collapses, or to a
/// stop request. Always 0; out of memory passes through as std::bad_alloc and leaves the mesh as it
/// stands. One run at a time on a mesh, on the main thread.
template <typename Metric>
int doDecimation_LM(ProgressiveMesh& pm);

/// The two halves of the above: everything that is built before the first collapse, and the loop.
template <typename Metric>
int doDecimationInit_LM(ProgressiveMesh& pm);
template <typename Metric>
int doDecimationLoop_LM(ProgressiveMesh& pm);

}  // namespace korvalite
