// SPDX-License-Identifier: MIT
#include "collapse/collapse.h"

#include "support/mesh_validator.h"
#include "support/prepared_mesh.h"
#include "support/random.h"
#include "support/vertex_corners.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// What an undo must restore; the order of the corner lists is not part of it.
struct State {
    std::vector<std::uint32_t> triangles;
    decltype(DMesh::vertices) vertices;
    std::vector<bool> bits;
    std::uint32_t vertexCount = 0;
    std::uint32_t triangleCount = 0;

    explicit State(const DMesh& mesh)
        : triangles(mesh.triangles), vertices(mesh.vertices), vertexCount(mesh.numActiveVertices),
          triangleCount(mesh.numActiveTriangles) {
        for (const BitArray* array :
             {&mesh.vertexActive, &mesh.triangleActive, &mesh.borderVertices}) {
            for (std::int32_t i = 0; i < array->count(); ++i)
                bits.push_back(array->Test(i));
        }
    }
    friend bool operator==(const State& a, const State& b) {
        return a.triangles == b.triangles && a.bits == b.bits && a.vertexCount == b.vertexCount &&
               a.triangleCount == b.triangleCount &&
               std::memcmp(a.vertices.data(), b.vertices.data(),
                           a.vertices.size() * sizeof(VertexRecord)) == 0;
    }
};

struct Collapse {
    ProgressiveMesh pm;
    CollapseRecord record;
    CollapseScratch scratch;

    explicit Collapse(DMesh mesh) { test::prepare(pm, std::move(mesh)); }

    CollapseResult run(std::int32_t v, std::int32_t w, const FloatVec3& position) {
        record.clear();
        return CollapseEdge(pm, v, w, position, record, scratch, Alone(pm));
    }
    // Collapses v onto w, at the position of w.
    CollapseResult run(std::int32_t v, std::int32_t w) {
        return run(v, w, pm.mesh.vertices[static_cast<std::size_t>(w)].position());
    }
    void undo(std::int32_t v, std::int32_t w) {
        UndoCollapse(pm.mesh, v, w, record, scratch, Alone(pm));
    }
    [[nodiscard]] bool active(std::int32_t vertex) const {
        return pm.mesh.vertexActive.Test(vertex);
    }
};

void expectSound(const DMesh& mesh, test::Degenerate degenerate = test::Degenerate::Refused) {
    EXPECT_TRUE(test::isSound(mesh, degenerate));
    EXPECT_TRUE(test::cornerListsAreSound(mesh));
}

//  12--13--14--15     The triangles around the edge 5-6 are 8 (5, 6, 10) and 3 (1, 6, 5); the
//   | / | / | / |     corners of 5, from the highest: 27 (5, 10, 9), 24 (5, 6, 10), 19 (4, 5, 9),
//   8---9--10--11     11 (1, 6, 5), 4 (0, 5, 4) and 2 (0, 1, 5).
//   | / | / | / |
//   4---5---6---7
//   | / | / | / |
//   0---1---2---3
TEST(CollapseEdge, RemovesOneVertexAndTheTwoTrianglesOfTheEdge) {
    Collapse c(test::grid(3, 3));
    ASSERT_EQ(c.run(5, 6, {1.5F, 1, 0}), CollapseResult::Done);
    const DMesh& mesh = c.pm.mesh;
    EXPECT_EQ(mesh.numActiveVertices, 15U);
    EXPECT_EQ(mesh.numActiveTriangles, 16U);
    EXPECT_FALSE(mesh.vertexActive.Test(5));
    EXPECT_EQ(mesh.vertices[6].x, 1.5F);
    EXPECT_EQ(mesh.vertices[5].x, 1.0F);

    const VSplit& split = c.record.split;
    EXPECT_EQ(split.vertex, 5);
    EXPECT_EQ(split.position.x, 2.0F);
    EXPECT_EQ(split.corners, (IndexList{27, 24, 19, 11, 4, 2}));
    EXPECT_EQ(split.removedTriangles, (IndexList{8, 3}));  // in the order of 5's list
    EXPECT_TRUE(c.record.flags.collapsed);
    EXPECT_FALSE(c.record.flags.survivorWasBorder);
    for (const std::int32_t corner : split.corners)
        EXPECT_EQ(mesh.triangles[static_cast<std::size_t>(corner)], 6U);
    expectSound(mesh);
}

