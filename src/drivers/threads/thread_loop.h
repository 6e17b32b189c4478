// SPDX-License-Identifier: MIT
//
// The loop that every thread of the multi-threaded driver runs on the shared mesh.
//
// A turn has three phases. Pick, under csQueue: finds the cheapest vertex with no held vertices
// around it and reserves its neighbourhood. Work, without csQueue: collapses and computes new costs
// on the reserved vertices. Commit, under csQueue: applies the results and releases the vertices.
//
// Two turns with disjoint reservations write disjoint data, except for the bit arrays, their
// counters and the queue, which have critical sections. The costs also read triangles just outside
// the reservation, which another thread may be changing: those reads are relaxed, and at worst a
// cost is slightly off.
#pragma once

#include "drivers/threads/thread_context.h"
#include "progressive/progressive_mesh.h"

namespace korvalite::core {

/// Runs turns until the target is reached, the queue is empty, nothing can be picked, only refused
/// collapses are left, a stop is requested, or a thread has run out of memory. Never throws:
/// running out of memory is recorded in `run`. Leaves no reservations behind.
template <typename Metric>
void doDecimationLoop_LM_MT(ProgressiveMesh& pm, ThreadContext& context, SharedRun& run);

}  // namespace korvalite::core
