// SPDX-License-Identifier: MIT
//
// Properties of every run on several threads, though no two runs give the same mesh.
#include "property/run_cases.h"

#include "support/level_walk.h"
#include "support/mesh_validator.h"
#include "support/thread_run.h"
#include "support/threads_of.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace korvalite::core::test {
namespace {

constexpr std::int32_t kThreadCounts[] = {2, 3, 4, 8, 16};

void expectSound(const ProgressiveMesh& pm, Surface surface) {
    EXPECT_TRUE(isSound(pm.mesh));
    EXPECT_TRUE(nothingIsHeld(pm));
    if (surface == Surface::Closed) {
        EXPECT_TRUE(isClosedManifold(pm.mesh));
    }
}

// Threads that are working when the target is reached finish their turns.
void expectNearTarget(const ProgressiveMesh& pm) {
    const auto turns = static_cast<std::uint32_t>(threadsOf(pm).threadContexts.size());
    EXPECT_GT(pm.activeCount() + turns * mostOfATurn(pm), pm.TargetNumItem);
}

// Goes up all splits and down again. `pm` is not reordered.
void expectTheWayBackTo(const DMesh& original, ProgressiveMesh& pm) {
    const UVs uvs = comparableUVs(pm);
    const Words coarse = arraysOf(pm.mesh, Part::Active, uvs);
    goAllUp(pm);
    const DMesh before = pm.m_handleUVs_internal ? welded(original) : original;
    EXPECT_EQ(pm.CurVtxSplitPos, 0);
    EXPECT_TRUE(arraysOf(pm.mesh, Part::All, uvs) == arraysOf(before, Part::All, uvs));
    goAllDown(pm);
    EXPECT_TRUE(arraysOf(pm.mesh, Part::Active, uvs) == coarse);
}

class SeveralThreads : public RunTest {
protected:
    template <typename Set>
    MeshPtr onThreads(std::int32_t count, float percent, Set set) const {
        const Watchdog watchdog(GetParam().name + " on " + std::to_string(count) + " threads");
        return decimatedTo(percent, [&](ProgressiveMesh& pm) {
            askForThreads(pm, count);
            set(pm);
        });
    }
    MeshPtr onThreads(std::int32_t count, float percent) const {
        return onThreads(count, percent, [](ProgressiveMesh&) {});
    }
};

INSTANTIATE_TEST_SUITE_P(Case, SeveralThreads, testing::ValuesIn(runCases()), nameOfRun);

TEST_P(SeveralThreads, LeaveASoundMeshAndKeepItClosed) {
    for (const std::int32_t threads : kThreadCounts) {
        SCOPED_TRACE(threads);
        const MeshPtr pm = onThreads(threads, 10);
        EXPECT_EQ(threadsOf(*pm).threadContexts.size(), static_cast<std::size_t>(threads));
        expectSound(*pm, GetParam().surface);
    }
}

TEST_P(SeveralThreads, ReachTheirTargetOrLeaveOnlyRefusals) {
    float percent = 60;
    for (const std::int32_t threads : kThreadCounts) {
        SCOPED_TRACE(threads);
        const MeshPtr pm = onThreads(threads, percent);
        if (GetParam().hindrance == Hindrance::None && percent > 0) {
            EXPECT_LE(pm->activeCount(), pm->TargetNumItem);
        }
        expectNearTarget(*pm);
        // Alternates between a target that is far from the end and the lowest one.
        percent = percent > 0 ? 0.0F : 60.0F;
        if (pm->activeCount() <= pm->TargetNumItem) continue;
        for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v)
            EXPECT_FALSE(isLeftUntried(pm->mesh, v)) << v;
    }
}

TEST_P(SeveralThreads, RecordSplitsThatRestoreTheInputBitForBit) {
    const DMesh original = GetParam().mesh();
    for (const std::int32_t threads : {2, 4, 8}) {
        SCOPED_TRACE(threads);
        const MeshPtr pm = onThreads(threads, 8, [](ProgressiveMesh& settings) {
            settings.DoReorder = false;
            settings.vsplitList.pageCapacity = 40;
        });
        expectTheWayBackTo(original, *pm);
    }
}

// The order is that of the commits, in which the collapses could have been made one by one.
TEST_P(SeveralThreads, LeaveSoundPrefixesAsLevelsOfAReorderedMesh) {
    for (const std::int32_t threads : {3, 16}) {
        SCOPED_TRACE(threads);
        const MeshPtr pm = onThreads(threads, 8);
        EXPECT_TRUE(pm->IsReordered);
        const auto fewest = static_cast<std::int32_t>(pm->activeCount());
        const std::int32_t most =
            pm->targetCountsVertices ? pm->mesh.vertexCount() : pm->mesh.triangleCount();
        for (const int part : {0, 3, 1, 4, 2, 0}) {
            updateMeshAtLevel(*pm, fewest + (most - fewest) * part / 4);
            EXPECT_TRUE(isAPrefix(pm->mesh));
            expectSound(*pm, GetParam().surface);
        }
    }
}

TEST_P(SeveralThreads, ChangeNothingIfTheTargetIsAlreadyReached) {
    const MeshPtr pm = onThreads(16, 100);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
    EXPECT_EQ(pm->mesh.triangles, GetParam().mesh().triangles);
    EXPECT_TRUE(nothingIsHeld(*pm));
}

// The samples that are too big for the tests above.
class SeveralThreadsOnASample : public DecimationTest,
                                public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Case, SeveralThreadsOnASample, testing::Values("boot", "fish-masked"),
                         [](const auto& row) { return std::string(row.param, 4); });

TEST_P(SeveralThreadsOnASample, ReachTheirTargetAndCanRestoreTheInput) {
    const DMesh original = sample(std::string(GetParam()) + ".Vok");
    for (const std::int32_t threads : kThreadCounts) {
        SCOPED_TRACE(threads);
        const Watchdog watchdog(GetParam());
        const MeshPtr pm = decimated(original, [&](ProgressiveMesh& settings) {
            askForThreads(settings, threads);
            targetPercent(settings, 50);
            settings.DoReorder = false;
        });
        EXPECT_LE(pm->activeCount(), pm->TargetNumItem);
        expectNearTarget(*pm);
        expectSound(*pm, Surface::Closed);
        expectTheWayBackTo(original, *pm);
    }
}

}  // namespace
}  // namespace korvalite::core::test