TEST(CollapseEdge, PutsTheRemovedCornersBeforeTheKeptOnes) {
    Collapse c(test::grid(3, 3));
    IndexList before;
    GetVertexCorners(c.pm.mesh, 6, before);
    ASSERT_EQ(c.run(5, 6), CollapseResult::Done);
    IndexList expected{27, 19, 4, 2};
    for (const std::int32_t corner : before) {
        if (corner / 3 != 8 && corner / 3 != 3) expected.push_back(corner);
    }
    IndexList after;
    GetVertexCorners(c.pm.mesh, 6, after);
    EXPECT_EQ(after, expected);
    GetVertexCorners(c.pm.mesh, 5, after);
    EXPECT_TRUE(after.empty());
}

TEST(CollapseEdge, TheLinkTestRecordsTheKeptRing) {
    Collapse c(test::grid(3, 3));
    ASSERT_EQ(c.run(5, 6), CollapseResult::Done);
    IndexList neighbours;
    IndexList corners;
    GetVertexCornersAndNeighbours(c.pm.mesh, 6, neighbours, corners);
    EXPECT_EQ(c.record.neighbours, neighbours);
    EXPECT_EQ(c.record.ringCorners, corners);
    EXPECT_EQ(neighbours.size(), 8U);

    Collapse free(test::grid(3, 3));
    free.pm.ProtectTopology = false;
    ASSERT_EQ(free.run(5, 6), CollapseResult::Done);
    EXPECT_TRUE(free.record.neighbours.empty());
    EXPECT_TRUE(free.record.ringCorners.empty());
}

TEST(CollapseEdge, AFlipIsRefusedBeforeAnythingChanges) {
    Collapse c(test::grid(3, 3));
    const State before(c.pm.mesh);
    const auto lists = test::vertexCornersOf(c.pm.mesh);
    EXPECT_EQ(c.run(5, 6, {10, 10, 0}), CollapseResult::Refused);
    EXPECT_TRUE(State(c.pm.mesh) == before);
    EXPECT_EQ(test::vertexCornersOf(c.pm.mesh), lists);
    EXPECT_TRUE(c.record.split.corners.empty());
    EXPECT_EQ(c.record.split.vertex, -1);
    EXPECT_FALSE(c.record.flags.collapsed);

    c.pm.AvoidNormalReverse = false;
    EXPECT_EQ(c.run(5, 6, {10, 10, 0}), CollapseResult::Done);
}

TEST(CollapseEdge, ANormalMayTurnByARightAngleOrVanish) {
    // 0 > N'.N is strict: the triangles at (1, 1, 0) fold up or shrink to lines, and none reverses.
    Collapse c(test::grid(3, 3));
    EXPECT_EQ(c.run(5, 6, {2, 0, 0}), CollapseResult::Done);
    expectSound(c.pm.mesh);
}

TEST(CollapseEdge, DyingTrianglesAreNotTested) {
    // At (2, 1.5, 0) only the dying triangle (5, 6, 10) would turn over.
    Collapse c(test::grid(3, 3));
    EXPECT_EQ(c.run(5, 6, {1.5F, 1.25F, 0}), CollapseResult::Done);
}

TEST(CollapseEdge, ADegenerateTriangleAtTheRemovedVertexIsRemovedOnce) {
    DMesh mesh = test::grid(3, 3);
    mesh.triangles.insert(mesh.triangles.end(), {5, 5, 1});  // triangle 18
    test::completeMesh(mesh);
    for (const bool protect : {false, true}) {
        Collapse c(mesh);
        c.pm.ProtectTopology = protect;
        const State before(c.pm.mesh);
        const CollapseResult result = c.run(5, 6);
        EXPECT_EQ(c.record.split.removedTriangles, (IndexList{18, 8, 3}));
        EXPECT_EQ(c.record.split.corners, (IndexList{55, 54, 27, 24, 19, 11, 4, 2}));
        if (result == CollapseResult::Done) {
            EXPECT_EQ(c.pm.mesh.numActiveTriangles, 16U);
            c.undo(5, 6);
        }
        EXPECT_TRUE(State(c.pm.mesh) == before);
        expectSound(c.pm.mesh, test::Degenerate::Allowed);
    }
}

