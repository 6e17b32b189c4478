// SPDX-License-Identifier: MIT
#include "drivers/low_memory_driver.h"

#include "support/allocation_counter.h"
#include "support/decimation_run.h"
#include "support/host_follower.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/step_recorder.h"
#include "support/stop_request.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <set>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

using test::MeshPtr;
using test::Part;

DMesh bumpyBall(unsigned level = 3) {
    DMesh mesh = test::sphere(level);
    test::jitter(mesh, 0.01F, 5);
    return mesh;
}

class LowMemory : public test::DecimationTest {
protected:
    template <typename Set>
    static MeshPtr run(DMesh mesh, Set set) {
        return test::decimatedBy(MEMSPEED_TRADEOFF_LOW_MEM, std::move(mesh), set);
    }
    static MeshPtr runTo(std::uint32_t target, DMesh mesh) {
        return run(std::move(mesh), [&](ProgressiveMesh& pm) { pm.TargetNumItem = target; });
    }
    static MeshPtr symmetricTo(std::uint32_t target, DMesh mesh) {
        return run(std::move(mesh), [&](ProgressiveMesh& pm) {
            pm.TargetNumItem = target;
            test::askForSymmetry(pm, 0);
        });
    }
};

const VertexRecord& record(const ProgressiveMesh& pm, std::int32_t v) {
    return pm.mesh.vertices[static_cast<std::size_t>(v)];
}

// The number of refused vertices that are still active.
int refused(const ProgressiveMesh& pm) {
    int count = 0;
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        const float cost = record(pm, v).cost;
        if (pm.mesh.vertexActive.Test(v) && cost >= kPenalizedCost && cost < kNotCollapsible)
            ++count;
    }
    return count;
}

TEST_F(LowMemory, ReachesTheTarget) {
    for (const std::uint32_t target : {200U, 77U, 12U}) {
        const MeshPtr pm = runTo(target, bumpyBall());
        EXPECT_EQ(pm->mesh.numActiveVertices, target);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 258 - target);
        EXPECT_TRUE(test::isClosedManifold(pm->mesh));
        EXPECT_EQ(refused(*pm), 0) << target;
    }
}

TEST_F(LowMemory, CollapsesNothingForATargetAtOrAboveTheCount) {
    for (const std::uint32_t target : {258U, 259U, 0xFFFFFFFFU}) {
        const MeshPtr pm = runTo(target, bumpyBall());
        EXPECT_EQ(pm->mesh.numActiveVertices, 258U);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
        EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(bumpyBall()));
    }
}

TEST_F(LowMemory, EndsWhenAllIsRefusedEvenWithTheFinishStep) {
    for (const bool finishStep : {false, true}) {
        const MeshPtr pm = run(test::threePillows(), [&](ProgressiveMesh& settings) {
            settings.AllowFinishStep = finishStep;
        });
        EXPECT_EQ(pm->mesh.numActiveVertices, 9U);
        EXPECT_EQ(refused(*pm), 9);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
        EXPECT_FALSE(pm->finishStepStarted);
        EXPECT_EQ(pm->decimationFinishTriangleCount, kNone);
    }
}

TEST_F(LowMemory, DropsAVertexWithoutAPartnerSilently) {
    MeshPtr pm = test::prepared(bumpyBall());
    pm->TargetNumItem = 200;
    doDecimationInit_LM<PlainMetric>(*pm);
    const std::int32_t first = pm->costQueue.Top();
    pm->mesh.vertices[static_cast<std::size_t>(first)].partner = kNone;
    doDecimationLoop_LM<PlainMetric>(*pm);
    EXPECT_EQ(pm->mesh.numActiveVertices, 200U);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 58U);
}

