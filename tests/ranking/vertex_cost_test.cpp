// SPDX-License-Identifier: MIT
#include "ranking/vertex_cost.h"

#include "metric/metric.h"
#include "support/prepared_mesh.h"
#include "support/slow_ranking.h"

#include <gtest/gtest.h>

#include <limits>

namespace korvalite::core {
namespace {

const VertexRecord& recompute(ProgressiveMesh& pm, std::int32_t vertex) {
    IndexList ring{77};
    RecomputeVertexCost(pm, vertex, ring);
    return pm.mesh.vertices[static_cast<std::size_t>(vertex)];
}

TEST(RecomputeVertexCost, RanksTheRingWithTheSumOfAllNeighboursSoFar) {
    DMesh mesh = test::grid(6, 6, test::hills);
    test::jitter(mesh, 0.2F, 1);
    ProgressiveMesh pm;
    test::prepare(pm, mesh);
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        const RankedVertex expected = test::rankSlowly<PlainMetric>(pm, v);
        const VertexRecord& record = recompute(pm, v);
        EXPECT_EQ(record.cost, expected.cost) << v;
        EXPECT_EQ(record.partner, expected.partner) << v;
    }
}

TEST(RecomputeVertexCost, TheSumMakesLaterNeighboursCostlier) {
    // With each neighbour's own quadric, nearly every vertex would have a different cost.
    DMesh mesh = test::sphere(2);
    test::jitter(mesh, 0.02F, 2);
    ProgressiveMesh pm;
    test::prepare(pm, mesh);
    int different = 0;
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        Quadric3D own;
        test::addTriangles<PlainMetric>(pm, own, v);
        IndexList ring;
        GetVertexNeighbours(pm.mesh, v, ring);
        float best = kNotCollapsible;
        for (const std::int32_t x : ring) {
            Quadric3D others;
            test::addTriangles<PlainMetric>(pm, others, x);
            EdgeEvaluation edge;
            EvaluateEdgeCost(pm.mesh, pm, edge, v, x, own + others);
            best = std::min(best, edge.cost);
        }
        const float cost = recompute(pm, v).cost;
        EXPECT_GE(cost, best);
        if (cost != best) ++different;
    }
    EXPECT_GT(different, pm.mesh.vertexCount() / 4);
}

TEST(RecomputeVertexCost, TheFirstOfEqualNeighboursWins) {
    ProgressiveMesh pm;
    test::prepare(pm, test::grid(3, 3));
    IndexList ring;
    GetVertexNeighbours(pm.mesh, 5, ring);
    for (const std::int32_t x : ring)
        pm.mesh.borderVertices.Clear(x);
    const VertexRecord& record = recompute(pm, 5);
    EXPECT_EQ(record.cost, 0.0F);
    EXPECT_EQ(record.partner, ring.front());
}

TEST(RecomputeVertexCost, AVertexWithoutTrianglesIsNotCollapsible) {
    ProgressiveMesh pm;
    test::prepare(pm, test::buildMesh({{0, 0, 0}}, {}));
    pm.mesh.vertices[0].cost = 3;
    pm.mesh.vertices[0].partner = 0;
    EXPECT_EQ(recompute(pm, 0).cost, kNotCollapsible);
    EXPECT_EQ(pm.mesh.vertices[0].partner, -1);
}

