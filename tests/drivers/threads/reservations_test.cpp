// SPDX-License-Identifier: MIT
#include "drivers/threads/reservations.h"

#include "base/critical_section.h"
#include "drivers/threads/multi_thread_driver.h"
#include "support/allocation_limit.h"
#include "support/decimation_run.h"
#include "support/host_follower.h"
#include "support/mirrored_grid.h"
#include "support/random.h"
#include "support/stop_request.h"
#include "support/threads.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

#include <cmath>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <vector>

namespace korvalite::core {
namespace {

using Vertices = std::set<std::int32_t>;

// 6 x 6 squares: vertex (column, row) has the index 7 * row + column.
struct Board {
    ProgressiveMesh pm;

    explicit Board(DMesh mesh = test::grid(6, 6)) {
        test::prepare(pm, std::move(mesh));
        test::threadsOf(pm).lockedVertices.Reset(pm.mesh.vertexCount());
    }
};

constexpr std::int32_t at(std::int32_t column, std::int32_t row) {
    return 7 * row + column;
}

Vertices heldIn(const ProgressiveMesh& pm) {
    Vertices held;
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        if (test::threadsOf(pm).lockedVertices.Test(v)) held.insert(v);
    }
    return held;
}

// The vertices themselves and the vertices of all triangles that name one of them.
Vertices closedRings(const DMesh& mesh, const Vertices& centres) {
    Vertices rings = centres;
    for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
        const Vertices corners{static_cast<std::int32_t>(mesh.triangles[t]),
                               static_cast<std::int32_t>(mesh.triangles[t + 1]),
                               static_cast<std::int32_t>(mesh.triangles[t + 2])};
        for (const std::int32_t corner : corners) {
            if (centres.count(corner) != 0) rings.insert(corners.begin(), corners.end());
        }
    }
    return rings;
}

