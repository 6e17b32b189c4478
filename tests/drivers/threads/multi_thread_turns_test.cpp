// SPDX-License-Identifier: MIT
//
// Single turns of the multi-threaded driver, with every thread stopped where the test wants it.
#include "drivers/threads/thread_loop.h"

#include "drivers/threads/multi_thread_driver.h"
#include "host/progress_channel.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "support/allocation_limit.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/multi_thread_run.h"
#include "support/stop_request.h"
#include "support/threads_of.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <deque>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

using test::bumpyBall;
using test::MeshPtr;

// A run whose threads the test starts and stops. While held, each thread is in the middle of its
// first collapse: no vertex can become inactive.
class HeldRun {
public:
    HeldRun(DMesh mesh, std::uint32_t target, bool symmetric = false)
        : pm_(test::prepared(std::move(mesh))) {
        pm_->MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
        pm_->TargetNumItem = target;
        if (symmetric) test::askForSymmetry(*pm_, 0);
        doDecimationInit_LM_MT<PlainMetric>(*pm_);
    }
    ~HeldRun() {
        letGo();
        progressChannel().EndMainTask();
    }
    HeldRun(const HeldRun&) = delete;
    HeldRun& operator=(const HeldRun&) = delete;

    ProgressiveMesh& pm() { return *pm_; }
    DMesh& mesh() { return pm_->mesh; }
    SharedRun& shared() { return run_; }
    const ThreadContext& context(std::size_t thread) {
        return test::threadsOf(*pm_).threadContexts[thread];
    }

    // Starts one more thread and holds it at its first collapse. Returns false if it ended without
    // a pick.
    bool startAndHold() {
        if (!hold_.owns_lock()) hold_.lock();
        ThreadContext& added = addContext();
        Thread& started = threads_.emplace_back();
        started.thread = std::thread([this, &added, &started] {
            doDecimationLoop_LM_MT<PlainMetric>(*pm_, added, run_);
            started.hasEnded = true;
        });
        while (pickedBy(added) == kNone) {
            if (started.hasEnded) return pickedBy(added) != kNone;
            std::this_thread::yield();
        }
        return true;
    }

    // Runs one more thread from start to end.
    void runOneMore() { doDecimationLoop_LM_MT<PlainMetric>(*pm_, addContext(), run_); }
    // The same, but the thread runs out of memory.
    void runOneMoreWithoutMemory() {
        ThreadContext& added = addContext();
        const test::FailingAllocation failure(1);
        doDecimationLoop_LM_MT<PlainMetric>(*pm_, added, run_);
    }

    // The same, while two other threads wait for the queue: one asleep, which makes releasing the
    // queue take a while, and one that spins.
    void runOneMoreWithoutMemoryWhileOthersWait() {
        ThreadContext& without = addContext();
        std::deque<Thread> others;
        const auto startOther = [&] {
            ThreadContext& added = addContext();
            Thread& other = others.emplace_back();
            other.thread = std::thread([this, &added, &other] {
                other.hasStarted = true;
                doDecimationLoop_LM_MT<PlainMetric>(*pm_, added, run_);
            });
            while (!other.hasStarted) {
            }
        };
        {
            const test::FailingAllocation failure(1, [&] {
                startOther();
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                startOther();
            });
            doDecimationLoop_LM_MT<PlainMetric>(*pm_, without, run_);
        }
        for (Thread& other : others)
            other.thread.join();
    }

    // Lets all threads run to their end.
    void letGo() {
        if (hold_.owns_lock()) hold_.unlock();
        for (Thread& started : threads_)
            started.thread.join();
        threads_.clear();
    }

    // Enters a section other than the one the threads are held at, to read what they have picked.
    std::unique_lock<CriticalSection> enterQueue() {
        return std::unique_lock(run_.sections.csQueue);
    }

private:
    struct Thread {
        std::thread thread;
        std::atomic<bool> hasStarted = false;
        std::atomic<bool> hasEnded = false;
    };

    ThreadContext& addContext() {
        ThreadContext& added = test::threadsOf(*pm_).threadContexts.emplace_back();
        added.threadIndex =
            static_cast<std::int32_t>(test::threadsOf(*pm_).threadContexts.size()) - 1;
        added.marks.prepare(pm_->mesh);
        return added;
    }
    std::int32_t pickedBy(const ThreadContext& context) {
        const auto lock = enterQueue();
        return context.workRecord.pickedVertex;
    }

    MeshPtr pm_;
    SharedRun run_;
    std::unique_lock<CriticalSection> hold_{run_.sections.csActiveVertices, std::defer_lock};
    std::deque<Thread> threads_;
};

