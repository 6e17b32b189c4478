// SPDX-License-Identifier: MIT
#include "drivers/threads/multi_thread_driver.h"

#include "property/run_cases.h"
#include "support/host_follower.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/multi_thread_run.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace korvalite::core {
namespace {

using test::bumpyBall;
using test::MeshPtr;
using test::Part;
using test::turnsOf;

DMesh coloredBall() {
    DMesh mesh = bumpyBall();
    test::addColors(mesh, [](const FloatVec3& p) {
        return test::packColor(static_cast<std::uint32_t>(120 + 100 * p.x), 50, 60, 0xAB);
    });
    return mesh;
}

DMesh ballWithSeams() {
    DMesh mesh = bumpyBall();
    test::addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle / 128; });
    return mesh;
}

class MultiThread : public test::MultiThreadTest {};

// True if nothing queued is worth a try, as a run that missed its target must find.
bool onlyRefusedAreLeft(const DMesh& mesh) {
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        const VertexRecord& vertex = mesh.vertices[static_cast<std::size_t>(v)];
        if (mesh.vertexActive.Test(v) && vertex.cost < kPenalizedCost) return false;
    }
    return true;
}

// Counts the contexts when the loops start, which is after all threads have started.
class ThreadsAtTheStart : public test::HostFollower {
public:
    explicit ThreadsAtTheStart(const ProgressiveMesh& pm) : pm_(pm) {}
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number == 10) threads = test::threadsOf(pm_).threadContexts.size();
    }
    std::size_t threads = 0;

private:
    const ProgressiveMesh& pm_;
};

// Runs to 100 vertices and returns the number of threads when the loops started.
std::size_t runAndCountThreads(ProgressiveMesh& pm, std::int32_t threads) {
    ThreadsAtTheStart start(pm);
    pm.monitor = &start;
    test::askForThreads(pm, threads);
    pm.TargetNumItem = 100;
    EXPECT_EQ(RunDecimation(pm), 0);
    pm.monitor = &hostMonitor();
    return start.threads;
}

TEST_F(MultiThread, RunsOnTheCallingThreadAloneForOneThreadOrLess) {
    for (const std::int32_t threads : {1, 0, -1, -7}) {
        MeshPtr pm = test::prepared(bumpyBall());
        EXPECT_EQ(runAndCountThreads(*pm, threads), 1U) << threads;
        EXPECT_EQ(pm->NumThread, 1) << threads;
        EXPECT_EQ(pm->mesh.numActiveVertices, 100U);
        EXPECT_EQ(turnsOf(*pm), 158U) << "it does all the work";
    }
}

TEST_F(MultiThread, StartsTheRequestedNumberOfThreads) {
    for (const std::int32_t threads : {2, 3, 16}) {
        MeshPtr pm = test::prepared(bumpyBall());
        EXPECT_EQ(runAndCountThreads(*pm, threads), static_cast<std::size_t>(threads));
        std::int32_t index = 0;
        for (const ThreadContext& context : test::threadsOf(*pm).threadContexts)
            EXPECT_EQ(context.threadIndex, index++);
        EXPECT_GE(turnsOf(*pm), pm->vsplitList.NumVtxSplit());
    }
}

// Freed slaves are ranked with their colours here, which the single-threaded driver does not do.
bool ranksAsOneThreadDoes(const test::RunCase& runCase) {
    return runCase.name != "SymmetricEverything";
}

class OneThreadRun : public test::RunTest {};
INSTANTIATE_TEST_SUITE_P(Case, OneThreadRun,
                         testing::ValuesIn(test::casesWhere(ranksAsOneThreadDoes)),
                         test::nameOfRun);

TEST_P(OneThreadRun, GivesTheMeshAndSplitsOfTheSingleThreadedDriver) {
    for (const float percent : {60.0F, 0.0F}) {
        const auto runBy = [&](std::int32_t driver) {
            return decimatedTo(percent, [&](ProgressiveMesh& pm) {
                pm.MemSpeedTradeOff = driver;
                pm.NumThread = 1;
                pm.DoReorder = false;
            });
        };
        const MeshPtr alone = runBy(MEMSPEED_TRADEOFF_LOW_MEM);
        const MeshPtr one = runBy(MEMSPEED_TRADEOFF_LOW_MEM_MT);
        EXPECT_EQ(test::threadsOf(*one).threadContexts.size(), 1U);
        EXPECT_TRUE(test::splitsOf(*one) == test::splitsOf(*alone)) << percent;
        EXPECT_TRUE(test::arraysOf(one->mesh, Part::All) == test::arraysOf(alone->mesh, Part::All))
            << percent;
    }
}

