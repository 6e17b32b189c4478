// SPDX-License-Identifier: MIT
#include "ranking/melax_costs.h"

#include "support/prepared_mesh.h"

#include <gtest/gtest.h>

#include <cmath>

namespace korvalite::core {
namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

// A row of squares of side 1, folded down along the edge from vertex 2 to vertex 3:
//
//   1 --- 3 --- 5        0, 1 at x = 0;  2, 3 at x = 1;  4, 5 past the fold
//   |  /  |  /  |
//   0 --- 2 --- 4
DMesh folded(float endX, float endZ) {
    return test::buildMesh(
        {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}, {endX, 0, endZ}, {endX, 1, endZ}},
        {{0, 2, 3}, {0, 3, 1}, {2, 4, 5}, {2, 5, 3}});
}

struct Prepared {
    ProgressiveMesh pm;
    MelaxState state;

    explicit Prepared(DMesh mesh) {
        test::prepare(pm, std::move(mesh));
        state.triangleNormals = computeTriangleNormals(pm.mesh);
    }
    float cost(std::int32_t u, std::int32_t x) {
        return EdgeCollapseCostMelax(pm.mesh, state.triangleNormals, u, x, state.sides);
    }
};

TEST(TriangleNormals, AreUnitVectorsPerpendicularToTheirTriangle) {
    Prepared flat(folded(2, 0));
    for (const FloatVec3& normal : flat.state.triangleNormals) {
        EXPECT_EQ(normal.x, 0);
        EXPECT_EQ(normal.y, 0);
        EXPECT_EQ(normal.z, 1);
    }
    Prepared steep(folded(1, -3));
    EXPECT_EQ(steep.state.triangleNormals[2].x, 1);
}

TEST(TriangleNormals, WithoutAreaAreZero) {
    Prepared m(test::buildMesh({{1, 2, 3}, {2, 3, 4}, {3, 4, 5}}, {{0, 1, 2}}));
    EXPECT_EQ(m.state.triangleNormals[0].x, 0);
    EXPECT_EQ(m.state.triangleNormals[0].y, 0);
    EXPECT_EQ(m.state.triangleNormals[0].z, 0);
}

TEST(TriangleNormals, AreDividedInDoublePrecision) {
    Prepared m(test::buildMesh({{0, 0, 0}, {3, 0, 1}, {0, 7, 2}}, {{0, 1, 2}}));
    const FloatVec3 n{-7, -6, 21};  // (3, 0, 1) x (0, 7, 2)
    const double length = std::sqrt(526.0F);
    EXPECT_EQ(m.state.triangleNormals[0].x, static_cast<float>(n.x / length));
    EXPECT_EQ(m.state.triangleNormals[0].y, static_cast<float>(n.y / length));
    EXPECT_EQ(m.state.triangleNormals[0].z, static_cast<float>(n.z / length));
}

TEST(MelaxCost, IsZeroOnAFlatPatchEvenAtBorders) {
    Prepared flat(folded(2, 0));
    for (std::int32_t u = 0; u < 6; ++u) {
        IndexList ring;
        GetVertexNeighbours(flat.pm.mesh, u, ring);
        for (const std::int32_t x : ring)
            EXPECT_EQ(flat.cost(u, x), 0) << u << ' ' << x;
    }
}

TEST(MelaxCost, IsLengthTimesCurvatureWithoutAFactor) {
    // A right angle: leaving the fold from 2 towards 4 turns the flat triangle by 1.
    Prepared right(folded(1, -3));
    EXPECT_EQ(right.cost(2, 4), 3.0F);
    // Along the fold, both sides contain the edge, and nothing turns.
    EXPECT_EQ(right.cost(3, 2), 0.0F);
}

TEST(MelaxCost, GrowsToTwiceTheLengthForOppositeNormals) {
    Prepared shut(folded(0, 0));
    EXPECT_EQ(shut.cost(2, 4), 2.0F);
    EXPECT_EQ(shut.state.triangleNormals[2].z, -1);
}

TEST(MelaxCost, SumsATurnInTheOrderYXZ) {
    Prepared m(folded(2, 0));
    m.state.triangleNormals.assign(4, {4096, 1, -4096});
    m.state.triangleNormals[0] = {4096, 1, 4096};
    // 1 + 2^24 is 2^24 in floats, so that y is lost beside x.
    EXPECT_EQ(m.cost(2, 4), 1);
}