TEST(CollapseEdge, ADegenerateTriangleAtTheKeptVertexStays) {
    DMesh mesh = test::grid(3, 3);
    mesh.triangles.insert(mesh.triangles.end(), {6, 6, 1});
    test::completeMesh(mesh);
    Collapse c(mesh);
    c.pm.ProtectTopology = false;
    ASSERT_EQ(c.run(5, 6), CollapseResult::Done);
    EXPECT_EQ(c.record.split.removedTriangles, (IndexList{8, 3}));
    EXPECT_EQ(c.pm.mesh.numActiveTriangles, 17U);
    expectSound(c.pm.mesh, test::Degenerate::Allowed);
}

TEST(CollapseEdge, ProtectTopologyUndoesACollapseThatOrphansAVertex) {
    Collapse c(test::oneTriangle());
    const State before(c.pm.mesh);
    EXPECT_EQ(c.run(0, 1), CollapseResult::Refused);
    EXPECT_TRUE(c.active(2));  // it was never inactive
    EXPECT_TRUE(State(c.pm.mesh) == before);
    EXPECT_FALSE(c.record.flags.collapsed);
    expectSound(c.pm.mesh);
}

//   3---2
//   | / |       1 collapses onto 0: only the triangle 0 1 2 disappears, and no vertex is orphaned.
//   0---1
TEST(CollapseEdge, AVertexWithAnotherTriangleIsNotAnOrphan) {
    Collapse c(test::twoTriangles());
    EXPECT_EQ(c.run(1, 0), CollapseResult::Done);
    EXPECT_EQ(c.pm.mesh.numActiveVertices, 3U);
    EXPECT_EQ(c.pm.mesh.numActiveTriangles, 1U);
    expectSound(c.pm.mesh);
}

TEST(CollapseEdge, WithoutProtectTopologyOrphansVanishEvenTheKeptVertex) {
    Collapse c(test::oneTriangle());
    c.pm.ProtectTopology = false;
    for (std::int32_t v = 0; v < 3; ++v)
        c.pm.costQueue.Insert(v);
    EXPECT_EQ(c.run(0, 1), CollapseResult::Done);
    EXPECT_EQ(c.pm.mesh.numActiveVertices, 0U);
    EXPECT_EQ(c.pm.mesh.numActiveTriangles, 0U);
    EXPECT_FALSE(c.active(1));
    EXPECT_FALSE(c.active(2));
    // They leave the queue; only the removed vertex stays in it until the driver takes it out.
    EXPECT_TRUE(c.pm.costQueue.isQueued(0));
    EXPECT_FALSE(c.pm.costQueue.isQueued(1));
    EXPECT_FALSE(c.pm.costQueue.isQueued(2));
    expectSound(c.pm.mesh);

    c.undo(0, 1);
    EXPECT_EQ(c.pm.mesh.numActiveVertices, 3U);
    EXPECT_EQ(c.pm.mesh.numActiveTriangles, 1U);
    EXPECT_FALSE(c.pm.costQueue.isQueued(2));  // not queued again
    expectSound(c.pm.mesh);
}

TEST(CollapseEdge, AVertexWithoutAnyTriangleCollapses) {
    Collapse c(test::buildMesh({{0, 0, 0}, {1, 0, 0}}, {}));
    EXPECT_EQ(c.run(0, 1, {5, 5, 5}), CollapseResult::Done);
    EXPECT_EQ(c.pm.mesh.numActiveVertices, 1U);
    EXPECT_TRUE(c.record.split.corners.empty());
    EXPECT_TRUE(c.record.split.removedTriangles.empty());
    EXPECT_EQ(c.pm.mesh.vertices[1].x, 5.0F);
    c.undo(0, 1);
    EXPECT_EQ(c.pm.mesh.numActiveVertices, 2U);
    EXPECT_EQ(c.pm.mesh.vertices[1].x, 1.0F);
}