TEST_F(LowMemory, DropsAVertexWhosePartnerIsGone) {
    MeshPtr pm = test::prepared(bumpyBall());
    pm->TargetNumItem = 256;
    doDecimationInit_LM<PlainMetric>(*pm);
    const std::int32_t first = pm->costQueue.Top();
    const std::int32_t partner = record(*pm, first).partner;
    pm->costQueue.Remove(partner);
    pm->mesh.vertexActive.Clear(partner);
    --pm->mesh.numActiveVertices;
    doDecimationLoop_LM<PlainMetric>(*pm);
    // The vertex was dropped unchanged, and the next one collapsed.
    EXPECT_TRUE(pm->mesh.vertexActive.Test(first));
    EXPECT_FALSE(pm->costQueue.isQueued(first));
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 1U);
}

TEST_F(LowMemory, ARefusedMirrorImageLeavesTheMeshUnchangedAndNoSplit) {
    const DMesh ball = test::ballWithADoubledTriangle();
    const MeshPtr pm = symmetricTo(100, ball);
    EXPECT_GE(refused(*pm), 2);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 258 - pm->mesh.numActiveVertices);
    EXPECT_TRUE(test::isSound(pm->mesh));
    test::goAllUp(*pm);
    EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(ball));
}

TEST_F(LowMemory, MirroredPairsKeepTheMeshSymmetric) {
    const MeshPtr pm = symmetricTo(100, test::sphere(3));
    std::set<std::array<float, 3>> places;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        if (pm->mesh.vertexActive.Test(v))
            places.insert({record(*pm, v).x, record(*pm, v).y, record(*pm, v).z});
    }
    std::size_t mirrored = 0;
    for (const auto& [x, y, z] : places) {
        for (const auto& other : places) {
            if (std::abs(other[0] + x) < 1e-5F && std::abs(other[1] - y) < 1e-5F &&
                std::abs(other[2] - z) < 1e-5F) {
                ++mirrored;
                break;
            }
        }
    }
    EXPECT_EQ(mirrored, places.size());
}

TEST_F(LowMemory, OnlyTheFirstVertexTurnsSymmetryOff) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        DMesh first = test::sphere(3);
        first.vertices[0].x = bad;
        EXPECT_FALSE(symmetricTo(200, first)->m_handleSymmetry_internal);
        DMesh other = test::sphere(3);
        other.vertices[77].x = bad;
        EXPECT_TRUE(symmetricTo(200, other)->m_handleSymmetry_internal);
    }
}

TEST_F(LowMemory, StopsBeforeTheNextCollapseOnRequest) {
    const test::StopRequest stop;
    const MeshPtr pm = runTo(40, bumpyBall());
    EXPECT_EQ(pm->mesh.numActiveVertices, 258U);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
}

// Asks to stop at the first progress point.
class AskToStop : public test::HostFollower {
public:
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number == 11) test::HostedProgress::askToStop();
    }
};

TEST_F(LowMemory, AStopRequestKeepsAllCompletedCollapsesInTheList) {
    const test::HostedProgress host;
    AskToStop ask;
    const MeshPtr pm = run(bumpyBall(4), [&](ProgressiveMesh& settings) {
        settings.monitor = &ask;
        settings.TargetNumItem = 40;
    });
    EXPECT_EQ(pm->mesh.numActiveVertices, 1026U - 200);
    EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 200U);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    test::goAllUp(*pm);
    EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(bumpyBall(4)));
}

TEST_F(LowMemory, ProgressPointsCountSuccessfulTurnsAndPairsOnce) {
    const auto progressPoints = [&](bool symmetric) {
        test::StepRecorder steps;
        run(test::sphere(4), [&](ProgressiveMesh& pm) {
            pm.monitor = &steps;
            pm.TargetNumItem = 1026 - 420;
            if (symmetric) test::askForSymmetry(pm, 0);
        });
        return std::count(steps.numbers.begin(), steps.numbers.end(), 11);
    };
    EXPECT_EQ(progressPoints(false), 2);
    EXPECT_EQ(progressPoints(true), 1);
}