TEST_F(MultiThread, OneThreadIsDeterministic) {
    DMesh mesh = test::unevenMirrored(0, 4);
    test::addColors(mesh, [](const FloatVec3&) { return test::packColor(120, 50, 60); });
    const auto once = [&] {
        return run(1, mesh, [](ProgressiveMesh& pm) {
            pm.TargetNumItem = 60;
            test::askForSymmetry(pm, 0);
        });
    };
    const MeshPtr first = once();
    const MeshPtr second = once();
    EXPECT_TRUE(test::splitsOf(*first) == test::splitsOf(*second));
    EXPECT_TRUE(test::arraysOf(first->mesh, Part::All) == test::arraysOf(second->mesh, Part::All));
}

TEST_F(MultiThread, MissesTheTargetByAtMostACollapsePerThread) {
    for (const std::int32_t threads : {2, 4, 9}) {
        for (const std::uint32_t target : {257U, 200U, 77U}) {
            const MeshPtr pm = runTo(target, threads, bumpyBall());
            EXPECT_LE(pm->mesh.numActiveVertices, target);
            EXPECT_GE(pm->mesh.numActiveVertices + static_cast<std::uint32_t>(threads), target);
            EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 258 - pm->mesh.numActiveVertices);
            EXPECT_TRUE(test::isSound(pm->mesh));
            EXPECT_TRUE(test::isClosedManifold(pm->mesh));
        }
    }
}

TEST_F(MultiThread, MissesTheTargetByAtMostAMirroredPairPerThread) {
    for (const std::int32_t threads : {2, 4}) {
        const MeshPtr pm = run(threads, test::unevenMirrored(0, 1), [](ProgressiveMesh& settings) {
            settings.TargetNumItem = 120;
            test::askForSymmetry(settings, 0);
        });
        ASSERT_TRUE(pm->m_handleSymmetry_internal);
        EXPECT_LE(pm->mesh.numActiveVertices, 120U);
        EXPECT_GE(pm->mesh.numActiveVertices + 2 * static_cast<std::uint32_t>(threads), 120U);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 258 - pm->mesh.numActiveVertices);
        EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    }
}

TEST_F(MultiThread, CanCountTriangles) {
    const MeshPtr pm = run(3, bumpyBall(), [](ProgressiveMesh& settings) {
        settings.targetCountsVertices = false;
        settings.TargetNumItem = 300;
    });
    EXPECT_LE(pm->mesh.numActiveTriangles, 300U);
    EXPECT_GE(pm->mesh.numActiveTriangles + 6, 300U);
}

TEST_F(MultiThread, CollapsesNothingForATargetAtOrAboveTheCount) {
    for (const std::uint32_t target : {258U, 259U, 0xFFFFFFFFU}) {
        const MeshPtr pm = runTo(target, 2, bumpyBall());
        EXPECT_EQ(turnsOf(*pm), 0U);
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
        EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(bumpyBall()));
    }
}

TEST_F(MultiThread, FinishesAMeshTooSmallForItsThreads) {
    for (const DMesh& mesh : {test::tetrahedron(), test::octahedron(), test::sphere(1),
                              test::oneTriangle(), test::twoTriangles(), test::grid(2, 2)}) {
        for (int again = 0; again < 20; ++again) {
            const MeshPtr pm = runTo(4, 8, mesh);
            EXPECT_TRUE(pm->mesh.numActiveVertices <= 4 || onlyRefusedAreLeft(pm->mesh));
            EXPECT_EQ(pm->vsplitList.NumVtxSplit(),
                      mesh.vertices.size() - pm->mesh.numActiveVertices);
            EXPECT_TRUE(test::isSound(pm->mesh));
        }
    }
}

