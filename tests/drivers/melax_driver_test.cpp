// SPDX-License-Identifier: MIT
#include "drivers/in_memory_drivers.h"

#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/step_recorder.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvalite::core {
namespace {

using test::MeshPtr;

class Melax : public test::DecimationTest {
protected:
    template <typename Set>
    static MeshPtr run(DMesh mesh, Set set) {
        return test::decimatedBy(MEMSPEED_TRADEOFF_MELAX, std::move(mesh), set);
    }
    static MeshPtr runTo(std::uint32_t target, DMesh mesh) {
        return run(std::move(mesh), [&](ProgressiveMesh& pm) { pm.TargetNumItem = target; });
    }
};

DMesh bumpyBall() {
    DMesh mesh = test::sphere(3);
    test::jitter(mesh, 0.01F, 5);
    return mesh;
}

TEST_F(Melax, ReachesTheTarget) {
    const MeshPtr pm = runTo(40, bumpyBall());
    EXPECT_EQ(pm->mesh.numActiveVertices, 40U);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
}

TEST_F(Melax, MovesNoVertex) {
    const DMesh ball = bumpyBall();
    const MeshPtr pm = runTo(40, ball);
    for (std::size_t v = 0; v < ball.vertices.size(); ++v) {
        EXPECT_EQ(pm->mesh.vertices[v].x, ball.vertices[v].x);
        EXPECT_EQ(pm->mesh.vertices[v].y, ball.vertices[v].y);
        EXPECT_EQ(pm->mesh.vertices[v].z, ball.vertices[v].z);
    }
}

TEST_F(Melax, AFlatPatchLosesItsLowestVerticesFirst) {
    const MeshPtr pm = run(test::grid(6, 6), [](ProgressiveMesh& settings) {
        settings.TargetNumItem = 48;
        settings.AvoidNormalReverse = false;
        settings.ProtectTopology = false;
    });
    EXPECT_FALSE(pm->mesh.vertexActive.Test(0));
    EXPECT_EQ(pm->mesh.numActiveVertices, 48U);
}

TEST_F(Melax, OnlyTheLinkTestProtectsBorders) {
    const auto arrays = [&](std::int32_t mode) {
        DMesh mesh = test::grid(8, 8, test::hills);
        test::jitter(mesh, 0.1F, 2);
        const MeshPtr pm = run(mesh, [&](ProgressiveMesh& settings) {
            settings.TargetNumItem = 20;
            settings.BorderMode = mode;
        });
        EXPECT_TRUE(test::isSound(pm->mesh));
        return test::arraysOf(pm->mesh, test::Part::All);
    };
    const auto none = arrays(BORDER_MODE_NONE);
    EXPECT_EQ(arrays(BORDERMODE_PROTECT), none);
    EXPECT_EQ(arrays(BORDERMODE_FREEZE), none);
}

TEST_F(Melax, RecordsNoSplits) {
    const MeshPtr pm = runTo(40, bumpyBall());
    ASSERT_TRUE(pm->recordVSplits);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
    test::goAllUp(*pm);
    EXPECT_EQ(pm->mesh.numActiveVertices, 40U);
}

TEST_F(Melax, WithoutProtectTopologyThePatchStaysSound) {
    // Costs away from the kept vertex are then stale: a vertex whose partner has gone is dropped.
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        DMesh mesh = test::grid(12, 12, test::hills);
        test::jitter(mesh, 0.3F, seed);
        const MeshPtr pm = run(mesh, [](ProgressiveMesh& settings) {
            settings.TargetNumItem = 20;
            settings.ProtectTopology = false;
        });
        EXPECT_TRUE(test::isSound(pm->mesh));
        EXPECT_LT(pm->mesh.numActiveVertices, mesh.vertices.size());
    }
}

TEST_F(Melax, BothSidesLoseTheSameNumberOfVertices) {
    const MeshPtr pm = run(test::sphere(3), [](ProgressiveMesh& settings) {
        settings.TargetNumItem = 80;
        test::askForSymmetry(settings, 0);
    });
    EXPECT_TRUE(pm->m_handleSymmetry_internal);
    int left = 0;
    int right = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        if (!pm->mesh.vertexActive.Test(v)) continue;
        const float x = pm->mesh.vertices[static_cast<std::size_t>(v)].x;
        left += x < -0.01F ? 1 : 0;
        right += x > 0.01F ? 1 : 0;
    }
    EXPECT_EQ(left, right);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
}

TEST_F(Melax, ReportsAllStepsButTheNinthToAnObserver) {
    test::StepRecorder steps;
    DMesh ball = test::sphere(4);
    const auto target = static_cast<std::uint32_t>(ball.vertices.size()) - 401;
    run(ball, [&](ProgressiveMesh& pm) {
        pm.TargetNumItem = target;
        pm.monitor = &steps;
    });
    EXPECT_EQ(steps.numbers, (std::vector<int>{4, 5, 7, 8, 10, 11, 11, 12}));
}

}  // namespace
}  // namespace korvalite::core