TEST_F(LowMemory, ReportsItsStepsToAnObserver) {
    test::StepRecorder steps;
    run(bumpyBall(), [&](ProgressiveMesh& pm) {
        pm.monitor = &steps;
        pm.TargetNumItem = 250;
    });
    EXPECT_EQ(steps.numbers, (std::vector<int>{4, 5, 7, 8, 9, 10, 12}));
}

class StageReader : public test::HostFollower {
public:
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        const ProgressRecord& record = progressChannel().record();
        if (number == 5) flags = record.stageFlag1 + record.stageFlag2;
        if (number != 11) return;
        text = record.subText.data();
        total = record.subTotal;
        done = record.subDone;
    }
    int flags = 0;
    std::string text;
    std::int32_t total = 0;
    std::int32_t done = 0;
};

TEST_F(LowMemory, ShowsTheHostItsStageAndItsProgress) {
    const test::HostedProgress host;
    StageReader reader;
    run(bumpyBall(4), [&](ProgressiveMesh& pm) {
        pm.monitor = &reader;
        pm.TargetNumItem = 800;
    });
    EXPECT_EQ(reader.flags, 2);
    EXPECT_EQ(reader.text, "processing");
    EXPECT_EQ(reader.total, 1026);
    EXPECT_EQ(reader.done, 200);
    EXPECT_EQ(progressChannel().record().mainActive, 0);
}

TEST_F(LowMemory, ReplacesColoursExceptTheirFourthByte) {
    DMesh ball = bumpyBall();
    test::addColors(ball, [](const FloatVec3& p) {
        return test::packColor(static_cast<std::uint32_t>(120 + 100 * p.x), 50, 60, 0xAB);
    });
    const MeshPtr pm = runTo(100, ball);
    ASSERT_TRUE(pm->m_useVertexColors_internal);
    int changed = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        const std::uint32_t color = pm->mesh.vertexColors[static_cast<std::size_t>(v)];
        EXPECT_EQ(color >> 24U, 0xABU);
        changed += color != ball.vertexColors[static_cast<std::size_t>(v)] ? 1 : 0;
    }
    EXPECT_GT(changed, 20);
    test::goAllUp(*pm);
    EXPECT_EQ(pm->mesh.vertexColors, ball.vertexColors);
}

// Heap allocations until each progress point.
class CountAllocations : public test::HostFollower {
public:
    CountAllocations() { totals.reserve(1000); }
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number == 11) totals.push_back(counter_.count());
    }
    std::vector<std::uint64_t> totals;

private:
    test::AllocationCounter counter_;
};

TEST_F(LowMemory, AllocatesSeldomAndOnlyForTheQueueInSteadyState) {
    for (const auto& row :
         {std::pair(false, false), std::pair(true, false), std::pair(false, true)}) {
        const bool symmetric = row.first;
        const bool colored = row.second;
        DMesh mesh = test::sphere(6);
        test::addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle / 16384; });
        if (colored) {
            test::addColors(mesh, [](const FloatVec3& p) {
                return test::packColor(static_cast<std::uint32_t>(120 + 100 * p.x), 50, 60);
            });
        }
        CountAllocations counted;
        run(std::move(mesh), [&](ProgressiveMesh& pm) {
            pm.monitor = &counted;
            test::targetPercent(pm, 30);
            if (symmetric) test::askForSymmetry(pm, 0);
        });
        ASSERT_GT(counted.totals.size(), 20U);
        const std::vector<std::uint64_t>& totals = counted.totals;
        const std::size_t half = totals.size() / 2;
        // Each scratch list may still grow once, and the queue's set grows in steps of many
        // vertices.
        EXPECT_LE(totals.back() - totals[half], 40U);
        std::size_t longest = 0;
        std::size_t quiet = 0;
        for (std::size_t i = 1; i < totals.size(); ++i) {
            quiet = totals[i] == totals[i - 1] ? quiet + 1 : 0;
            longest = std::max(longest, quiet);
        }
        EXPECT_GE(200 * longest, 1000U) << "collapses in a row without any allocation";
    }
}

}  // namespace
}  // namespace korvalite::core