TEST(Reservations, TakeTheClosedRingsOfBothEnds) {
    Board board;
    Reservations reservations(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(reservations.hold({at(2, 2), at(3, 2)}));
    EXPECT_EQ(heldIn(board.pm), closedRings(board.pm.mesh, {at(2, 2), at(3, 2)}));
    EXPECT_EQ(heldIn(board.pm).size(), 10U) << "two fans of six that share two triangles";
}

TEST(Reservations, TakeOpenFansAtTheBorder) {
    Board board;
    Reservations reservations(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(reservations.hold({at(0, 0), at(1, 0)}));
    EXPECT_EQ(heldIn(board.pm),
              (Vertices{at(0, 0), at(1, 0), at(2, 0), at(0, 1), at(1, 1), at(2, 1)}));
}

TEST(Reservations, TakeTheRingsOfTheMirrorEndsToo) {
    test::MirroredGrid m;
    test::threadsOf(m.pm).lockedVertices.Reset(m.pm.mesh.vertexCount());
    Reservations reservations(m.pm.mesh, test::threadsOf(m.pm).lockedVertices);
    const std::int32_t v = m.at(3, 2);
    const std::int32_t u = m.at(3, 3);
    ASSERT_TRUE(reservations.hold({v, u, m.image(v), m.image(u)}));
    const Vertices held = heldIn(m.pm);
    EXPECT_EQ(held, closedRings(m.pm.mesh, {v, u, m.image(v), m.image(u)}));
    for (const std::int32_t vertex : held)
        EXPECT_EQ(held.count(m.image(vertex)), 1U) << vertex;
}

TEST(Reservations, OverlappingMirrorRingsAreOneReservation) {
    test::MirroredGrid m;
    test::threadsOf(m.pm).lockedVertices.Reset(m.pm.mesh.vertexCount());
    Reservations reservations(m.pm.mesh, test::threadsOf(m.pm).lockedVertices);
    const std::int32_t v = m.at(1, 2);
    const std::int32_t u = m.at(0, 2);  // on the plane, its own image
    ASSERT_TRUE(reservations.hold({v, u, m.image(v), u}));
    EXPECT_EQ(heldIn(m.pm), closedRings(m.pm.mesh, {v, u, m.image(v)}));
    reservations.releaseAll();
    EXPECT_EQ(test::threadsOf(m.pm).lockedVertices.CountSet(), 0);
}

TEST(Reservations, AVertexWithoutTrianglesIsHeldAlone) {
    Board board(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}, {{0, 1, 2}}));
    Reservations reservations(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(reservations.hold({3}));
    EXPECT_EQ(heldIn(board.pm), Vertices{3});
    Reservations others(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    EXPECT_FALSE(others.hold({3}));
}

TEST(Reservations, OneHeldVertexRefusesTheWhole) {
    Board board;
    for (const std::int32_t taken : closedRings(board.pm.mesh, {at(2, 2), at(3, 2)})) {
        Reservations reservations(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
        test::threadsOf(board.pm).lockedVertices.Set(taken);
        EXPECT_FALSE(reservations.hold({at(2, 2), at(3, 2)})) << taken;
        EXPECT_EQ(heldIn(board.pm), Vertices{taken});
        reservations.releaseAll();
        EXPECT_EQ(heldIn(board.pm), Vertices{taken}) << "another thread's vertex";
        test::threadsOf(board.pm).lockedVertices.Clear(taken);
    }
}

TEST(Reservations, AHeldVertexNextToTheRingsDoesNotConflict) {
    Board board;
    const Vertices rings = closedRings(board.pm.mesh, {at(2, 2), at(3, 2)});
    Reservations reservations(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    for (const std::int32_t vertex : closedRings(board.pm.mesh, rings)) {
        if (rings.count(vertex) == 0) test::threadsOf(board.pm).lockedVertices.Set(vertex);
    }
    EXPECT_TRUE(reservations.hold({at(2, 2), at(3, 2)}));
}

TEST(Reservations, ARefusedNeighbourhoodIsNotReleasedWithTheNextOne) {
    Board board;
    Reservations others(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(others.hold({at(4, 4)}));
    // Both centres and the ring of the first are free; the ring of the second is not.
    EXPECT_FALSE(own.hold({at(1, 1), at(2, 3)}));
    Reservations third(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(third.hold({at(1, 1)}));
    ASSERT_TRUE(own.hold({at(1, 5)}));
    own.releaseAll();
    Vertices expected = closedRings(board.pm.mesh, {at(4, 4)});
    expected.merge(closedRings(board.pm.mesh, {at(1, 1)}));
    EXPECT_EQ(heldIn(board.pm), expected);
}

TEST(Reservations, ReleaseAllFreesOverlapsButNothingOfOthers) {
    Board board;
    Reservations first(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    Reservations second(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(first.hold({at(1, 1), at(2, 2), at(1, 2)}));
    ASSERT_TRUE(second.hold({at(5, 5)}));
    first.releaseAll();
    EXPECT_EQ(heldIn(board.pm), closedRings(board.pm.mesh, {at(5, 5)}));
    second.releaseAll();
    EXPECT_EQ(test::threadsOf(board.pm).lockedVertices.CountSet(), 0);
    EXPECT_TRUE(second.hold({at(1, 1), at(2, 2), at(1, 2)}));
}

TEST(Reservations, ReleasedVerticesBelongToTheNextHolder) {
    Board board;
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    Reservations others(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(own.hold({at(2, 2)}));
    own.releaseAll();
    ASSERT_TRUE(others.hold({at(2, 2)}));
    ASSERT_TRUE(own.hold({at(5, 5)}));
    own.releaseAll();
    EXPECT_EQ(heldIn(board.pm), closedRings(board.pm.mesh, {at(2, 2)}));
}

TEST(Reservations, AVertexHeldByOneThreadIsHeldForAll) {
    Board board;
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    const Reservations others(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(own.hold({at(2, 2)}));
    EXPECT_TRUE(own.isHeld(at(3, 3)));
    EXPECT_TRUE(others.isHeld(at(3, 3)));
    EXPECT_FALSE(others.isHeld(at(4, 4)));
    EXPECT_FALSE(others.isHeld(kNone));
    own.releaseAll();
    EXPECT_FALSE(others.isHeld(at(3, 3)));
}

// A hub, a rim of `count` vertices, and an outer ring of as many vertices: vertex 0, then 1 ..
// count, then count + 1 .. 2 * count.
DMesh wheel(std::uint32_t count) {
    test::Points points{{0, 0, 1}};
    test::Faces faces;
    for (const float radius : {1.0F, 2.0F}) {
        for (std::uint32_t i = 0; i < count; ++i) {
            const float angle = 6.2831853F * static_cast<float>(i) / static_cast<float>(count);
            points.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
        }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t rim = 1 + i;
        const std::uint32_t next = 1 + (i + 1) % count;
        faces.push_back({0, rim, next});
        faces.push_back({rim, rim + count, next + count});
        faces.push_back({rim, next + count, next});
    }
    return test::buildMesh(points, faces);
}

constexpr std::int32_t kSpokes = 2000;

TEST(Reservations, GatheredVerticesNeverHeldAreNotReleased) {
    Board board;
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    Reservations others(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(own.gather({at(2, 2)}));
    ASSERT_TRUE(others.hold({at(2, 2)}));
    own.releaseAll();
    EXPECT_EQ(heldIn(board.pm), closedRings(board.pm.mesh, {at(2, 2)}));
}

TEST(Reservations, VerticesGatheredInTwoStepsAreHeldTogether) {
    Board board(wheel(kSpokes));
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    own.beginPick();
    ASSERT_TRUE(own.gather({1, 0}));
    ASSERT_TRUE(own.gather({kSpokes + 5}));
    EXPECT_EQ(test::threadsOf(board.pm).lockedVertices.CountSet(), 0);
    own.holdGathered();
    EXPECT_EQ(heldIn(board.pm), closedRings(board.pm.mesh, {1, 0, kSpokes + 5}));
    own.releaseAll();
    EXPECT_EQ(test::threadsOf(board.pm).lockedVertices.CountSet(), 0);
}

TEST(Reservations, ABlockedHubIsWalkedOncePerPick) {
    Board board(wheel(kSpokes));
    Reservations others(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    ASSERT_TRUE(others.hold({kSpokes + kSpokes / 2})) << "its ring contains two rim vertices";
    own.beginPick();
    for (std::int32_t spoke = 1; spoke <= kSpokes; ++spoke)
        EXPECT_FALSE(own.hold({spoke, 0})) << spoke;
    EXPECT_LT(own.lookCount(), 20U * kSpokes);
    others.releaseAll();
    own.beginPick();
    EXPECT_TRUE(own.hold({1, 0})) << "the next pick looks again";
}

TEST(Reservations, AFreeHubIsNotWalkedForEachBlockedSpoke) {
    Board board(wheel(kSpokes));
    test::threadsOf(board.pm).lockedVertices.Set(kSpokes + 1);
    Reservations own(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
    own.beginPick();
    for (std::int32_t spoke = 2; spoke < kSpokes; ++spoke) {
        ASSERT_TRUE(own.gather({spoke, 0})) << spoke;
        ASSERT_FALSE(own.gather({kSpokes + 2})) << "a neighbour is held";
    }
    EXPECT_LT(own.lookCount(), 200U * kSpokes);
}

TEST(Reservations, ThreadsNeverHoldTheSameVertex) {
    // The vertical edges of 10 x 10 squares.
    constexpr std::int32_t kInRow = 11;
    Board board(test::grid(10, 10));
    std::vector<Vertices> rings;
    for (std::int32_t v = 0; v < 10 * kInRow; ++v)
        rings.push_back(closedRings(board.pm.mesh, {v, v + kInRow}));
    CriticalSection section;
    std::vector<std::size_t> owner(board.pm.mesh.vertices.size());  // written by holders only
    test::onThreads(4, [&](std::size_t thread) {
        test::Random random(static_cast<std::uint32_t>(thread));
        Reservations reservations(board.pm.mesh, test::threadsOf(board.pm).lockedVertices);
        for (int turn = 0; turn < 2000; ++turn) {
            const auto v =
                static_cast<std::int32_t>(random.below(static_cast<std::uint32_t>(rings.size())));
            {
                const std::lock_guard lock(section);
                if (!reservations.hold({v, v + kInRow})) continue;
            }
            const Vertices& held = rings[static_cast<std::size_t>(v)];
            for (const std::int32_t vertex : held)
                owner[static_cast<std::size_t>(vertex)] = thread;
            for (const std::int32_t vertex : held)
                EXPECT_EQ(owner[static_cast<std::size_t>(vertex)], thread);
            const std::lock_guard lock(section);
            reservations.releaseAll();
        }
    });
    EXPECT_EQ(test::threadsOf(board.pm).lockedVertices.CountSet(), 0);
}

class ReservationsAfterARun : public test::DecimationTest {
protected:
    ~ReservationsAfterARun() override { progressChannel().EndMainTask(); }

    // Ready to launch several threads.
    static test::MeshPtr initialized(DMesh mesh, std::uint32_t target) {
        test::MeshPtr pm = test::prepared(std::move(mesh));
        pm->NumThread = 4;
        pm->TargetNumItem = target;
        doDecimationInit_LM_MT<PlainMetric>(*pm);
        EXPECT_EQ(test::threadsOf(*pm).lockedVertices.count(), pm->mesh.vertexCount());
        return pm;
    }
    static void expectNoneHeldAfter(ProgressiveMesh& pm) {
        EXPECT_EQ(doDecimationLaunchThreadLoops_LM_MT<PlainMetric>(pm), 0);
        EXPECT_EQ(test::threadsOf(pm).lockedVertices.CountSet(), 0);
    }
};

TEST_F(ReservationsAfterARun, NoneIsLeftWhenTheTargetWasReached) {
    const test::MeshPtr pm = initialized(test::sphere(4), 200);
    expectNoneHeldAfter(*pm);
    EXPECT_LE(pm->mesh.numActiveVertices, 200U);
}

TEST_F(ReservationsAfterARun, NoneIsLeftWhenNothingMoreCouldCollapse) {
    const test::MeshPtr pm = initialized(test::sphere(3), 0);
    expectNoneHeldAfter(*pm);
    EXPECT_GT(pm->mesh.numActiveVertices, 0U);
}

TEST_F(ReservationsAfterARun, NoneIsLeftWhenASymmetricPairWasRefused) {
    test::MeshPtr pm = test::prepared(test::ballWithADoubledTriangle());
    test::askForSymmetry(*pm, 0);
    pm->NumThread = 4;
    doDecimationInit_LM_MT<PlainMetric>(*pm);
    ASSERT_TRUE(pm->m_handleSymmetry_internal);
    expectNoneHeldAfter(*pm);
}

TEST_F(ReservationsAfterARun, NoneIsLeftAfterAStopRequest) {
    const test::StopRequest stop;
    const test::MeshPtr pm = initialized(test::sphere(3), 0);
    expectNoneHeldAfter(*pm);
    EXPECT_EQ(pm->mesh.numActiveVertices, 258U);
}

// From the moment all threads are up, leaves memory for a reservation but not for its costs.
class TakeMemory : public test::HostFollower {
public:
    void step(RunStep step) override {
        const auto number = static_cast<int>(step);
        if (number == 10) limit.emplace(std::size_t{1000});
    }
    std::optional<test::AllocationLimit> limit;
};

TEST_F(ReservationsAfterARun, NoneIsLeftWhenAThreadRanOutOfMemory) {
    const test::MeshPtr pm = initialized(test::sphere(4), 0);
    TakeMemory observer;
    pm->monitor = &observer;
    bool ended = false;
    try {
        doDecimationLaunchThreadLoops_LM_MT<PlainMetric>(*pm);
    } catch (const std::bad_alloc&) {
        ended = true;
    }
    observer.limit.reset();
    EXPECT_TRUE(ended);
    EXPECT_EQ(test::threadsOf(*pm).lockedVertices.CountSet(), 0);
}

}  // namespace
}  // namespace korvalite::core
