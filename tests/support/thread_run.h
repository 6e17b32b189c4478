// SPDX-License-Identifier: MIT
//
// Runs on several threads: requesting them, the loop by itself, and what a run must leave behind
// however it ended.
#pragma once

#include "drivers/threads/thread_context.h"
#include "drivers/threads/thread_loop.h"
#include "progressive/progressive_mesh.h"
#include "support/host_follower.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace korvalite::core::test {

inline void askForThreads(ProgressiveMesh& pm, std::int32_t count) {
    pm.MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
    pm.NumThread = count;
}

// No thread has left a reservation, or a mark in its own tables. Once the working state has been
// released, the reservation bits themselves no longer exist.
inline testing::AssertionResult nothingIsHeld(const ProgressiveMesh& pm) {
    if (const auto held = threadsOf(pm).lockedVertices.CountSet(); held != 0)
        return testing::AssertionFailure() << held << " vertices are held";
    for (const ThreadContext& context : threadsOf(pm).threadContexts) {
        const auto& slots = context.marks.vertexSlot;
        const bool clear = std::all_of(slots.begin(), slots.end(), [](std::uint16_t slot) {
            return slot == NeighbourhoodMarks::kNoSlot;
        });
        if (!clear)
            return testing::AssertionFailure() << "thread " << context.threadIndex << " has marks";
    }
    return testing::AssertionSuccess();
}

// Expects that nothing is held when the loops of a run have ended, before its working state is
// released. A run that already has an observer keeps it.
class ReleaseCheck : public HostFollower {
public:
    explicit ReleaseCheck(ProgressiveMesh& pm) : pm_(pm) {
        if (pm.monitor == &hostMonitor()) pm.monitor = this;
    }
    ~ReleaseCheck() {
        if (pm_.monitor == this) pm_.monitor = &hostMonitor();
    }
    ReleaseCheck(const ReleaseCheck&) = delete;
    ReleaseCheck& operator=(const ReleaseCheck&) = delete;

    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        constexpr int kLoopsHaveEnded = 12;
        if (number == kLoopsHaveEnded) {
            EXPECT_TRUE(nothingIsHeld(pm_));
        }
    }

private:
    ProgressiveMesh& pm_;
};

// Runs the loop on NumThread threads of a prepared mesh, while this thread calls meanwhile().
template <typename Metric, typename Meanwhile>
void runLoops(ProgressiveMesh& pm, SharedRun& run, Meanwhile meanwhile) {
    threadsOf(pm).threadContexts.resize(static_cast<std::size_t>(pm.NumThread));
    std::int32_t index = 0;
    for (ThreadContext& context : threadsOf(pm).threadContexts) {
        context.threadIndex = index++;
        context.marks.prepare(pm.mesh);
    }
    std::vector<std::jthread> threads;
    for (ThreadContext& context : threadsOf(pm).threadContexts)
        threads.emplace_back([&] { doDecimationLoop_LM_MT<Metric>(pm, context, run); });
    meanwhile();
}

}  // namespace korvalite::core::test
