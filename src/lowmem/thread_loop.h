// SPDX-License-Identifier: MIT
//
// The loop that every thread of the multi-threaded driver runs on the one mesh.
//
// A turn has three phases. Pick, under csQueue: the cheapest vertex around which no other thread
// holds anything, and a reservation of its neighbourhood. Work, without csQueue: the collapse and
// the new costs, on the reserved vertices. Commit, under csQueue: the results, and the release.
//
// Two turns with disjoint reservations write disjoint data, but for the bit arrays, their counters
// and the queue, which have critical sections. The costs also look at triangles just beyond the
// reservation, which another thread may be changing: those reads are relaxed, and at worst a cost
// is a little off.
#pragma once

#include "lowmem/shared_run.h"
#include "lowmem/thread_context.h"
#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Runs turns until the target is reached, the queue is empty, nothing can be picked, the costs of
/// refused collapses come up, a stop is requested, or a thread has run out of memory. Never throws:
/// a lack of memory is noted in `run`. Leaves no reservation behind.
template <typename Metric>
void doDecimationLoop_LM_MT(ProgressiveMesh& pm, ThreadContext& context, SharedRun& run);

}  // namespace korvalite
