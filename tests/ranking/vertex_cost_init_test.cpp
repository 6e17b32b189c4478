// SPDX-License-Identifier: MIT
#include "ranking/vertex_cost_init.h"

#include "drivers/preparation.h"
#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "support/allocation_limit.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/stop_request.h"

#include <gtest/gtest.h>

#include <bit>
#include <new>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

using test::AllocationLimit;
using test::MeshPtr;

// Large enough that its arrays are longer than anything else that the step allocates.
constexpr std::uint32_t kSide = 80;
constexpr std::size_t kVertices = (kSide + 1) * (kSide + 1);
// The longest allocation: between 40 and 80 bytes per vertex, only the float array fits; below 40,
// no array does.
constexpr std::size_t kOnlyFloats = 60 * kVertices;
constexpr std::size_t kNoArray = 39 * kVertices;

// Prepared up to the first costs: corner lists and borders.
MeshPtr ready(DMesh mesh) {
    MeshPtr pm = test::prepared(std::move(mesh));
    BuildVertexCorners(pm->mesh);
    ComputeBorderVertices(pm->mesh);
    pm->m_useVertexColors_internal = pm->mesh.hasColors();
    if (pm->mesh.hasColors()) computeColorScale(*pm);
    return pm;
}

DMesh hillyGrid() {
    DMesh mesh = test::grid(kSide, kSide, test::hills);
    test::jitter(mesh, 0.2F, 7);
    return mesh;
}

DMesh colorfulGrid() {
    DMesh mesh = hillyGrid();
    test::addColors(mesh, [](const FloatVec3& p) {
        return test::packColor(static_cast<std::uint32_t>(3 * p.x + 10) & 0xFFU, 40,
                               static_cast<std::uint32_t>(2 * p.y + 10) & 0xFFU);
    });
    return mesh;
}

using Ranking = std::vector<std::pair<std::uint32_t, std::int32_t>>;

Ranking rankingOf(const ProgressiveMesh& pm) {
    Ranking ranking;
    for (const VertexRecord& vertex : pm.mesh.vertices) {
        ranking.emplace_back(std::bit_cast<std::uint32_t>(vertex.cost), vertex.partner);
    }
    return ranking;
}

template <typename Metric>
Ranking chosenRanking(const DMesh& mesh) {
    const MeshPtr pm = ready(mesh);
    InitVerticesCost_LM<Metric>(*pm, *pm);
    EXPECT_TRUE(test::cornerListsAreSound(pm->mesh));
    return rankingOf(*pm);
}

template <typename Form>
Ranking rankingBy(const DMesh& mesh, Form form) {
    const MeshPtr pm = ready(mesh);
    form(*pm);
    return rankingOf(*pm);
}

Ranking byDoubles(const DMesh& mesh) {
    return rankingBy(
        mesh, [](ProgressiveMesh& pm) { EXPECT_TRUE(InitVerticesCostDoubleMat<PlainMetric>(pm)); });
}
Ranking byFloats(const DMesh& mesh) {
    return rankingBy(mesh, [](ProgressiveMesh& pm) { EXPECT_TRUE(InitVerticesCostFloatMat(pm)); });
}
Ranking byNoArray(const DMesh& mesh) {
    return rankingBy(mesh, [](ProgressiveMesh& pm) { InitVerticesCostNoMat<PlainMetric>(pm); });
}

std::size_t queuedCount(const ProgressiveMesh& pm) {
    std::size_t count = 0;
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v)
        count += pm.costQueue.isQueued(v) ? 1U : 0U;
    return count;
}

TEST(VertexCostInit, TheThreeFormsGiveDifferentResults) {
    const DMesh mesh = hillyGrid();
    EXPECT_NE(byDoubles(mesh), byFloats(mesh));
    EXPECT_NE(byDoubles(mesh), byNoArray(mesh));
    EXPECT_NE(byFloats(mesh), byNoArray(mesh));
}

TEST(VertexCostInit, UsesTheDoubleFormWithEnoughMemory) {
    const DMesh mesh = hillyGrid();
    EXPECT_EQ(chosenRanking<PlainMetric>(mesh), byDoubles(mesh));
}