TEST_F(MultiThread, HandlesAnEmptyMesh) {
    EXPECT_EQ(runTo(4, 4, DMesh())->mesh.numActiveVertices, 0U);
    EXPECT_EQ(runTo(0, 4, test::buildMesh({{0, 0, 0}, {1, 2, 3}}, {}))->mesh.numActiveVertices, 2U);
}

TEST_F(MultiThread, SplitsRestoreTheInput) {
    for (const auto& [mesh, symmetric] :
         {std::pair(bumpyBall(), false), std::pair(coloredBall(), false),
          std::pair(ballWithSeams(), false), std::pair(test::unevenMirrored(0, 2), true)}) {
        const MeshPtr pm = run(4, mesh, [&, symmetric = symmetric](ProgressiveMesh& settings) {
            settings.TargetNumItem = 60;
            if (symmetric) test::askForSymmetry(settings, 0);
        });
        EXPECT_EQ(pm->m_handleSymmetry_internal, symmetric);
        const auto coarse = test::arraysOf(pm->mesh, Part::Active);
        EXPECT_LE(pm->mesh.numActiveVertices, 60U);
        test::goAllUp(*pm);
        EXPECT_TRUE(test::surfaceOf(pm->mesh, test::UVs::Ignored) ==
                    test::surfaceOf(mesh, test::UVs::Ignored));
        EXPECT_EQ(pm->mesh.vertexColors, mesh.vertexColors);
        test::goAllDown(*pm);
        EXPECT_TRUE(test::arraysOf(pm->mesh, Part::Active) == coarse);
    }
}

TEST_F(MultiThread, CountsAreExactOnAnyNumberOfThreads) {
    for (int again = 0; again < 3; ++again) {
        const MeshPtr pm = runTo(100, 6, bumpyBall(4));
        EXPECT_TRUE(test::countsMatchBits(pm->mesh));
        EXPECT_EQ(pm->mesh.numActiveTriangles, 2 * pm->mesh.numActiveVertices - 4) << "by Euler";
    }
}

TEST_F(MultiThread, EndsWhenAllIsRefusedEvenWithTheFinishStep) {
    for (const bool finishStep : {false, true}) {
        const MeshPtr pm = run(3, test::threePillows(), [&](ProgressiveMesh& settings) {
            settings.AllowFinishStep = finishStep;
            settings.finishStepStarted = true;  // reset before the loops start
            settings.inFinishStep = true;
        });
        EXPECT_EQ(pm->mesh.numActiveVertices, 9U);
        EXPECT_TRUE(onlyRefusedAreLeft(pm->mesh));
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 0U);
        EXPECT_FALSE(pm->finishStepStarted);
        EXPECT_FALSE(pm->inFinishStep);
        EXPECT_EQ(pm->decimationFinishTriangleCount, kNone);
    }
}

TEST_F(MultiThread, ARefusedMirrorImageLeavesTheMeshUnchangedAndNoSplit) {
    const DMesh ball = test::ballWithADoubledTriangle();
    for (const std::int32_t threads : {1, 4}) {
        const MeshPtr pm = run(threads, ball, [](ProgressiveMesh& settings) {
            settings.TargetNumItem = 100;
            test::askForSymmetry(settings, 0);
        });
        EXPECT_GT(turnsOf(*pm), pm->vsplitList.NumVtxSplit() / 2) << "some were refused";
        EXPECT_EQ(pm->vsplitList.NumVtxSplit(), 258 - pm->mesh.numActiveVertices);
        EXPECT_TRUE(test::isSound(pm->mesh));
        test::goAllUp(*pm);
        EXPECT_EQ(test::surfaceOf(pm->mesh), test::surfaceOf(ball));
    }
}

