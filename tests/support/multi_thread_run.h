// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"
#include "support/thread_run.h"
#include "support/threads_of.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace korvalite::core::test {

inline DMesh bumpyBall(unsigned level = 3) {
    DMesh mesh = sphere(level);
    jitter(mesh, 0.01F, 5);
    return mesh;
}

// The number of turns of all threads in the last run.
inline std::uint64_t turnsOf(const ProgressiveMesh& pm) {
    std::uint64_t turns = 0;
    for (const ThreadContext& context : threadsOf(pm).threadContexts)
        turns += context.statistics.turns;
    return turns;
}

class MultiThreadTest : public DecimationTest {
protected:
    template <typename Set>
    static MeshPtr run(std::int32_t threads, DMesh mesh, Set set) {
        std::optional<ReleaseCheck> check;
        MeshPtr pm = decimatedBy(MEMSPEED_TRADEOFF_LOW_MEM_MT, std::move(mesh),
                                 [&](ProgressiveMesh& settings) {
                                     askForThreads(settings, threads);
                                     set(settings);
                                     check.emplace(settings);
                                 });
        expectAllReleased(*pm);
        return pm;
    }
    static MeshPtr runTo(std::uint32_t target, std::int32_t threads, DMesh mesh) {
        return run(threads, std::move(mesh),
                   [&](ProgressiveMesh& pm) { pm.TargetNumItem = target; });
    }

    static void expectAllReleased(const ProgressiveMesh& pm) {
        EXPECT_TRUE(nothingIsHeld(pm));
        for (const ThreadContext& context : threadsOf(pm).threadContexts)
            EXPECT_EQ(context.marks.vertexSlot.size(), pm.mesh.vertices.size());
    }

    Watchdog watchdog{"MultiThreadTest"};
};

}  // namespace korvalite::core::test