TEST(VertexCostInit, UsesTheFloatFormWithoutRoomForDoubles) {
    const DMesh mesh = hillyGrid();
    const MeshPtr pm = ready(mesh);
    {
        const AllocationLimit limit(kOnlyFloats);
        InitVerticesCost_LM<PlainMetric>(*pm, *pm);
    }
    EXPECT_EQ(rankingOf(*pm), byFloats(mesh));
    EXPECT_TRUE(test::cornerListsAreSound(pm->mesh));
}

TEST(VertexCostInit, UsesTheArraylessFormWithoutRoomForAnyArray) {
    const DMesh mesh = hillyGrid();
    const MeshPtr pm = ready(mesh);
    {
        const AllocationLimit limit(kNoArray);
        InitVerticesCost_LM<PlainMetric>(*pm, *pm);
    }
    EXPECT_EQ(rankingOf(*pm), byNoArray(mesh));
    EXPECT_TRUE(test::cornerListsAreSound(pm->mesh));
}

TEST(VertexCostInit, ColorsFallBackFromDoublesToTheArraylessForm) {
    const DMesh mesh = colorfulGrid();
    const MeshPtr pm = ready(mesh);
    {
        const AllocationLimit limit(kOnlyFloats);
        InitVerticesCost_LM<ColorMetric>(*pm, *pm);
    }
    EXPECT_EQ(rankingOf(*pm), rankingBy(mesh, [](ProgressiveMesh& other) {
                  InitVerticesCostNoMat<ColorMetric>(other);
              }));
    EXPECT_NE(rankingOf(*pm), chosenRanking<ColorMetric>(mesh));
}

TEST(VertexCostInit, SettingsExcludeForms) {
    const DMesh mesh = hillyGrid();
    const MeshPtr noDoubles = ready(mesh);
    noDoubles->tryStoreDoubleMat = false;
    InitVerticesCost_LM<PlainMetric>(*noDoubles, *noDoubles);
    EXPECT_EQ(rankingOf(*noDoubles), byFloats(mesh));
    const MeshPtr neither = ready(mesh);
    neither->tryStoreDoubleMat = false;
    neither->tryStoreFloatMat = false;
    InitVerticesCost_LM<PlainMetric>(*neither, *neither);
    EXPECT_EQ(rankingOf(*neither), byNoArray(mesh));
}

TEST(VertexCostInit, AFormWithoutMemoryLeavesVerticesAndQueueUntouched) {
    const MeshPtr pm = ready(hillyGrid());
    for (VertexRecord& vertex : pm->mesh.vertices) {
        vertex.cost = 0.25F;
        vertex.partner = 3;
    }
    const Ranking before = rankingOf(*pm);
    {
        const AllocationLimit limit(kNoArray);
        EXPECT_FALSE(InitVerticesCostDoubleMat<PlainMetric>(*pm));
        EXPECT_FALSE(InitVerticesCostFloatMat(*pm));
    }
    EXPECT_EQ(rankingOf(*pm), before);
    EXPECT_EQ(pm->costQueue.vertexCount(), 0);
}

TEST(VertexCostInit, ThrowsWhenMemoryForMoreThanTheArrayIsLacking) {
    const MeshPtr pm = ready(hillyGrid());
    const AllocationLimit limit(100);
    EXPECT_THROW(InitVerticesCost_LM<PlainMetric>(*pm, *pm), std::bad_alloc);
}

TEST(VertexCostInit, QueuesNoVertexWithoutTriangles) {
    const MeshPtr pm = ready(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}));
    InitVerticesCost_LM<PlainMetric>(*pm, *pm);
    for (const VertexRecord& vertex : pm->mesh.vertices) {
        EXPECT_EQ(vertex.cost, kNotCollapsible);
        EXPECT_EQ(vertex.partner, kNone);
    }
    EXPECT_EQ(pm->costQueue.vertexCount(), 3);
    EXPECT_EQ(queuedCount(*pm), 0U);
    EXPECT_EQ(pm->costQueue.Top(), kNone);
}