// The closed rings of both ends of the collapse that a vertex is queued for.
std::set<std::int32_t> closedRings(const DMesh& mesh, std::int32_t v) {
    std::set<std::int32_t> rings;
    for (const std::int32_t end : {v, mesh.vertices[static_cast<std::size_t>(v)].partner}) {
        IndexList ring;
        GetVertexNeighbours(mesh, end, ring);
        rings.insert(end);
        rings.insert(ring.begin(), ring.end());
    }
    return rings;
}

bool meet(const std::set<std::int32_t>& a, const std::set<std::int32_t>& b) {
    return std::any_of(a.begin(), a.end(), [&b](auto v) { return b.count(v) != 0; });
}

// Two parts that share no vertex: 0 to 5, and 6 to 11.
DMesh twoOctahedra() {
    DMesh mesh = test::octahedron();
    const DMesh one = mesh;
    for (const VertexRecord& vertex : one.vertices) {
        mesh.vertices.emplace_back();
        mesh.vertices.back().setPosition(vertex.position() + FloatVec3{5, 0, 0});
    }
    for (const std::uint32_t vertex : one.triangles)
        mesh.triangles.push_back(vertex + 6);
    test::completeMesh(mesh);
    return mesh;
}

// Uneven, but symmetric about the plane x = 0.
DMesh mirroredHills() {
    DMesh half = test::grid(12, 12, test::hills);
    test::jitter(half, 0.05F, 3);
    for (VertexRecord& vertex : half.vertices)
        vertex.setPosition({vertex.x < 0.5F ? 0.0F : vertex.x, vertex.y, vertex.z});
    return test::withMirrorImage(half, 0);
}

class MultiThreadTurns : public test::DecimationTest {
protected:
    test::Watchdog watchdog{"MultiThreadTurns"};
};

TEST_F(MultiThreadTurns, AThreadHoldsTheClosedRingsOfBothEnds) {
    HeldRun run(bumpyBall(), 200);
    const std::int32_t cheapest = run.pm().costQueue.Top();
    const std::set<std::int32_t> rings = closedRings(run.mesh(), cheapest);
    EXPECT_TRUE(run.startAndHold());
    const auto lock = run.enterQueue();
    EXPECT_EQ(run.context(0).workRecord.pickedVertex, cheapest);
    for (std::int32_t v = 0; v < run.mesh().vertexCount(); ++v)
        EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.Test(v), rings.count(v) != 0) << v;
}

TEST_F(MultiThreadTurns, AThreadAlsoHoldsTheMirrorImagesOfTheseRings) {
    HeldRun run(mirroredHills(), 100, true);
    ASSERT_TRUE(run.pm().m_handleSymmetry_internal);
    const auto& pairing = run.mesh().symmetryCache.pairing;
    const std::int32_t cheapest = run.pm().costQueue.Top();
    std::set<std::int32_t> rings = closedRings(run.mesh(), cheapest);
    const std::size_t ownCount = rings.size();
    for (const std::int32_t v : std::set<std::int32_t>(rings)) {
        ASSERT_NE(pairing[static_cast<std::size_t>(v)], kNone);
        rings.insert(pairing[static_cast<std::size_t>(v)]);
    }
    ASSERT_GT(rings.size(), ownCount);
    EXPECT_TRUE(run.startAndHold());
    const auto lock = run.enterQueue();
    for (std::int32_t v = 0; v < run.mesh().vertexCount(); ++v)
        EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.Test(v), rings.count(v) != 0) << v;
}

TEST_F(MultiThreadTurns, AHeldVertexStaysQueuedButSkippedUntilItsThreadCommits) {
    HeldRun run(bumpyBall(), 200);
    const std::int32_t first = run.pm().costQueue.Top();
    const std::set<std::int32_t> held = closedRings(run.mesh(), first);
    EXPECT_TRUE(run.startAndHold());
    // The cheapest vertex whose rings share nothing with it.
    std::int32_t next = kNone;
    for (std::int32_t v = 0; v < run.mesh().vertexCount(); ++v) {
        const auto costOf = [&](std::int32_t vertex) {
            return run.mesh().vertices[static_cast<std::size_t>(vertex)].cost;
        };
        if (meet(held, closedRings(run.mesh(), v))) continue;
        if (next == kNone || costOf(v) < costOf(next)) next = v;
    }
    EXPECT_TRUE(run.startAndHold());
    {
        const auto lock = run.enterQueue();
        EXPECT_EQ(run.context(0).workRecord.pickedVertex, first);
        EXPECT_EQ(run.context(1).workRecord.pickedVertex, next);
        EXPECT_TRUE(run.pm().costQueue.isQueued(first));
        EXPECT_TRUE(run.pm().costQueue.isQueued(next));
    }
    run.letGo();
    for (const std::int32_t v : {first, next}) {
        EXPECT_FALSE(run.mesh().vertexActive.Test(v));
        EXPECT_FALSE(run.pm().costQueue.isQueued(v));
    }
}

