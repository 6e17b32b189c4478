// SPDX-License-Identifier: MIT
#include "drivers/threads/thread_context.h"

#include "support/allocation_counter.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace korvalite::core {
namespace {

TEST(ThreadWorkRecord, StartsEmptyWithRoomForAnOrdinaryTurn) {
    const ThreadWorkRecord record;
    EXPECT_EQ(record.pickedVertex, kNone);
    EXPECT_EQ(record.splitRecord.split.vertex, kNone);
    EXPECT_EQ(record.mirrorSplitRecord.split.vertex, kNone);
    EXPECT_TRUE(record.removedVertices.empty());
    EXPECT_TRUE(record.updateVertices.empty());
    EXPECT_GE(record.removedVertices.capacity(), 3U);
    EXPECT_GE(record.updateVertices.capacity(), 25U);
    EXPECT_GE(record.updateCosts.capacity(), 25U);
    EXPECT_GE(record.updatePartners.capacity(), 25U);
}

TEST(ThreadWorkRecord, AppendsUpdatesInOrder) {
    ThreadWorkRecord record;
    record.appendUpdate(7, 1.5F, 8);
    record.appendUpdate(9, 0.5F, kNone);
    record.appendUpdate(7, 2.5F, 9);
    EXPECT_EQ(record.updateVertices, (IndexList{7, 9, 7}));
    EXPECT_EQ(record.updateCosts, (std::vector<float>{1.5F, 0.5F, 2.5F}));
    EXPECT_EQ(record.updatePartners, (IndexList{8, kNone, 9}));
}

void fill(ThreadWorkRecord& record, std::int32_t items) {
    record.pickedVertex = 5;
    for (CollapseRecord* collapse : {&record.splitRecord, &record.mirrorSplitRecord}) {
        collapse->split.vertex = 5;
        collapse->split.position = {1, 2, 3};
        collapse->split.savedColor = 4;
        collapse->flags = {true, true};
        for (std::int32_t i = 0; i < items; ++i) {
            collapse->split.corners.push_back(i);
            collapse->split.removedTriangles.push_back(i);
            collapse->split.savedUVs.push_back({});
            collapse->split.cornerUVIndices.push_back(i);
            collapse->split.uvIndexPairs.push_back({});
            collapse->neighbours.push_back(i);
            collapse->ringCorners.push_back(i);
        }
    }
    for (std::int32_t i = 0; i < items; ++i) {
        record.removedVertices.push_back(i);
        record.appendUpdate(i, 1, i);
        record.updateBuckets.push_back(i);
    }
}

TEST(ThreadWorkRecord, ClearLeavesNothingForTheNextTurn) {
    ThreadWorkRecord record;
    fill(record, 60);
    record.clear();
    EXPECT_EQ(record.pickedVertex, kNone);
    for (const CollapseRecord* collapse : {&record.splitRecord, &record.mirrorSplitRecord}) {
        EXPECT_EQ(collapse->split.vertex, kNone);
        EXPECT_EQ(collapse->split.position.y, 0);
        EXPECT_EQ(collapse->split.savedColor, 0U);
        EXPECT_TRUE(collapse->split.corners.empty());
        EXPECT_TRUE(collapse->split.removedTriangles.empty());
        EXPECT_TRUE(collapse->split.savedUVs.empty());
        EXPECT_TRUE(collapse->split.cornerUVIndices.empty());
        EXPECT_TRUE(collapse->split.uvIndexPairs.empty());
        EXPECT_FALSE(collapse->flags.collapsed);
        EXPECT_FALSE(collapse->flags.survivorWasBorder);
        EXPECT_TRUE(collapse->neighbours.empty());
        EXPECT_TRUE(collapse->ringCorners.empty());
    }
    EXPECT_TRUE(record.removedVertices.empty());
    EXPECT_TRUE(record.updateVertices.empty());
    EXPECT_TRUE(record.updateCosts.empty());
    EXPECT_TRUE(record.updatePartners.empty());
    EXPECT_TRUE(record.updateBuckets.empty());
}

TEST(ThreadWorkRecord, ClearKeepsTheRoomOfGrownLists) {
    ThreadWorkRecord record;
    fill(record, 60);
    const test::AllocationCounter counter;
    record.clear();
    fill(record, 60);
    const std::uint64_t allocations = counter.count();
    EXPECT_EQ(allocations, 0U);
}

class ThreadContexts : public test::DecimationTest {
protected:
    static test::MeshPtr prepared(DMesh mesh, std::int32_t threads) {
        test::MeshPtr pm = test::prepared(std::move(mesh));
        pm->MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
        pm->NumThread = threads;
        return pm;
    }
    // Runs another mesh on another number of threads.
    static void runAgain(ProgressiveMesh& pm, DMesh mesh, std::int32_t threads) {
        pm.mesh = std::move(mesh);
        pm.mesh.symmetryMode = 0;
        pm.NumThread = threads;
        run(pm);
    }
    static void run(ProgressiveMesh& pm) {
        const std::int32_t vertices = pm.mesh.vertexCount();
        pm.TargetNumItem = pm.mesh.numActiveVertices / 2;
        ASSERT_EQ(RunDecimation(pm), 0);
        ASSERT_EQ(test::threadsOf(pm).threadContexts.size(),
                  static_cast<std::size_t>(pm.NumThread));
        for (std::size_t i = 0; i < test::threadsOf(pm).threadContexts.size(); ++i) {
            const ThreadContext& context = test::threadsOf(pm).threadContexts[i];
            const NeighbourhoodMarks& marks = context.marks;
            EXPECT_EQ(context.threadIndex, static_cast<std::int32_t>(i));
            ASSERT_EQ(marks.vertexSlot.size(), static_cast<std::size_t>(vertices));
            EXPECT_TRUE(std::all_of(marks.vertexSlot.begin(), marks.vertexSlot.end(),
                                    [](std::uint16_t slot) { return slot == 65535; }));
        }
        EXPECT_LE(pm.mesh.numActiveVertices, pm.TargetNumItem);
    }
};

TEST_F(ThreadContexts, EachThreadGetsOneThatFitsTheMesh) {
    for (const std::int32_t threads : {1, 2, 5}) {
        const test::MeshPtr pm = prepared(test::sphere(3), threads);
        run(*pm);
    }
}

TEST_F(ThreadContexts, AreReusedByALaterRunOfAnotherSize) {
    const test::MeshPtr pm = prepared(test::sphere(3), 2);
    run(*pm);
    const std::vector<const ThreadContext*> before{&test::threadsOf(*pm).threadContexts[0],
                                                   &test::threadsOf(*pm).threadContexts[1]};
    for (const auto& [mesh, threads] : {std::pair(test::sphere(4), 4),
                                        {test::grid(5, 5, test::hills), 2},
                                        {test::sphere(2), 3}}) {
        runAgain(*pm, mesh, threads);
        for (std::size_t i = 0; i < before.size(); ++i)
            EXPECT_EQ(&test::threadsOf(*pm).threadContexts[i], before[i]) << threads;
    }
}

TEST_F(ThreadContexts, AreDroppedByALaterRunOnFewerThreads) {
    const test::MeshPtr pm = prepared(test::sphere(3), 4);
    run(*pm);
    runAgain(*pm, test::sphere(3), 1);
    EXPECT_EQ(test::threadsOf(*pm).threadContexts.size(), 1U);
}

TEST_F(ThreadContexts, CarryNothingOverToTheNextRun) {
    const test::MeshPtr pm = prepared(test::sphere(3), 2);
    run(*pm);
    for (ThreadContext& context : test::threadsOf(*pm).threadContexts) {
        context.threadIndex = 77;
        std::fill(context.marks.vertexSlot.begin(), context.marks.vertexSlot.end(),
                  std::uint16_t{3});
        context.workRecord.pickedVertex = 3;
        context.workRecord.removedVertices = {0, 1, 2, 3};
        context.workRecord.appendUpdate(100, 1, 1'000'000);
        context.statistics.turns = 1'000'000;
        context.statistics.candidates = 1'000'000;
    }
    runAgain(*pm, test::sphere(3), 2);
    std::uint64_t turns = 0;
    for (const ThreadContext& context : test::threadsOf(*pm).threadContexts) {
        turns += context.statistics.turns;
        EXPECT_LT(context.statistics.candidates, 1'000'000U);
    }
    // A collapse and a refusal are one turn each, and every thread may end with a turn that finds
    // no vertex.
    EXPECT_GE(turns, 258U - pm->mesh.numActiveVertices);
    EXPECT_LT(turns, 1'000'000U);
}

TEST_F(ThreadContexts, StartOnTheirOwnCacheLines) {
    const test::MeshPtr pm = prepared(test::sphere(2), 3);
    run(*pm);
    for (const ThreadContext& context : test::threadsOf(*pm).threadContexts)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&context) % kCacheLine, 0U);
}

}  // namespace
}  // namespace korvalite::core
