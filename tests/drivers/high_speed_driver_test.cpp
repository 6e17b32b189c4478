// SPDX-License-Identifier: MIT
#include "drivers/in_memory_drivers.h"

#include "support/decimation_run.h"
#include "support/host_follower.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/step_recorder.h"
#include "support/stop_request.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace korvalite::core {
namespace {

using test::MeshPtr;

class HighSpeed : public test::DecimationTest {
protected:
    template <typename Set>
    static MeshPtr run(DMesh mesh, Set set) {
        return test::decimatedBy(MEMSPEED_TRADEOFF_HIGH_SPEED, std::move(mesh), set);
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

// The symmetric runs have a target of 50 vertices.
MeshPtr symmetricRun(DMesh mesh, bool symmetric = true) {
    const auto set = [&](ProgressiveMesh& pm) {
        pm.TargetNumItem = 50;
        if (symmetric) test::askForSymmetry(pm, 0);
    };
    return test::decimatedBy(MEMSPEED_TRADEOFF_HIGH_SPEED, std::move(mesh), set);
}

TEST_F(HighSpeed, ReachesTheTarget) {
    const MeshPtr pm = runTo(40, bumpyBall());
    EXPECT_EQ(pm->mesh.numActiveVertices, 40U);
    EXPECT_TRUE(test::isSound(pm->mesh));
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
}

TEST_F(HighSpeed, CollapsesNothingForATargetAtOrAboveTheCount) {
    const DMesh ball = bumpyBall();
    const auto count = static_cast<std::uint32_t>(ball.vertices.size());
    for (const std::uint32_t target : {count, count + 1, 0xFFFFFFFFU}) {
        const MeshPtr pm = runTo(target, ball);
        EXPECT_EQ(pm->mesh.numActiveVertices, count);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
        EXPECT_EQ(pm->mesh.triangles, ball.triangles);
    }
}

TEST_F(HighSpeed, CountsTrianglesIfAsked) {
    const MeshPtr pm = run(bumpyBall(), [](ProgressiveMesh& settings) {
        settings.targetCountsVertices = false;
        settings.TargetNumItem = 101;
    });
    EXPECT_EQ(pm->mesh.numActiveTriangles, 100U);  // a closed mesh loses two at a time
}

TEST_F(HighSpeed, ReducesAClosedManifoldToItsSmallestShape) {
    const MeshPtr pm = runTo(0, bumpyBall());
    // A tetrahedron may still become two back-to-back triangles, whose fans are closed.
    EXPECT_GE(pm->mesh.numActiveVertices, 3U);
    EXPECT_LE(pm->mesh.numActiveVertices, 4U);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        if (!pm->mesh.vertexActive.Test(v)) continue;
        EXPECT_GE(pm->mesh.vertices[static_cast<std::size_t>(v)].cost, kPenalizedCost);
    }
}

TEST_F(HighSpeed, TheFinishStepChangesNothing) {
    const auto runWith = [&](bool finishStep) {
        return run(bumpyBall(), [&](ProgressiveMesh& pm) {
            pm.TargetNumItem = 0;
            pm.AllowFinishStep = finishStep;
        });
    };
    const MeshPtr off = runWith(false);
    const MeshPtr on = runWith(true);
    EXPECT_EQ(test::arraysOf(on->mesh, test::Part::All),
              test::arraysOf(off->mesh, test::Part::All));
    EXPECT_EQ(on->decimationFinishTriangleCount, kNone);
    EXPECT_FALSE(on->inFinishStep);
}

TEST_F(HighSpeed, ANaNFirstVertexTurnsSymmetryOff) {
    DMesh ball = test::sphere(3);
    ball.vertices[0].x = std::numeric_limits<float>::quiet_NaN();
    const MeshPtr pm = symmetricRun(ball);
    EXPECT_FALSE(pm->m_handleSymmetry_internal);
    EXPECT_TRUE(test::isSound(pm->mesh));
}

TEST_F(HighSpeed, EachTurnCollapsesAVertexAndItsMirrorImage) {
    const MeshPtr pm = symmetricRun(test::sphere(3));
    const auto count = static_cast<std::uint32_t>(pm->mesh.vertices.size());
    EXPECT_TRUE(pm->m_handleSymmetry_internal);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), count - pm->mesh.numActiveVertices);
    // All collapses except those within the plane come in pairs that mirror each other.
    std::uint32_t pairs = 0;
    for (std::uint32_t i = 0; i + 1 < pm->vsplitList.NumVtxSplit(); ++i) {
        const auto placeOf = [&](std::uint32_t record) {
            const auto split = pm->vsplitList.ensureLoaded(static_cast<std::int32_t>(record));
            return pm->mesh.vertices[static_cast<std::size_t>(split.vertex())].position();
        };
        const FloatVec3 a = placeOf(i);
        const FloatVec3 b = placeOf(i + 1);
        if (a.x != 0 && a.x == -b.x && a.y == b.y && a.z == b.z) ++pairs, ++i;
    }
    EXPECT_GT(2 * pairs, pm->vsplitList.NumVtxSplit() / 2);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
}