// Inner vertices: the kept one may not have more corners than neighbours.
//
// A double pyramid over the triangle 2 3 4, with the tips 0 and 1. Without the edge 2-3, its two
// sides coincide: vertex 3 has 4 corners and the neighbours 0, 1, 4.
TEST(CollapseEdge, TwoInnerVerticesMustLeaveAClosedFan) {
    const DMesh pyramid =
        test::buildMesh({{0, 0, 1}, {0, 0, -1}, {1, 0, 0}, {-1, 1, 0}, {-1, -1, 0}},
                        {{0, 2, 3}, {0, 3, 4}, {0, 4, 2}, {1, 3, 2}, {1, 4, 3}, {1, 2, 4}});
    ASSERT_TRUE(test::isClosedManifold(pyramid));
    Collapse c(pyramid);
    c.pm.AvoidNormalReverse = false;
    const State before(c.pm.mesh);
    EXPECT_EQ(c.run(2, 3), CollapseResult::Refused);
    EXPECT_EQ(c.record.ringCorners.size(), 4U);
    EXPECT_EQ(c.record.neighbours.size(), 3U);
    EXPECT_TRUE(State(c.pm.mesh) == before);
    expectSound(c.pm.mesh);
    EXPECT_EQ(c.run(0, 2), CollapseResult::Done);

    Collapse unprotected(pyramid);
    unprotected.pm.AvoidNormalReverse = false;
    unprotected.pm.ProtectTopology = false;
    EXPECT_EQ(unprotected.run(2, 3), CollapseResult::Done);
}

//   3---4---5
//   | / | / |     The edge 1-4 joins two sides of the border: vertex 4 would join two triangles
//   0---1---2     at one point, with 2 corners and 4 neighbours.
TEST(CollapseEdge, TwoBorderVerticesMustLeaveAnOpenFan) {
    for (const bool finishing : {false, true}) {
        Collapse c(test::grid(2, 1));
        c.pm.inFinishStep = finishing;
        const State before(c.pm.mesh);
        EXPECT_EQ(c.run(1, 4), CollapseResult::RefusedBothBorder);
        EXPECT_TRUE(State(c.pm.mesh) == before);
        expectSound(c.pm.mesh);
    }
    Collapse along(test::grid(2, 1));
    EXPECT_EQ(along.run(1, 2), CollapseResult::Done);
}

TEST(CollapseEdge, OnlyTheFinishStepLetsTwoBorderVerticesCloseAHole) {
    // An octahedron without the face 4 0 2: when 0 collapses onto 2, the hole becomes the edge 2-4.
    DMesh open = test::octahedron();
    open.triangles.erase(open.triangles.begin(), open.triangles.begin() + 3);
    test::completeMesh(open);
    Collapse c(open);
    c.pm.AvoidNormalReverse = false;
    const State before(c.pm.mesh);
    EXPECT_EQ(c.run(0, 2), CollapseResult::RefusedBothBorder);
    EXPECT_TRUE(State(c.pm.mesh) == before);
    c.pm.inFinishStep = true;
    EXPECT_EQ(c.run(0, 2), CollapseResult::Done);
    EXPECT_TRUE(test::isClosedManifold(c.pm.mesh));
}

TEST(CollapseEdge, OneBorderVertexMustLeaveAnOpenFan) {
    // Vertex 5 is inside and 1 on the border: an open fan of 7 corners and 8 neighbours.
    Collapse c(test::grid(3, 3));
    EXPECT_EQ(c.run(5, 1), CollapseResult::Done);
    EXPECT_EQ(c.record.neighbours.size(), c.record.ringCorners.size() + 1);
    // If 5 is marked as border, its closed fan breaks the rule for two border vertices.
    Collapse marked(test::grid(3, 3));
    marked.pm.mesh.borderVertices.Set(5);
    const State before(marked.pm.mesh);
    EXPECT_EQ(marked.run(5, 6), CollapseResult::Refused);
    EXPECT_TRUE(State(marked.pm.mesh) == before);
}

TEST(CollapseEdge, TheKeptVertexInheritsTheBorder) {
    Collapse c(test::grid(3, 3));
    c.pm.ProtectTopology = false;
    c.pm.AvoidNormalReverse = false;
    ASSERT_EQ(c.run(1, 5), CollapseResult::Done);
    EXPECT_TRUE(c.pm.mesh.borderVertices.Test(5));
    EXPECT_FALSE(c.record.flags.survivorWasBorder);
    c.undo(1, 5);
    EXPECT_FALSE(c.pm.mesh.borderVertices.Test(5));
    EXPECT_TRUE(c.pm.mesh.borderVertices.Test(1));

    ASSERT_EQ(c.run(5, 1), CollapseResult::Done);
    EXPECT_TRUE(c.record.flags.survivorWasBorder);
    c.undo(5, 1);
    EXPECT_TRUE(c.pm.mesh.borderVertices.Test(1));
    EXPECT_FALSE(c.pm.mesh.borderVertices.Test(5));
}