TEST_F(MultiThreadTurns, NoVertexCollapsesTwice) {
    HeldRun run(bumpyBall(), 60);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(run.startAndHold());
    run.letGo();
    std::set<std::int32_t> collapsed;
    const auto count = static_cast<std::int32_t>(run.pm().vsplitList.NumVtxSplit());
    for (std::int32_t i = 0; i < count; ++i)
        EXPECT_TRUE(collapsed.insert(run.pm().vsplitList.ensureLoaded(i).vertex()).second) << i;
    EXPECT_EQ(collapsed.size(), 258 - run.mesh().numActiveVertices);
}

TEST_F(MultiThreadTurns, IfAllIsHeldAThreadLeavesAndAnotherFinishes) {
    HeldRun run(test::octahedron(), 4);
    EXPECT_TRUE(run.startAndHold());
    EXPECT_FALSE(run.startAndHold());
    EXPECT_EQ(run.context(1).statistics.turns, 1U);
    EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), 0U);
    run.letGo();
    EXPECT_EQ(run.mesh().numActiveVertices, 4U);
    EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), 2U);
    EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), 0);
}

// A hub adjacent to all other vertices, with costs that span many buckets.
DMesh unevenFan(std::uint32_t count) {
    test::Points points{{0, 0, 1}};
    test::Faces faces;
    test::Random random(3);
    for (std::uint32_t i = 0; i < count; ++i) {
        const float angle = 6.2831853F * static_cast<float>(i) / static_cast<float>(count);
        points.push_back({std::cos(angle), std::sin(angle), random.around(0.1F)});
        faces.push_back({0, 1 + i, 1 + (i + 1) % count});
    }
    return test::buildMesh(points, faces);
}

TEST_F(MultiThreadTurns, IfAllIsHeldAThreadAsksForEachVertexOnce) {
    constexpr std::uint32_t kRim = 3000;
    HeldRun run(unevenFan(kRim), 2900);
    ASSERT_TRUE(run.startAndHold());
    ASSERT_FALSE(run.startAndHold());
    EXPECT_GT(run.context(1).statistics.candidates, kRim / 2);
    EXPECT_LE(run.context(1).statistics.candidates, kRim + 1);
}

TEST_F(MultiThreadTurns, TurnsInProgressAreCommittedAfterTheTargetIsReached) {
    for (const int threads : {2, 4}) {
        HeldRun run(bumpyBall(), 257);
        for (int i = 0; i < threads; ++i)
            EXPECT_TRUE(run.startAndHold());
        run.letGo();
        EXPECT_EQ(run.mesh().numActiveVertices, 258U - static_cast<std::uint32_t>(threads));
        EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), static_cast<std::uint32_t>(threads));
        EXPECT_TRUE(test::isClosedManifold(run.mesh()));
    }
}

TEST_F(MultiThreadTurns, MirroredPairsInProgressAreCommittedToo) {
    const DMesh whole = mirroredHills();
    const std::uint32_t count = whole.numActiveVertices;
    HeldRun run(whole, count - 1, true);
    ASSERT_TRUE(run.pm().m_handleSymmetry_internal);
    EXPECT_TRUE(run.startAndHold());
    EXPECT_TRUE(run.startAndHold());
    run.letGo();
    ASSERT_NE(run.context(0).workRecord.mirrorSplitRecord.split.vertex, kNone);
    ASSERT_NE(run.context(1).workRecord.mirrorSplitRecord.split.vertex, kNone);
    EXPECT_EQ(run.mesh().numActiveVertices, count - 4);
    EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), 4U);
    EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), 0);
}

TEST_F(MultiThreadTurns, AfterAStopRequestEachThreadCommitsItsTurnAndLeaves) {
    const test::HostedProgress host;
    HeldRun run(bumpyBall(), 20);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(run.startAndHold());
    {
        const auto lock = run.enterQueue();
        test::HostedProgress::askToStop();
    }
    run.letGo();
    EXPECT_EQ(run.mesh().numActiveVertices, 255U);
    EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), 3U);
    EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), 0);
    EXPECT_TRUE(test::isClosedManifold(run.mesh()));
    for (std::size_t thread = 0; thread < 3; ++thread)
        EXPECT_EQ(run.context(thread).statistics.turns, 1U) << thread;
    test::markAllApplied(run.pm());
    test::goAllUp(run.pm());
    EXPECT_EQ(test::surfaceOf(run.mesh()), test::surfaceOf(bumpyBall()));
}