TEST(MelaxCost, OfAnEdgeSeesItsOwnSidesAlone) {
    Prepared both(folded(1, -3));
    both.cost(2, 4);
    Prepared alone(folded(1, -3));
    EXPECT_EQ(both.cost(2, 0), alone.cost(2, 0));
    EXPECT_GT(alone.cost(2, 0), 0);
}

TEST(MelaxCost, ADegenerateTriangleMakesNoVertexItsOwnPartner) {
    Prepared m(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 1}}, {{0, 1, 2}, {0, 0, 1}}));
    ComputeVertexCostMelax(m.pm, 0, m.state);
    EXPECT_NE(m.pm.mesh.vertices[0].partner, kNone);
    EXPECT_NE(m.pm.mesh.vertices[0].partner, 0);
}

TEST(MelaxCost, IsDirected) {
    Prepared right(folded(1, -3));
    EXPECT_EQ(right.cost(2, 4), 3.0F);
    EXPECT_EQ(right.cost(4, 2), 0.0F);  // vertex 4 has no triangle before the fold
}

TEST(MelaxCost, IsInfiniteForAVertexThatSharesNoTriangle) {
    Prepared m(folded(2, 0));
    EXPECT_EQ(m.cost(0, 5), INFINITY);  // the largest float, times sqrt(5)
}

TEST(MelaxCost, TheFirstBestNeighbourWins) {
    Prepared flat(folded(2, 0));
    for (std::int32_t v = 0; v < 6; ++v) {
        IndexList ring;
        GetVertexNeighbours(flat.pm.mesh, v, ring);
        ComputeVertexCostMelax(flat.pm, v, flat.state);
        EXPECT_EQ(flat.pm.mesh.vertices[at(v)].partner, ring.front());
        EXPECT_EQ(flat.pm.mesh.vertices[at(v)].cost, 0);
    }
}

TEST(MelaxCost, IsNotCollapsibleForAnIsolatedVertex) {
    Prepared m(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}, {{0, 1, 2}}));
    ComputeVertexCostMelax(m.pm, 3, m.state);
    EXPECT_EQ(m.pm.mesh.vertices[3].cost, kNotCollapsible);
    EXPECT_EQ(m.pm.mesh.vertices[3].partner, kNone);
}

TEST(InitVerticesCostMelax, QueuesAllCollapsibleVertices) {
    Prepared m(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}, {{0, 1, 2}}));
    InitVerticesCostMelax(m.pm, m.state);
    for (std::int32_t v = 0; v < 3; ++v)
        EXPECT_TRUE(m.pm.costQueue.isQueued(v));
    EXPECT_FALSE(m.pm.costQueue.isQueued(3));
    EXPECT_EQ(m.pm.costQueue.Top(), 0);  // the lowest index comes first among equals
}

TEST(UpdateRingMelax, RanksTheRingByCurrentNormals) {
    Prepared m(test::grid(4, 4));
    InitVerticesCostMelax(m.pm, m.state);
    m.pm.mesh.vertices[12].z = 2;
    IndexList ring;
    IndexList corners;
    GetVertexCornersAndNeighbours(m.pm.mesh, 12, ring, corners);
    UpdateRingMelax(m.pm, 12, corners, ring, m.state);
    EXPECT_GT(m.pm.mesh.vertices[12].cost, 0);
    EXPECT_LT(m.state.triangleNormals[at(corners[0] / 3)].z, 1);
    for (const std::int32_t v : ring)
        EXPECT_TRUE(m.pm.costQueue.isQueued(v));
    EXPECT_EQ(m.pm.mesh.vertices[0].cost, 0);
}

TEST(UpdateRingMelax, WithoutListsRanksOnlyTheKeptVertexByOldNormals) {
    Prepared m(test::grid(4, 4));
    InitVerticesCostMelax(m.pm, m.state);
    m.pm.mesh.vertices[12].z = 2;
    UpdateRingMelax(m.pm, 12, {}, {}, m.state);
    EXPECT_EQ(m.pm.mesh.vertices[12].cost, 0);  // the patch still counts as flat
    for (const FloatVec3& normal : m.state.triangleNormals)
        EXPECT_EQ(normal.z, 1);
}

}  // namespace
}  // namespace korvalite::core
