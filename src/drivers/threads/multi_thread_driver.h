// SPDX-License-Identifier: MIT
//
// The low-memory driver on several threads, which share one mesh and one queue without partitioning
// them: see drivers/threads/thread_loop.h for how they avoid each other.
//
// The order of the collapses, and therefore the result, depends on timing. A run with more than one
// thread is not reproducible; a run with one follows the queue's order.
#pragma once

#include "metric/metric.h"
#include "progressive/progressive_mesh.h"

namespace korvalite::core {

/// Decimates on NumThread threads, including the calling one, until doDecimationLoop_LM_MT has
/// ended on each. If the system refuses to start more threads, the running ones do all the work.
/// Always returns 0; throws std::bad_alloc if any thread runs out of memory. In any case, all
/// threads have ended on return. Leaves the main task open. One run per mesh at a time, on the main
/// thread.
template <typename Metric>
int doDecimation_LM_MT(ProgressiveMesh& pm);

/// The two halves of the above.
template <typename Metric>
void doDecimationInit_LM_MT(ProgressiveMesh& pm);
template <typename Metric>
int doDecimationLaunchThreadLoops_LM_MT(ProgressiveMesh& pm);

}  // namespace korvalite::core