TEST(VertexCostInit, AStopInTheCornerLoopStillQueuesEarlierVertices) {
    const MeshPtr pm = ready(test::torus(12, 8));
    const test::StopRequest stop;
    InitVerticesCost_LM<PlainMetric>(*pm, *pm);
    // Only the edge of the first corner was evaluated.
    const auto a = static_cast<std::int32_t>(pm->mesh.triangles[0]);
    const auto b = static_cast<std::int32_t>(pm->mesh.triangles[1]);
    EXPECT_EQ(queuedCount(*pm), 2U);
    EXPECT_TRUE(pm->costQueue.isQueued(a));
    EXPECT_TRUE(pm->costQueue.isQueued(b));
    EXPECT_EQ(pm->costQueue.vertexCount(), pm->mesh.vertexCount());
    EXPECT_EQ(pm->mesh.vertices.back().cost, kNotCollapsible);
}

TEST(VertexCostInit, AStopEndsTheArraylessFormAfterOneVertex) {
    const MeshPtr pm = ready(test::torus(12, 8));
    for (VertexRecord& vertex : pm->mesh.vertices)
        vertex.cost = kNotCollapsible;
    const test::StopRequest stop;
    InitVerticesCostNoMat<PlainMetric>(*pm);
    EXPECT_TRUE(pm->costQueue.isQueued(0));
    for (std::int32_t v = 1; v < pm->mesh.vertexCount(); ++v) {
        EXPECT_EQ(pm->costQueue.isQueued(v), AreVerticesAdjacent(pm->mesh, 0, v)) << v;
    }
}

TEST(VertexCostInit, ArraylessFormSkipsVerticesWithOnlyLowerNeighbours) {
    const MeshPtr pm = ready(test::octahedron());
    InitVerticesCostNoMat<PlainMetric>(*pm);
    // Vertices 4 and 5 are opposite each other, so both have only the neighbours 0 to 3.
    EXPECT_EQ(pm->mesh.vertices[5].cost, kNotCollapsible);
    EXPECT_EQ(pm->mesh.vertices[5].partner, kNone);
    EXPECT_FALSE(pm->costQueue.isQueued(5));
    EXPECT_FALSE(pm->costQueue.isQueued(4));
    for (std::int32_t v = 0; v < 4; ++v) {
        EXPECT_TRUE(pm->costQueue.isQueued(v)) << v;
        EXPECT_GT(pm->mesh.vertices[static_cast<std::size_t>(v)].partner, v);
    }
}

// A vertex takes its cost in its own turn, which adds up the quadrics of the higher ring vertices
// one by one. On flat ground all edges cost the same.
TEST(VertexCostInit, ArraylessFormAccumulatesTheRingAndTakesTheFirstBest) {
    for (const DMesh& mesh : {test::grid(6, 6, test::hills), test::grid(6, 6)}) {
        const MeshPtr pm = ready(mesh);
        Ranking expected;
        IndexList ring;
        for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
            float best = kNotCollapsible;
            std::int32_t partner = kNone;
            Quadric3D own;
            Quadric3D neighbours;
            ComputeVertexQuadricFromTriangles(pm->mesh, *pm, own, v);
            GetVertexNeighbours(pm->mesh, v, ring);
            for (const std::int32_t x : ring) {
                if (x < v) continue;
                ComputeVertexQuadricFromTriangles(pm->mesh, *pm, neighbours, x);
                EdgeEvaluation edge;
                EvaluateEdgeCost(pm->mesh, *pm, edge, v, x, own + neighbours);
                if (edge.cost >= best) continue;
                best = edge.cost;
                partner = x;
            }
            expected.emplace_back(std::bit_cast<std::uint32_t>(best), partner);
        }
        EXPECT_EQ(byNoArray(mesh), expected);
    }
}

TEST(VertexCostInit, OnlyTheArrayFormsMakeABorderCostlier) {
    const DMesh mesh = test::grid(6, 6, test::hills);
    const MeshPtr array = ready(mesh);
    InitVerticesCost_LM<PlainMetric>(*array, *array);
    const MeshPtr noArray = ready(mesh);
    InitVerticesCostNoMat<PlainMetric>(*noArray);
    // A corner of the grid, whose neighbours are all on the border too.
    EXPECT_GT(array->mesh.vertices[0].cost, 2 * noArray->mesh.vertices[0].cost);
    EXPECT_GT(noArray->mesh.vertices[0].cost, 0);
}

