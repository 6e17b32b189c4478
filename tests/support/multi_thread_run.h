// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/progressive_mesh.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace korvalite::test {

inline DMesh bumpyBall(unsigned level = 3) {
    DMesh mesh = sphere(level);
    jitter(mesh, 0.01F, 5);
    return mesh;
}

// Of turns of all threads of the last run.
inline std::uint64_t turnsOf(const ProgressiveMesh& pm) {
    std::uint64_t turns = 0;
    for (const ThreadContext& context : pm.threadContexts)
        turns += context.statistics.turns;
    return turns;
}

class MultiThreadTest : public DecimationTest {
protected:
    template <typename Set>
    static MeshPtr run(std::int32_t threads, DMesh mesh, Set set) {
        MeshPtr pm = decimatedBy(MEMSPEED_TRADEOFF_LOW_MEM_MT, std::move(mesh),
                                 [&](ProgressiveMesh& settings) {
                                     settings.NumThread = threads;
                                     set(settings);
                                 });
        expectAllReleased(*pm);
        return pm;
    }
    static MeshPtr runTo(std::uint32_t target, std::int32_t threads, DMesh mesh) {
        return run(threads, std::move(mesh),
                   [&](ProgressiveMesh& pm) { pm.TargetNumItem = target; });
    }

    // No vertex is held any more, and no thread has left a mark.
    static void expectAllReleased(const ProgressiveMesh& pm) {
        EXPECT_EQ(pm.lockedVertices.count(), pm.mesh.vertexCount());
        EXPECT_EQ(pm.lockedVertices.CountSet(), 0);
        for (const ThreadContext& context : pm.threadContexts) {
            const auto& slots = context.marks.vertexSlot;
            EXPECT_EQ(slots.size(), pm.mesh.vertices.size());
            EXPECT_EQ(std::count(slots.begin(), slots.end(), NeighbourhoodMarks::kNoSlot),
                      std::ssize(slots));
            EXPECT_EQ(context.marks.triangleMark.count(), pm.mesh.triangleCount());
            EXPECT_EQ(context.marks.triangleMark.CountSet(), 0);
        }
    }

    Watchdog watchdog{"MultiThreadTest"};
};

}  // namespace korvalite::test