TEST_F(MultiThreadTurns, AfterOneRunsOutTheOthersCommitTheirTurnsAndLeave) {
    HeldRun run(bumpyBall(), 20);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(run.startAndHold());
    const std::int32_t heldByThem = test::threadsOf(run.pm()).lockedVertices.CountSet();
    run.runOneMoreWithoutMemory();
    EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), heldByThem);
    EXPECT_FALSE(run.startAndHold());
    EXPECT_EQ(run.context(4).statistics.turns, 0U);
    run.letGo();
    EXPECT_TRUE(run.shared().outOfMemory);
    EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), 3U);
    EXPECT_EQ(run.mesh().numActiveVertices, 255U);
    EXPECT_TRUE(test::isClosedManifold(run.mesh()));
    EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), 0);
}

TEST_F(MultiThreadTurns, PairingsAreReadOnlyOnceTheRingIsFree) {
    HeldRun run(mirroredHills(), 100, true);
    ASSERT_TRUE(run.pm().m_handleSymmetry_internal);
    EXPECT_TRUE(run.startAndHold());
    const std::int32_t held = run.context(0).workRecord.pickedVertex;
    std::set<std::int32_t> rings;
    for (std::int32_t v = 0; v < run.mesh().vertexCount(); ++v) {
        if (test::threadsOf(run.pm()).lockedVertices.Test(v)) rings.insert(v);
    }
    // The holding thread may be changing the pairing of any vertex it holds. Every pairing but
    // those of its own two ends now leads out of the mesh, so reading one would crash this test.
    constexpr std::int32_t kFarAway = 1 << 30;
    const std::int32_t kept = run.mesh().vertices[static_cast<std::size_t>(held)].partner;
    std::vector<std::int32_t>& pairing = run.mesh().symmetryCache.pairing;
    const std::vector<std::int32_t> asItWas = pairing;
    const auto setOthers = [&](auto pairOf) {
        for (std::int32_t v = 0; v < run.mesh().vertexCount(); ++v) {
            if (v != held && v != kept) pairing[static_cast<std::size_t>(v)] = pairOf(v);
        }
    };
    setOthers([](std::int32_t) { return kFarAway; });
    int tried = 0;
    for (std::int32_t v = 0; v < run.mesh().vertexCount(); ++v) {
        const VertexRecord& vertex = run.mesh().vertices[static_cast<std::size_t>(v)];
        if (rings.count(v) != 0 || vertex.partner == kNone) continue;
        if (!meet(rings, closedRings(run.mesh(), v))) continue;
        run.pm().costQueue.Clear();
        run.pm().costQueue.Insert(v);
        run.runOneMore();
        EXPECT_TRUE(run.mesh().vertexActive.Test(v));
        ++tried;
    }
    EXPECT_GT(tried, 3);
    setOthers([&](std::int32_t v) { return asItWas[static_cast<std::size_t>(v)]; });
    run.pm().costQueue.Clear();
    run.pm().costQueue.Insert(held);
}

TEST_F(MultiThreadTurns, ThreadsWaitingWhileAnotherRunsOutPickNothing) {
    for (int i = 0; i < 60; ++i) {
        HeldRun run(bumpyBall(), 20);
        run.runOneMoreWithoutMemoryWhileOthersWait();
        EXPECT_TRUE(run.shared().outOfMemory);
        EXPECT_EQ(run.context(1).statistics.turns, 0U) << i;
        EXPECT_EQ(run.context(2).statistics.turns, 0U) << i;
        EXPECT_EQ(run.mesh().numActiveVertices, 258U);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(MultiThreadTurns, BitsThatShareAByteDoNotOverwriteEachOther) {
    HeldRun run(twoOctahedra(), 11);
    EXPECT_TRUE(run.startAndHold());
    EXPECT_TRUE(run.startAndHold());
    EXPECT_EQ(run.mesh().vertexActive.CountSet(), 12)
        << "none may become inactive before the section is free";
    std::int32_t a = kNone;
    std::int32_t b = kNone;
    {
        const auto lock = run.enterQueue();
        a = run.context(0).workRecord.pickedVertex;
        b = run.context(1).workRecord.pickedVertex;
    }
    ASSERT_EQ(a / 8, b / 8);
    run.letGo();
    for (std::int32_t v = 0; v < 12; ++v)
        EXPECT_EQ(run.mesh().vertexActive.Test(v), v != a && v != b) << v;
    EXPECT_TRUE(test::isSound(run.mesh()));
}

TEST_F(MultiThreadTurns, AVertexWithoutALivingPartnerIsDroppedSilently) {
    for (const bool partnerIsGone : {false, true}) {
        HeldRun run(bumpyBall(), 100);
        const std::int32_t v = run.pm().costQueue.Top();
        VertexRecord& record = run.mesh().vertices[static_cast<std::size_t>(v)];
        if (partnerIsGone) {
            run.mesh().vertexActive.Clear(record.partner);
        } else {
            record.partner = kNone;
        }
        const float cost = record.cost;
        run.pm().costQueue.Clear();
        run.pm().costQueue.Insert(v);
        run.runOneMore();
        EXPECT_TRUE(run.mesh().vertexActive.Test(v));
        EXPECT_FALSE(run.pm().costQueue.isQueued(v));
        EXPECT_EQ(record.cost, cost) << "not penalized";
        EXPECT_EQ(run.context(0).statistics.turns, 2U) << "plus the turn that finds nothing";
        EXPECT_EQ(run.pm().vsplitList.NumVtxSplit(), 0U);
        EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), 0);
    }
}