TEST(UndoCollapse, PushesTheCornersToTheHeadOfTheLists) {
    Collapse c(test::twoTriangles());
    ASSERT_EQ(c.run(1, 0), CollapseResult::Done);
    c.undo(1, 0);
    // The corners of triangle 0 are back at the heads of their lists.
    EXPECT_EQ(test::vertexCornersOf(c.pm.mesh), (test::Lists{{0, 3}, {1}, {2, 4}, {5}}));
}

TEST(UndoCollapse, LeavesTheListOfTheRemovedVertexReversed) {
    Collapse c(test::grid(3, 3));
    IndexList ownOfKept;
    GetVertexCorners(c.pm.mesh, 6, ownOfKept);
    std::erase_if(ownOfKept,
                  [](std::int32_t corner) { return corner / 3 == 8 || corner / 3 == 3; });
    ASSERT_EQ(c.run(5, 6), CollapseResult::Done);
    c.undo(5, 6);
    IndexList corners;
    GetVertexCorners(c.pm.mesh, 5, corners);
    EXPECT_EQ(corners, (IndexList{2, 4, 11, 19, 24, 27}));
    // Its triangles 8 and 3 came back before that, one after the other.
    IndexList expected{10, 25};
    expected.insert(expected.end(), ownOfKept.begin(), ownOfKept.end());
    GetVertexCorners(c.pm.mesh, 6, corners);
    EXPECT_EQ(corners, expected);
}

// Collapses at random and undoes every second collapse; after each step everything must be
// consistent.
class RandomCollapses {
public:
    RandomCollapses(const DMesh& mesh, std::uint32_t seed, test::Degenerate degenerate)
        : random_(seed), c_(mesh), degenerate_(degenerate) {
        c_.pm.ProtectTopology = random_.onceIn(2);
        c_.pm.AvoidNormalReverse = random_.onceIn(2);
        c_.pm.inFinishStep = random_.onceIn(4);
        for (std::int32_t v = 0; v < c_.pm.mesh.vertexCount(); ++v)
            c_.pm.costQueue.Insert(v);
    }

    void run(int steps) {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step)
            takeStep();
    }

private:
    void takeStep() {
        const DMesh& mesh = c_.pm.mesh;
        if (mesh.vertices.empty()) return;
        const auto v = static_cast<std::int32_t>(
            random_.below(static_cast<std::uint32_t>(mesh.vertices.size())));
        if (!c_.active(v)) return;
        IndexList ring;
        GetVertexNeighbours(mesh, v, ring);
        if (ring.empty()) return;
        const std::int32_t w = ring[random_.below(static_cast<std::uint32_t>(ring.size()))];
        if (w == v) return;
        const FloatVec3 position = mesh.vertices[static_cast<std::size_t>(w)].position() +
                                   FloatVec3{random_.around(0.2F), random_.around(0.2F), 0};
        const State before(mesh);
        const CollapseResult result = c_.run(v, w, position);
        expectSound(mesh, degenerate_);
        if (result != CollapseResult::Done) {
            EXPECT_TRUE(State(mesh) == before);
            EXPECT_FALSE(c_.record.flags.collapsed);
            return;
        }
        EXPECT_FALSE(c_.active(v));
        if (c_.pm.ProtectTopology) {
            EXPECT_EQ(mesh.numActiveVertices, before.vertexCount - 1);
        }
        EXPECT_EQ(mesh.numActiveTriangles,
                  before.triangleCount - c_.record.split.removedTriangles.size());
        if (random_.onceIn(2)) {
            c_.undo(v, w);
            EXPECT_TRUE(State(mesh) == before);
            expectSound(mesh, degenerate_);
        } else {
            c_.pm.costQueue.Remove(v);
        }
    }

    test::Random random_;
    Collapse c_;
    test::Degenerate degenerate_;
};

void collapseAtRandom(const DMesh& mesh, test::Degenerate degenerate = test::Degenerate::Refused) {
    for (std::uint32_t seed = 1; seed <= 24; ++seed) {
        RandomCollapses(mesh, seed, degenerate).run(300);
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
    }
}

TEST(CollapseEdge, KeepsEverythingConsistentAtRandom) {
    collapseAtRandom(test::sphere(2));
    collapseAtRandom(test::torus(8, 6));
    collapseAtRandom(test::grid(6, 5, test::hills));
    collapseAtRandom(test::grid(9, 1));
}

