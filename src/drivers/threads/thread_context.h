// SPDX-License-Identifier: MIT
//
// The state that each thread of the multi-threaded driver owns. While a thread runs its loop,
// nothing else touches its context: its results reach the mesh through its own commits.
#pragma once

#include "base/bit_array.h"
#include "base/cache_line.h"
#include "collapse/work_record.h"
#include "drivers/threads/thread_statistics.h"
#include "ranking/neighbourhood_marks.h"

#include <cstdint>
#include <deque>

namespace korvalite {

struct alignas(kCacheLine) ThreadContext {
    std::int32_t threadIndex = 0;  // 0 for the main thread
    ThreadWorkRecord workRecord;
    NeighbourhoodMarks marks;
    ThreadStatistics statistics;  // of the last run
};

/// The state of the multi-threaded driver, from its first run on a mesh.
struct ThreadsState {
    BitArray lockedVertices;                   // reserved by a thread for its turn; under csQueue
    std::deque<ThreadContext> threadContexts;  // a deque keeps references valid as it grows
};

}  // namespace korvalite