TEST_F(HighSpeed, AnAsymmetricMaskLetsPairsCollapseSeparately) {
    DMesh ball = test::sphere(3);
    test::addMask(ball, [](const FloatVec3& p) { return p.x > 0.5F ? 200 : 255; });
    const MeshPtr pm = symmetricRun(ball);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    int left = 0;
    int right = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        const float x = pm->mesh.vertices[static_cast<std::size_t>(v)].x;
        if (!pm->mesh.vertexActive.Test(v)) continue;
        (x > 0.5F ? right : left) += x > 0.5F || x < -0.5F ? 1 : 0;
    }
    EXPECT_NE(left, right);
}

// The number of active vertices that have been refused.
int refused(const ProgressiveMesh& pm) {
    int count = 0;
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        const float cost = pm.mesh.vertices[static_cast<std::size_t>(v)].cost;
        if (pm.mesh.vertexActive.Test(v) && cost >= kPenalizedCost && cost < kNotCollapsible)
            ++count;
    }
    return count;
}

TEST_F(HighSpeed, ARefusedMirrorImageUndoesTheFirstCollapse) {
    const MeshPtr control = symmetricRun(test::sphere(3));
    const MeshPtr pm = symmetricRun(test::ballWithADoubledTriangle());
    EXPECT_EQ(refused(*control), 0);
    EXPECT_GE(refused(*pm), 2);
    EXPECT_TRUE(test::isSound(pm->mesh));
    // The next vertices have had their turns; the last turn may collapse a pair.
    EXPECT_LE(pm->mesh.numActiveVertices, 50U);
    EXPECT_GE(pm->mesh.numActiveVertices, 49U);
}

TEST_F(HighSpeed, SplitsAreReversibleBitForBit) {
    const DMesh ball = bumpyBall();
    for (const bool symmetric : {false, true}) {
        const MeshPtr pm = symmetricRun(symmetric ? test::sphere(3) : ball, symmetric);
        const auto coarse = test::arraysOf(pm->mesh, test::Part::All);
        test::goAllUp(*pm);
        EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(symmetric ? test::sphere(3) : ball));
        test::goAllDown(*pm);
        EXPECT_EQ(test::arraysOf(pm->mesh, test::Part::All), coarse);
    }
}

TEST_F(HighSpeed, NoVertexMovesFarFromTheMesh) {
    // A vertex without a stored position would jump to the origin.
    DMesh ball = test::sphere(3);
    for (VertexRecord& vertex : ball.vertices)
        vertex.y += 40;
    test::jitter(ball, 0.001F, 9);
    test::addMask(ball, [](const FloatVec3& p) { return p.z > 0.3F ? 230 : 255; });
    recomputeBoundingBox(ball);
    const MeshPtr pm = symmetricRun(ball);
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        if (!pm->mesh.vertexActive.Test(v)) continue;
        EXPECT_NEAR(pm->mesh.vertices[static_cast<std::size_t>(v)].y, 40, 1.5) << v;
    }
}

// A mirrored grid with a triangle attached to each of its vertices. When such a triangle collapses
// on the side of the masters, its image collapses too and loses its last vertex, and the slave that
// it was attached to is ranked from what is left.
DMesh mirroredFringe() {
    DMesh half = test::grid(8, 8, test::hills);
    const std::int32_t count = half.vertexCount();
    for (std::int32_t v = 0; v < count; ++v) {
        const FloatVec3 p = half.vertices[static_cast<std::size_t>(v)].position();
        for (const float side : {-0.1F, 0.1F}) {
            half.vertices.emplace_back();
            half.vertices.back().setPosition({p.x + 0.2F, p.y + side, p.z + 1});
        }
        for (const std::int32_t corner : {half.vertexCount() - 2, half.vertexCount() - 1, v})
            half.triangles.push_back(static_cast<std::uint32_t>(corner));
    }
    test::completeMesh(half);
    DMesh whole = test::withMirrorImage(half, 0);
    for (VertexRecord& vertex : whole.vertices)
        vertex.z += 1000;
    recomputeBoundingBox(whole);
    return whole;
}