TEST_F(MultiThread, ASecondRunContinuesWithAnotherNumberOfThreads) {
    const MeshPtr pm = runTo(220, 4, bumpyBall());
    for (const std::int32_t threads : {2, 5, 1, 3}) {
        pm->NumThread = threads;
        pm->TargetNumItem = pm->mesh.numActiveVertices - 30;
        ASSERT_EQ(RunDecimation(*pm), 0);
        EXPECT_EQ(test::threadsOf(*pm).threadContexts.size(), static_cast<std::size_t>(threads));
        EXPECT_LE(pm->mesh.numActiveVertices, pm->TargetNumItem);
        EXPECT_GE(turnsOf(*pm), 30U);
        EXPECT_LT(turnsOf(*pm), 60U) << "those of the last run only";
        EXPECT_TRUE(test::isClosedManifold(pm->mesh));
        expectAllReleased(*pm);
    }
}

TEST_F(MultiThread, ReusesContextsButRebuildsTheirTables) {
    const MeshPtr pm = runTo(100, 2, bumpyBall(2));
    const ThreadContext* const first = &test::threadsOf(*pm).threadContexts[0];
    const ThreadContext* const second = &test::threadsOf(*pm).threadContexts[1];
    for (ThreadContext& context : test::threadsOf(*pm).threadContexts)
        std::fill(context.marks.vertexSlot.begin(), context.marks.vertexSlot.end(), 3);
    test::threadsOf(*pm).lockedVertices.Resize(pm->mesh.vertexCount(), true);
    pm->mesh = bumpyBall();
    ASSERT_EQ(RunDecimation(*pm), 0);
    EXPECT_EQ(&test::threadsOf(*pm).threadContexts[0], first);
    EXPECT_EQ(&test::threadsOf(*pm).threadContexts[1], second);
    EXPECT_LE(pm->mesh.numActiveVertices, 100U);
    EXPECT_TRUE(test::isClosedManifold(pm->mesh));
    expectAllReleased(*pm);
}

TEST_F(MultiThread, ReplacesColoursExceptTheirFourthByte) {
    const DMesh ball = coloredBall();
    const MeshPtr pm = runTo(100, 3, ball);
    ASSERT_TRUE(pm->m_useVertexColors_internal);
    int changed = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        const std::uint32_t color = pm->mesh.vertexColors[static_cast<std::size_t>(v)];
        EXPECT_EQ(color >> 24U, 0xABU);
        changed += color != ball.vertexColors[static_cast<std::size_t>(v)] ? 1 : 0;
    }
    EXPECT_GT(changed, 20);
}

TEST_F(MultiThread, WithoutRecordsTheMeshIsTheSame) {
    const auto runWith = [](bool records, std::int32_t threads) {
        return run(threads, bumpyBall(), [&](ProgressiveMesh& pm) {
            pm.recordVSplits = records;
            pm.TargetNumItem = 100;
        });
    };
    const MeshPtr unrecorded = runWith(false, 1);
    EXPECT_FALSE(unrecorded->vsplitList.isOpen());
    EXPECT_TRUE(test::arraysOf(unrecorded->mesh, Part::All) ==
                test::arraysOf(runWith(true, 1)->mesh, Part::All));
    const MeshPtr byThree = runWith(false, 3);
    EXPECT_EQ(byThree->vsplitList.NumVtxSplit(), 0U);
    EXPECT_LE(byThree->mesh.numActiveVertices, 100U);
    EXPECT_TRUE(test::isClosedManifold(byThree->mesh));
}

TEST_F(MultiThread, PagingOutDoesNotChangeTheRecords) {
    const auto runWith = [](std::uint32_t recordsPerPage) {
        return run(1, bumpyBall(), [&](ProgressiveMesh& pm) {
            pm.vsplitList.pageCapacity = recordsPerPage;
            pm.TargetNumItem = 100;
        });
    };
    EXPECT_TRUE(test::splitsOf(*runWith(3)) == test::splitsOf(*runWith(VSplitList::kAllRecords)));
    const MeshPtr byThree = run(3, bumpyBall(), [](ProgressiveMesh& pm) {
        pm.vsplitList.pageCapacity = 3;
        pm.TargetNumItem = 100;
    });
    EXPECT_EQ(byThree->vsplitList.NumVtxSplit(), 258 - byThree->mesh.numActiveVertices);
    test::goAllUp(*byThree);
    EXPECT_EQ(test::surfaceOf(byThree->mesh), test::surfaceOf(bumpyBall()));
}

}  // namespace
}  // namespace korvalite::core