TEST(RecomputeVertexCost, AVertexIsNeverItsOwnPartner) {
    ProgressiveMesh pm;
    test::prepare(pm, test::buildMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(recompute(pm, 0).partner, 1);
    test::prepare(pm, test::buildMesh({{0, 0, 0}}, {{0, 0, 0}}));
    EXPECT_EQ(recompute(pm, 0).partner, -1);
    EXPECT_EQ(pm.mesh.vertices[0].cost, kNotCollapsible);
}

TEST(RecomputeVertexCost, NeighboursHeldByASeamAreSkipped) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    DMesh& mesh = pm.mesh;
    mesh.uvSeamVertices.Resize(4, false);
    mesh.uvSeamCorners.Resize(4, false);
    const auto seam = [&](std::int32_t v) { mesh.uvSeamVertices.Set(v); };
    pm.m_handleUVs_internal = true;
    EXPECT_FALSE(isHeldBySeam(pm, 0, 1));
    seam(0);
    mesh.uvSeamCorners.Set(0);
    EXPECT_FALSE(isHeldBySeam(pm, 0, 1));  // both must be on a seam
    seam(1);
    EXPECT_TRUE(isHeldBySeam(pm, 0, 1));
    EXPECT_TRUE(isHeldBySeam(pm, 1, 0));  // and one of them a corner
    seam(2);
    EXPECT_FALSE(isHeldBySeam(pm, 1, 2));
    EXPECT_EQ(recompute(pm, 0).partner, 3);
    seam(3);
    EXPECT_EQ(recompute(pm, 0).partner, -1);
    pm.m_handleUVs_internal = false;
    EXPECT_FALSE(isHeldBySeam(pm, 0, 1));
    EXPECT_NE(recompute(pm, 0).partner, -1);
}

TEST(RecomputeVertexCost, CoordinatesThatAreNotFiniteNeverGiveANaNCost) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        DMesh mesh = test::sphere(1);
        mesh.vertices[3].x = bad;
        mesh.vertices[9].z = bad;
        ProgressiveMesh pm;
        test::prepare(pm, mesh);
        for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
            const float cost = recompute(pm, v).cost;
            EXPECT_TRUE(cost >= 0.0F) << v;
        }
    }
}

TEST(RefreshRingCosts, RanksAndQueuesTheActiveVerticesAroundACollapse) {
    ProgressiveMesh pm;
    test::prepare(pm, test::grid(6, 6, test::hills));
    const std::int32_t gone = 24;
    const std::int32_t inactive = 17;
    VSplit split;
    split.vertex = gone;
    GetVertexCorners(pm.mesh, gone, split.corners);
    IndexList ring;
    GetVertexNeighbours(pm.mesh, gone, ring);
    ASSERT_TRUE(contains(ring, inactive));
    pm.mesh.vertexActive.Clear(inactive);
    for (VertexRecord& vertex : pm.mesh.vertices) {
        vertex.cost = 1e30F;
        vertex.partner = 77;
    }
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); v += 2)
        pm.costQueue.Insert(v);
    Alone alone(pm);
    RefreshRingCosts<PlainMetric>(pm, split, alone);
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        const VertexRecord found = pm.mesh.vertices[static_cast<std::size_t>(v)];
        const bool refreshed = contains(ring, v) && v != inactive;
        EXPECT_EQ(pm.costQueue.isQueued(v), refreshed || v % 2 == 0) << v;
        if (refreshed) {
            EXPECT_LT(found.cost, 1e30F) << v;
            EXPECT_EQ(found.cost, recompute(pm, v).cost) << v;
            EXPECT_EQ(found.partner, recompute(pm, v).partner) << v;
        } else {
            EXPECT_EQ(found.partner, 77) << v;
        }
    }
}

TEST(RefreshRingCosts, VerticesThatCannotCollapseAnyMoreLeaveTheQueue) {
    ProgressiveMesh pm;
    test::prepare(pm, test::oneTriangle());
    pm.BorderMode = BORDERMODE_FREEZE;
    pm.mesh.vertices[1].cost = 1;
    pm.costQueue.Insert(1);
    VSplit split;
    split.corners = {0};
    Alone alone(pm);
    RefreshRingCosts<PlainMetric>(pm, split, alone);
    EXPECT_FALSE(pm.costQueue.isQueued(1));
    EXPECT_EQ(pm.mesh.vertices[1].cost, kNotCollapsible);
}

}  // namespace
}  // namespace korvalite::core
