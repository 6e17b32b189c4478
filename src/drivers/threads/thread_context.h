// SPDX-License-Identifier: MIT
//
// The state that each thread of the multi-threaded driver owns. While a thread runs its loop,
// nothing else touches its context: its results reach the mesh through its own commits.
#pragma once

#include "base/bit_array.h"
#include "base/cache.h"
#include "collapse/sharing.h"
#include "collapse/work_record.h"
#include "ranking/neighbourhood_marks.h"

#include <chrono>
#include <cstdint>
#include <deque>

namespace korvalite::core {

/// The turns of one thread and its times, which are measured only if
/// ProgressiveMesh::measureThreads is set.
struct ThreadStatistics {
    std::uint64_t turns = 0;
    std::uint64_t candidates = 0;  // vertices tried for picks; a turn takes at most one
    double secondsWaiting = 0;     // for csQueue
    double secondsInQueue = 0;     // while holding csQueue
    double secondsInLoop = 0;      // in total
};

/// Adds its lifetime to `seconds`; measures nothing if that is null.
class TimeTaken {
public:
    explicit TimeTaken(double* seconds) : seconds_(seconds) {
        if (seconds_ != nullptr) begin_ = Clock::now();
    }
    ~TimeTaken() {
        if (seconds_ != nullptr)
            *seconds_ += std::chrono::duration<double>(Clock::now() - begin_).count();
    }
    TimeTaken(const TimeTaken&) = delete;
    TimeTaken& operator=(const TimeTaken&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    double* seconds_;
    Clock::time_point begin_;
};

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

/// What the threads of one run share besides the mesh.
struct SharedRun {
    CriticalSections sections;

    // Guarded by csQueue.
    std::uint32_t progressCount = 0;  // committed turns, including refused ones
    bool outOfMemory = false;         // a thread has run out of memory, so all must end
};

}  // namespace korvalite::core