TEST_F(HighSpeed, ASlaveRankedWithoutAPositionMovesToItsPartner) {
    const MeshPtr pm = run(mirroredFringe(), [](ProgressiveMesh& settings) {
        settings.ProtectTopology = false;
        settings.AvoidNormalReverse = false;
        test::askForSymmetry(settings, 0);
    });
    EXPECT_LT(pm->mesh.numActiveVertices, 100U);
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v)
        EXPECT_GT(pm->mesh.vertices[static_cast<std::size_t>(v)].z, 900) << v;
}

TEST_F(HighSpeed, AStopRequestLeavesTheMeshAtTheLevelReached) {
    const test::StopRequest stop;
    const MeshPtr pm = runTo(40, bumpyBall());
    EXPECT_EQ(pm->mesh.numActiveVertices, pm->mesh.vertices.size());
}

TEST_F(HighSpeed, UVsAndColoursAreNotHandled) {
    DMesh ball = bumpyBall();
    test::addColors(ball,
                    [](const FloatVec3& p) { return test::packColor(p.x > 0 ? 200U : 10U, 0, 0); });
    test::addCornerUVs(ball);
    const DMesh before = ball;
    const MeshPtr pm = runTo(40, ball);
    EXPECT_FALSE(pm->m_handleUVs_internal);
    EXPECT_FALSE(pm->m_useVertexColors_internal);
    EXPECT_EQ(pm->mesh.vertexColors, before.vertexColors);
    EXPECT_EQ(pm->mesh.indicesUV.size(), 0U);
}

TEST_F(HighSpeed, AfterARunWithColoursItsSplitsKeepThem) {
    const MeshPtr pm =
        test::decimatedBy(MEMSPEED_TRADEOFF_LOW_MEM, test::colorfulBall(),
                          [](ProgressiveMesh& settings) { settings.TargetNumItem = 50; });
    const auto before = test::surfaceOf(pm->mesh);
    pm->MemSpeedTradeOff = MEMSPEED_TRADEOFF_HIGH_SPEED;
    pm->TargetNumItem = 20;
    ASSERT_EQ(RunDecimation(*pm), 0);
    EXPECT_EQ(pm->mesh.numActiveVertices, 20U);
    test::markAllApplied(*pm);
    test::goAllUp(*pm);
    EXPECT_TRUE(test::surfaceOf(pm->mesh) == before);

    // The same with another mesh, without colours, in the same object.
    pm->mesh = bumpyBall();
    ASSERT_EQ(RunDecimation(*pm), 0);
    test::markAllApplied(*pm);
    test::goAllUp(*pm);
    EXPECT_TRUE(test::surfaceOf(pm->mesh) == test::surfaceOf(bumpyBall()));
}

TEST_F(HighSpeed, ReportsItsStepsToAnObserver) {
    test::StepRecorder steps;
    DMesh ball = test::sphere(4);
    const auto target = static_cast<std::uint32_t>(ball.vertices.size()) - 401;
    run(ball, [&](ProgressiveMesh& pm) {
        pm.TargetNumItem = target;
        pm.monitor = &steps;
    });
    EXPECT_EQ(steps.numbers, (std::vector<int>{4, 5, 7, 8, 9, 10, 11, 11, 12}));
}

// Reads the record of the host's file during a run.
class LabelReader : public test::HostFollower {
public:
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number != 11) return;
        label = progressChannel().record().subText.data();
        total = progressChannel().record().subTotal;
        done = progressChannel().record().subDone;
    }
    std::string label;
    std::int32_t total = 0;
    std::int32_t done = 0;
};

TEST_F(HighSpeed, ShowsHowManyVerticesAreLeft) {
    const test::HostedProgress host;
    LabelReader reader;
    DMesh ball = test::sphere(4);
    ASSERT_EQ(ball.vertices.size(), 1026U);
    run(ball, [&](ProgressiveMesh& pm) {
        pm.TargetNumItem = 500;
        pm.monitor = &reader;
    });
    EXPECT_EQ(reader.label, "processing (626/1.0k vertices)");
    EXPECT_EQ(reader.total, 1026);
    EXPECT_EQ(reader.done, 400);
}

}  // namespace
}  // namespace korvalite::core
