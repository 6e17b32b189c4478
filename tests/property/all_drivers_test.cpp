// SPDX-License-Identifier: MIT
//
// Properties of runs that also hold for the drivers that no job reaches.
#include "property/run_cases.h"

#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace korvalite::core::test {
namespace {

constexpr float kPercents[] = {60, 25, 0};

class InMemoryRun : public RunTest {
protected:
    MeshPtr run(std::int32_t driver, float percent) const {
        return decimatedTo(percent, [&](ProgressiveMesh& pm) { pm.MemSpeedTradeOff = driver; });
    }
};

INSTANTIATE_TEST_SUITE_P(Case, InMemoryRun, testing::ValuesIn(runCases()), nameOfRun);

TEST_P(InMemoryRun, LeavesASoundMeshAndKeepsItClosed) {
    for (const std::int32_t driver : {MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_MELAX}) {
        for (const float percent : kPercents) {
            const MeshPtr pm = run(driver, percent);
            EXPECT_TRUE(isSound(pm->mesh)) << driver << ' ' << percent;
            if (GetParam().surface == Surface::Closed) {
                EXPECT_TRUE(isClosedManifold(pm->mesh)) << driver << ' ' << percent;
            }
        }
    }
}

TEST_P(InMemoryRun, ReachesItsTargetOrGoesAsFarAsAllowed) {
    for (const std::int32_t driver : {MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_MELAX}) {
        const MeshPtr pm = run(driver, 60);
        if (GetParam().hindrance == Hindrance::None) {
            EXPECT_LE(pm->activeCount(), pm->TargetNumItem) << driver;
        }
        EXPECT_GT(pm->activeCount() + mostOfATurn(*pm), pm->TargetNumItem) << driver;
    }
}

TEST_P(InMemoryRun, IsDeterministic) {
    for (const std::int32_t driver : {MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_MELAX}) {
        EXPECT_EQ(arraysOf(run(driver, 25)->mesh, Part::All),
                  arraysOf(run(driver, 25)->mesh, Part::All))
            << driver;
    }
}

TEST_P(InMemoryRun, HighSpeedSplitsRestoreTheInputBitForBit) {
    const MeshPtr pm = run(MEMSPEED_TRADEOFF_HIGH_SPEED, 25);
    const auto coarse = arraysOf(pm->mesh, Part::Active);
    goAllUp(*pm);
    EXPECT_TRUE(surfaceOf(pm->mesh, UVs::Ignored) == surfaceOf(GetParam().mesh(), UVs::Ignored));
    goAllDown(*pm);
    EXPECT_EQ(arraysOf(pm->mesh, Part::Active), coarse);
}

}  // namespace
}  // namespace korvalite::core::test