TEST_F(MultiThreadTurns, TheLaterOfTwoEntriesOfAVertexHolds) {
    HeldRun run(bumpyBall(), 257);
    ASSERT_TRUE(run.startAndHold());
    std::vector<std::int32_t> others;
    for (std::int32_t v = 0; others.size() < 2; ++v) {
        if (!test::threadsOf(run.pm()).lockedVertices.Test(v)) others.push_back(v);
    }
    const std::int32_t out = others[0];
    const std::int32_t in = others[1];
    ASSERT_TRUE(run.pm().costQueue.isQueued(out));
    ThreadWorkRecord& record = test::threadsOf(run.pm()).threadContexts[0].workRecord;
    record.appendUpdate(out, 0.0F, in);
    record.appendUpdate(in, kNotCollapsible, kNone);
    record.appendUpdate(out, kNotCollapsible, kNone);
    record.appendUpdate(in, 0.0F, out);
    run.letGo();
    EXPECT_FALSE(run.pm().costQueue.isQueued(out));
    EXPECT_EQ(run.mesh().vertices[static_cast<std::size_t>(out)].cost, kNotCollapsible);
    EXPECT_EQ(run.pm().costQueue.Top(), in);
    EXPECT_EQ(run.mesh().vertices[static_cast<std::size_t>(in)].partner, out);
}

TEST_F(MultiThreadTurns, AThreadLeavesARefusedVertexAlone) {
    HeldRun run(bumpyBall(), 100);
    for (const bool finishStep : {false, true}) {
        run.pm().AllowFinishStep = finishStep;
        run.pm().finishStepStarted = finishStep;
        run.pm().costQueue.Clear();
        VertexRecord& refused = run.mesh().vertices[7];
        refused.cost = kPenalizedCost;
        run.pm().costQueue.Insert(7);
        run.runOneMore();
        EXPECT_EQ(run.mesh().numActiveVertices, 258U);
        EXPECT_TRUE(run.pm().costQueue.isQueued(7));
        EXPECT_EQ(refused.cost, kPenalizedCost);
        EXPECT_FALSE(run.pm().inFinishStep);
        EXPECT_EQ(test::threadsOf(run.pm()).lockedVertices.CountSet(), 0);
    }
}

TEST_F(MultiThreadTurns, ProgressIsShownEvery5000TurnsOfAllThreads) {
    const test::HostedProgress host;
    HeldRun run(bumpyBall(), 100);
    ASSERT_TRUE(progressChannel().BeginSubTask("processing", 258));
    run.shared().progressCount = 4990;
    run.pm().TargetNumItem = 258 - 9;
    run.runOneMore();
    EXPECT_EQ(progressChannel().record().subDone, 0);
    run.pm().TargetNumItem = 258 - 20;
    run.runOneMore();
    EXPECT_EQ(run.shared().progressCount, 5010U);
    EXPECT_EQ(progressChannel().record().subDone, 10);
}

TEST_F(MultiThreadTurns, ProgressCountsRefusedTurnsToo) {
    // Two triangles back to back: no collapse of theirs is allowed.
    HeldRun run(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0.5F}}, {{0, 1, 2}, {1, 0, 2}}), 0);
    run.runOneMore();
    EXPECT_EQ(run.mesh().numActiveVertices, 3U);
    EXPECT_EQ(run.shared().progressCount, 4U)
        << "three refusals, plus the turn that finds only those";
}

}  // namespace
}  // namespace korvalite::core