TEST(CollapseEdge, HandlesTheSmallestMeshes) {
    collapseAtRandom(DMesh());
    collapseAtRandom(test::oneTriangle());
    collapseAtRandom(test::twoTriangles());
    collapseAtRandom(test::tetrahedron());
    collapseAtRandom(test::buildMesh({{0, 0, 0}}, {}));
}

TEST(CollapseEdge, HandlesDirtyMeshes) {
    // Repeated and reversed triangles, non-manifold edges, vertices named twice or three times in a
    // triangle, isolated vertices.
    DMesh mesh = test::grid(4, 4, test::hills);
    for (std::size_t i = 0; i < 15; ++i)
        mesh.triangles.push_back(mesh.triangles[i]);
    mesh.triangles.insert(mesh.triangles.end(), {7, 6, 12, 12, 6, 18, 6, 7, 24, 6, 7, 0});
    mesh.triangles.insert(mesh.triangles.end(), {8, 8, 9, 9, 8, 9, 13, 13, 13, 13, 8, 13});
    mesh.vertices.resize(30);
    test::completeMesh(mesh);
    collapseAtRandom(mesh, test::Degenerate::Allowed);

    test::Random random(99);
    for (int round = 0; round < 20; ++round) {
        test::Points points;
        for (int i = 0; i < 12; ++i)
            points.push_back({random.around(1), random.around(1), random.around(1)});
        test::Faces faces;
        for (int i = 0; i < 25; ++i)
            faces.push_back({random.below(12), random.below(12), random.below(12)});
        collapseAtRandom(test::buildMesh(points, faces), test::Degenerate::Allowed);
    }
}

TEST(CollapseEdge, HandlesCoordinatesThatAreNotFinite) {
    DMesh mesh = test::torus(6, 5);
    test::Random random(4);
    for (VertexRecord& vertex : mesh.vertices) {
        if (random.onceIn(3)) vertex.y = random.onceIn(2) ? kNaN : kInfinity;
    }
    collapseAtRandom(mesh);
}

// Flat, around vertex 0 in the middle; every other rim vertex is at half the radius.
DMesh star(std::uint32_t spokes) {
    test::Points points{{0, 0, 0}};
    test::Faces faces;
    for (std::uint32_t i = 0; i < spokes; ++i) {
        const double angle = 2 * std::numbers::pi * i / spokes;
        const double radius = i % 2 == 0 ? 1.0 : 0.5;
        points.push_back({static_cast<float>(radius * std::cos(angle)),
                          static_cast<float>(radius * std::sin(angle)), 0});
        faces.push_back({0, i + 1, (i + 1) % spokes + 1});
    }
    return test::buildMesh(points, faces);
}

TEST(CollapseEdge, RefusalsOntoAHubTestFewOfItsTriangles) {
    constexpr std::int32_t kSpokes = 1000;
    Collapse c(star(kSpokes));
    const State before(c.pm.mesh);
    for (std::int32_t v = 1; v <= kSpokes; v += 2) {
        // The hub would move out to a point of the star, past the notches next to it.
        const FloatVec3 tip = c.pm.mesh.vertices[static_cast<std::size_t>(v)].position();
        ASSERT_EQ(c.run(v, 0, tip), CollapseResult::Refused) << v;
    }
    EXPECT_TRUE(State(c.pm.mesh) == before);
    EXPECT_LE(c.scratch.trianglesTested, 20U * kSpokes / 2);
}

TEST(CollapseEdge, AnEarlierFlipIsTestedAgainWhereItIsNow) {
    // A triangle that made one collapse fail does not make a collapse fail at another vertex, or
    // after the triangle has disappeared.
    Collapse c(star(12));
    const auto positionOf = [&](std::size_t v) { return c.pm.mesh.vertices[v].position(); };
    ASSERT_EQ(c.run(1, 0, positionOf(1)), CollapseResult::Refused);
    EXPECT_FALSE(c.scratch.turnedOver.triangles().empty());
    EXPECT_EQ(c.run(2, 1, positionOf(1)), CollapseResult::Done);
    EXPECT_EQ(c.run(3, 0, positionOf(0)), CollapseResult::Done);
    expectSound(c.pm.mesh);
}

}  // namespace
}  // namespace korvalite::core
