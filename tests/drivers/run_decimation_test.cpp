// SPDX-License-Identifier: MIT
#include "drivers/run_decimation.h"

#include "support/allocation_limit.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/stop_request.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

using test::MeshPtr;
using test::Part;

class RunDecimationTest : public test::DecimationTest {
protected:
    static MeshPtr run(DMesh mesh, std::int32_t driver) {
        return test::decimated(std::move(mesh), [&](ProgressiveMesh& pm) {
            pm.MemSpeedTradeOff = driver;
            pm.TargetNumItem = 100;
        });
    }
};

TEST_F(RunDecimationTest, EachTradeOffHasItsDriverAndOthersDoNothing) {
    for (const std::int32_t driver : {0, 1, 4})
        EXPECT_EQ(run(test::sphere(3), driver)->mesh.numActiveVertices, 100U) << driver;
    for (const std::int32_t driver : {3, 5, 6, -1})
        EXPECT_EQ(run(test::sphere(3), driver)->mesh.numActiveVertices, 258U) << driver;
}

TEST_F(RunDecimationTest, FinishesTheMeshEvenWithoutADriver) {
    const MeshPtr pm = run(test::sphere(3), MEMSPEED_TRADEOFF_AUTO);
    EXPECT_TRUE(pm->IsReordered);
    EXPECT_TRUE(pm->IsCleaned);
    EXPECT_EQ(pm->finalDecimNumItem, 258);
    EXPECT_EQ(pm->askedNumItem, 100);  // no driver has cleared it
}

TEST_F(RunDecimationTest, NotesTheResultWhileTheDriverClearsTheRequest) {
    const MeshPtr pm = run(test::sphere(3), MEMSPEED_TRADEOFF_LOW_MEM);
    EXPECT_EQ(pm->finalDecimNumItem, 100);
    EXPECT_EQ(pm->askedNumItem, kNone);
}

TEST_F(RunDecimationTest, NotesTrianglesIfTheyAreCounted) {
    const MeshPtr pm = test::decimated(test::sphere(3), [](ProgressiveMesh& settings) {
        settings.targetCountsVertices = false;
        settings.TargetNumItem = 300;
    });
    EXPECT_EQ(pm->mesh.numActiveTriangles, 300U);
    EXPECT_EQ(pm->finalDecimNumItem, 300);
}

TEST_F(RunDecimationTest, SeveralThreadsReachTheSameTarget) {
    const MeshPtr pm = run(test::sphere(3), MEMSPEED_TRADEOFF_LOW_MEM_MT);
    EXPECT_EQ(test::threadsOf(*pm).threadContexts.size(), 2U);
    EXPECT_LE(pm->mesh.numActiveVertices, pm->TargetNumItem);
    EXPECT_GE(pm->mesh.numActiveVertices + 2, pm->TargetNumItem)
        << "each thread may have a turn in progress";
}

TEST_F(RunDecimationTest, UsesColoursOnlyIfEachVertexHasOne) {
    DMesh ball = test::sphere(3);
    test::addColors(ball, [](const FloatVec3&) { return test::packColor(1, 2, 3); });
    EXPECT_TRUE(run(ball, MEMSPEED_TRADEOFF_LOW_MEM)->m_useVertexColors_internal);
    ball.vertexColors.pop_back();
    EXPECT_FALSE(run(ball, MEMSPEED_TRADEOFF_LOW_MEM)->m_useVertexColors_internal);
}

TEST_F(RunDecimationTest, ASecondRunContinuesWhereTheFirstEnded) {
    const MeshPtr pm = run(test::sphere(3), MEMSPEED_TRADEOFF_LOW_MEM);
    for (const std::int32_t driver : {1, 0, 4}) {
        pm->MemSpeedTradeOff = driver;
        pm->TargetNumItem = pm->mesh.numActiveVertices - 20;
        EXPECT_EQ(RunDecimation(*pm), 0);
        EXPECT_EQ(pm->mesh.numActiveVertices, pm->TargetNumItem) << driver;
        EXPECT_TRUE(test::isSound(pm->mesh)) << driver;
        EXPECT_TRUE(test::isClosedManifold(pm->mesh)) << driver;
    }
}

TEST_F(RunDecimationTest, ReturnsTwoAndEndsTheMainTaskWithoutMemory) {
    for (const std::int32_t driver : {0, 1, 2, 4}) {
        const test::HostedProgress host;
        MeshPtr pm = test::prepared(test::sphere(4));
        pm->MemSpeedTradeOff = driver;
        int result = 0;
        {
            // No array as long as the mesh can be allocated.
            const test::AllocationLimit limit(1000);
            result = RunDecimation(*pm);
        }
        EXPECT_EQ(result, 2) << driver;
        EXPECT_EQ(progressChannel().record().mainActive, 0) << driver;
        EXPECT_TRUE(test::isSound(pm->mesh)) << driver;
    }
}

TEST_F(RunDecimationTest, HandlesEmptyMeshesAndMeshesWithoutTriangles) {
    for (const std::int32_t driver : {0, 1, 2, 4}) {
        EXPECT_EQ(run(DMesh(), driver)->mesh.numActiveVertices, 0U);
        EXPECT_EQ(run(test::buildMesh({{0, 0, 0}, {1, 2, 3}}, {}), driver)->mesh.numActiveVertices,
                  2U);
    }
}

}  // namespace
}  // namespace korvalite::core