TEST(VertexCostInit, AFrozenBorderIsNotQueued) {
    const MeshPtr pm = ready(test::grid(6, 6, test::hills));
    pm->BorderMode = BORDERMODE_FREEZE;
    InitVerticesCost_LM<PlainMetric>(*pm, *pm);
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        if (!pm->mesh.borderVertices.Test(v)) continue;
        EXPECT_FALSE(pm->costQueue.isQueued(v)) << v;
        EXPECT_EQ(pm->mesh.vertices[static_cast<std::size_t>(v)].cost, kNotCollapsible);
    }
    EXPECT_GT(queuedCount(*pm), 0U);
}

TEST(VertexCostInit, NeverMakesAVertexItsOwnPartner) {
    DMesh mesh = test::octahedron();
    mesh.triangles.insert(mesh.triangles.end(), {0, 0, 2, 3, 3, 3});
    test::completeMesh(mesh);
    for (const Ranking& ranking : {byDoubles(mesh), byFloats(mesh), byNoArray(mesh)}) {
        for (std::size_t v = 0; v < ranking.size(); ++v)
            EXPECT_NE(ranking[v].second, static_cast<std::int32_t>(v));
    }
}

TEST(VertexCostInit, EveryFormLeavesOutEdgesHeldByASeam) {
    // Vertex 0 and its three neighbours are all on a seam, and 0 is a corner of the seam.
    DMesh mesh = test::tetrahedron();
    mesh.uvSeamVertices.Resize(4, true);
    mesh.uvSeamCorners.Resize(4, false);
    mesh.uvSeamCorners.Set(0);
    const auto ranked = [&](auto init) {
        const MeshPtr pm = ready(mesh);
        pm->m_handleUVs_internal = true;
        init(*pm);
        EXPECT_FALSE(pm->costQueue.isQueued(0));
        EXPECT_EQ(pm->mesh.vertices[0].partner, kNone);
        for (std::int32_t v = 1; v < 4; ++v)
            EXPECT_NE(pm->mesh.vertices[static_cast<std::size_t>(v)].partner, 0) << v;
        EXPECT_TRUE(pm->costQueue.isQueued(1));
    };
    ranked([](ProgressiveMesh& pm) { InitVerticesCostDoubleMat<PlainMetric>(pm); });
    ranked([](ProgressiveMesh& pm) { InitVerticesCostFloatMat(pm); });
    ranked([](ProgressiveMesh& pm) { InitVerticesCostNoMat<PlainMetric>(pm); });
}

// A ball with its pairs and slaves, prepared up to the first costs.
MeshPtr symmetricBall() {
    MeshPtr pm = ready(test::sphere(3));
    test::askForSymmetry(*pm, 0);
    prepareSymmetry(*pm, {});
    return pm;
}

TEST(VertexCostInit, TheArrayFormsLeaveSlavesUnranked) {
    const MeshPtr pm = symmetricBall();
    ASSERT_TRUE(pm->m_handleSymmetry_internal);
    ASSERT_GT(pm->symmetrySlaves.CountSet(), 0);
    InitVerticesCost_LM<PlainMetric>(*pm, *pm);
    std::size_t masters = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        EXPECT_NE(pm->costQueue.isQueued(v), pm->symmetrySlaves.Test(v)) << v;
        masters += pm->costQueue.isQueued(v) ? 1U : 0U;
    }
    EXPECT_GT(masters, 0U);
}

TEST(VertexCostInit, TheArraylessFormRanksSlavesToo) {
    const MeshPtr pm = symmetricBall();
    InitVerticesCostNoMat<PlainMetric>(*pm);
    std::size_t queuedSlaves = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        queuedSlaves += pm->symmetrySlaves.Test(v) && pm->costQueue.isQueued(v) ? 1U : 0U;
    }
    EXPECT_GT(queuedSlaves, 0U);
}

}  // namespace
}  // namespace korvalite::core
