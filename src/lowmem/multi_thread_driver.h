// SPDX-License-Identifier: MIT
//
// The low-memory driver on several threads, which share one mesh and one queue without dividing
// either: see lowmem/thread_loop.h for what keeps them apart.
//
// The order of the collapses, and with it the mesh, depends on timing. A run with more than one
// thread is not reproducible; with one it gives the queue's own order.
#pragma once

#include "decimation/metric.h"
#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Decimates on NumThread threads, the calling one among them, until each has met an end of
/// doDecimationLoop_LM_MT. Where the system refuses to start more threads, those that run do all
/// the work. Always 0; a lack of memory on any thread passes through as std::bad_alloc. Whatever
/// happens, all threads have ended on return. Leaves the main task open. One run at a time on a
/// mesh, on the main thread.
template <typename Metric>
int doDecimation_LM_MT(ProgressiveMesh& pm);

/// The two halves of the above.
template <typename Metric>
void doDecimationInit_LM_MT(ProgressiveMesh& pm);
template <typename Metric>
int doDecimationLaunchThreadLoops_LM_MT(ProgressiveMesh& pm);

}  // namespace korvalite
