// SPDX-License-Identifier: MIT
#include "ranking/high_speed_costs.h"

#include "metric/edge_cost.h"
#include "metric/mesh_quadrics.h"
#include "ranking/initial_edges.h"
#include "support/prepared_mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

DMesh hillyGrid() {
    DMesh mesh = test::grid(6, 6, test::hills);
    test::jitter(mesh, 0.2F, 3);
    return mesh;
}

// The driver keeps its state beside the mesh.
struct RankedMesh : ProgressiveMesh, HighSpeedState {};

void init(RankedMesh& pm, DMesh mesh) {
    test::prepare(pm, std::move(mesh));
    InitVerticesCost(pm, pm);
}

const auto& terms(const Quadric3D& quadric) {
    return quadric.q;
}

Quadric3D factored(Quadric3D quadric, float factor) {
    quadric *= factor;
    return quadric;
}

TEST(InitVerticesCost, StoresTriangleQuadricsAndTheirSumsAtVertices) {
    RankedMesh pm;
    init(pm, test::sphere(1));
    std::vector<Quadric3D> sums(pm.mesh.vertices.size());
    for (std::int32_t c = 0; c < pm.mesh.cornerCount(); ++c) {
        const Quadric3D quadric = ComputeTriangleQuadric(pm.mesh, pm, c / 3);
        EXPECT_EQ(terms(pm.triangleQuadrics[at(c / 3)]), terms(quadric));
        sums[at(vertexAt(pm.mesh, c))] += quadric;
    }
    for (std::size_t v = 0; v < sums.size(); ++v)
        EXPECT_EQ(terms(pm.vertexQuadrics[v]), terms(sums[v])) << v;
}

TEST(InitVerticesCost, BordersCountAHundredfoldAndFrozenBordersFiftyfold) {
    for (const auto& [mode, factor] : {std::pair{BORDER_MODE_NONE, 1.0F},
                                       {BORDERMODE_PROTECT, 100.0F},
                                       {BORDERMODE_FREEZE, 50.0F}}) {
        RankedMesh plain;
        plain.BorderMode = BORDER_MODE_NONE;
        init(plain, hillyGrid());
        RankedMesh pm;
        pm.BorderMode = mode;
        init(pm, hillyGrid());
        EXPECT_EQ(terms(pm.vertexQuadrics[0]), terms(factored(plain.vertexQuadrics[0], factor)));
        EXPECT_EQ(terms(pm.vertexQuadrics[8]), terms(plain.vertexQuadrics[8]));  // inside
    }
}

TEST(InitVerticesCost, BothEndsOfAnEdgeSeeTheSameCost) {
    RankedMesh pm;
    init(pm, hillyGrid());
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        float best = kNotCollapsible;
        IndexList ring;
        GetVertexNeighbours(pm.mesh, v, ring);
        for (const std::int32_t x : ring) {
            EdgeEvaluation edge;
            // An inner edge is evaluated from its lower end, so both ends see the same cost.
            EvaluateEdgeCost(pm.mesh, pm, edge, std::min(v, x), std::max(v, x),
                             pm.vertexQuadrics[at(std::min(v, x))] +
                                 pm.vertexQuadrics[at(std::max(v, x))]);
            best = std::min(best, edge.cost);
        }
        if (pm.mesh.borderVertices.Test(v)) continue;
        EXPECT_EQ(pm.mesh.vertices[at(v)].cost, best) << v;
    }
}

TEST(InitVerticesCost, KeepsThePositionThatBelongsToTheCost) {
    RankedMesh pm;
    init(pm, hillyGrid());
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        const std::int32_t u = pm.mesh.vertices[at(v)].partner;
        ASSERT_NE(u, kNone);
        EdgeEvaluation there;
        EdgeEvaluation back;
        EvaluateEdgeCost(pm.mesh, pm, there, v, u,
                         pm.vertexQuadrics[at(v)] + pm.vertexQuadrics[at(u)]);
        EvaluateEdgeCost(pm.mesh, pm, back, u, v,
                         pm.vertexQuadrics[at(u)] + pm.vertexQuadrics[at(v)]);
        const FloatVec3& place = pm.bestPositions[at(v)];
        const auto isAt = [&](const FloatVec3& p) {
            return p.x == place.x && p.y == place.y && p.z == place.z;
        };
        EXPECT_TRUE(isAt(there.position) || isAt(back.position)) << v;
    }
}

TEST(InitVerticesCost, SetsNoCostForASlave) {
    RankedMesh pm;
    test::prepare(pm, test::sphere(2));
    pm.m_handleSymmetry_internal = true;
    pm.mesh.symmetryCache.pairing.assign(pm.mesh.vertices.size(), kNone);
    pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
    pm.symmetrySlaves.Set(7);
    InitVerticesCost(pm, pm);
    EXPECT_EQ(pm.mesh.vertices[7].cost, kNotCollapsible);
    EXPECT_EQ(pm.mesh.vertices[7].partner, kNone);
    fillQueue(pm);
    EXPECT_FALSE(pm.costQueue.isQueued(7));
    EXPECT_TRUE(pm.costQueue.isQueued(8));
}

class UpdateAround : public testing::Test {
protected:
    static constexpr std::int32_t kKept = 24;  // in the middle of the grid

    UpdateAround() {
        init(pm, hillyGrid());
        fillQueue(pm);
        GetVertexNeighbours(pm.mesh, kKept, ring);
    }
    void update() { UpdateNeighbourCosts(pm, pm, kKept); }

    RankedMesh pm;
    IndexList ring;
};

TEST_F(UpdateAround, QuadricsGrowByTheTrianglesAroundThem) {
    const std::vector<Quadric3D> before = pm.vertexQuadrics;
    update();
    for (const std::int32_t u : ring) {
        Quadric3D expected = before[at(u)];
        forEachCorner(pm.mesh, u, [&](std::int32_t c) {
            expected += ComputeTriangleQuadric(pm.mesh, pm, c / 3);
        });
        if (pm.mesh.borderVertices.Test(u)) continue;
        EXPECT_EQ(terms(pm.vertexQuadrics[at(u)]), terms(expected)) << u;
    }
    EXPECT_GT(pm.vertexQuadrics[kKept].q[0], before[kKept].q[0]);
    EXPECT_EQ(terms(pm.vertexQuadrics[0]), terms(before[0]));  // far away
}

TEST_F(UpdateAround, TheBorderFactorScalesTheWholeSum) {
    pm.mesh.borderVertices.Set(ring[0]);
    Quadric3D expected = pm.vertexQuadrics[at(ring[0])];
    forEachCorner(pm.mesh, ring[0],
                  [&](std::int32_t c) { expected += ComputeTriangleQuadric(pm.mesh, pm, c / 3); });
    update();
    EXPECT_EQ(terms(pm.vertexQuadrics[at(ring[0])]), terms(factored(expected, 100.0F)));
}

TEST_F(UpdateAround, TriangleQuadricsOfTheKeptVertexAreRecomputed) {
    pm.mesh.vertices[kKept].z += 0.5F;
    update();
    forEachCorner(pm.mesh, kKept, [&](std::int32_t c) {
        EXPECT_EQ(terms(pm.triangleQuadrics[at(c / 3)]),
                  terms(ComputeTriangleQuadric(pm.mesh, pm, c / 3)));
    });
}

TEST_F(UpdateAround, RingVerticesChooseTheirBestNeighbour) {
    pm.mesh.vertices[kKept].z += 0.5F;
    update();
    for (const std::int32_t u : ring) {
        float best = kNotCollapsible;
        IndexList around;
        GetVertexNeighbours(pm.mesh, u, around);
        for (const std::int32_t x : around) {
            const bool xInRing = contains(ring, x);
            const std::int32_t a = xInRing && x < u ? x : u;
            const std::int32_t b = a == u ? x : u;
            EdgeEvaluation edge;
            EvaluateEdgeCost(pm.mesh, pm, edge, a, b,
                             pm.vertexQuadrics[at(a)] + pm.vertexQuadrics[at(b)]);
            best = std::min(best, edge.cost);
        }
        EXPECT_EQ(pm.mesh.vertices[at(u)].cost, best) << u;
        EXPECT_TRUE(pm.costQueue.isQueued(u)) << u;
    }
    EXPECT_TRUE(pm.costQueue.isQueued(kKept));
}

TEST_F(UpdateAround, VerticesBeyondTheRingKeepTheirCosts) {
    // Any edge is cheaper than this.
    for (VertexRecord& vertex : pm.mesh.vertices)
        vertex.cost = 1e9F;
    std::vector<VertexRecord> before(pm.mesh.vertices.begin(), pm.mesh.vertices.end());
    update();
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        if (v == kKept || contains(ring, v)) continue;
        EXPECT_EQ(pm.mesh.vertices[at(v)].cost, before[at(v)].cost) << v;
        EXPECT_EQ(pm.mesh.vertices[at(v)].partner, before[at(v)].partner) << v;
    }
}

TEST_F(UpdateAround, ASlaveIsNeitherRankedNorQueued) {
    pm.m_handleSymmetry_internal = true;
    pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
    pm.symmetrySlaves.Set(ring[1]);
    pm.symmetrySlaves.Set(kKept);
    update();
    for (const std::int32_t slave : {ring[1], kKept}) {
        EXPECT_EQ(pm.mesh.vertices[at(slave)].cost, kNotCollapsible);
        EXPECT_FALSE(pm.costQueue.isQueued(slave));
    }
    EXPECT_TRUE(pm.costQueue.isQueued(ring[0]));
}

// On flat ground all costs are zero, so the order of the edges decides.
TEST(UpdateOnFlatGround, TheFirstOfEqualEdgesWinsFromItsLowerEnd) {
    RankedMesh pm;
    init(pm, test::grid(6, 6));
    fillQueue(pm);
    constexpr std::int32_t kKept = 24;
    UpdateNeighbourCosts(pm, pm, kKept);

    IndexList ring;
    IndexList around;
    GetVertexNeighbours(pm.mesh, kKept, ring);
    std::vector<std::int32_t> partners(pm.mesh.vertices.size(), kNone);
    std::vector<FloatVec3> positions(pm.mesh.vertices.size());
    for (const std::int32_t u : ring) {
        GetVertexNeighbours(pm.mesh, u, around);
        for (const std::int32_t x : around) {
            if (contains(ring, x) && x < u) continue;
            EdgeEvaluation edge;
            EvaluateEdgeCost(pm.mesh, pm, edge, u, x,
                             pm.vertexQuadrics[at(u)] + pm.vertexQuadrics[at(x)]);
            ASSERT_EQ(edge.cost, 0.0F);
            for (const auto& [end, other] : {std::pair{u, x}, {x, u}}) {
                if (partners[at(end)] != kNone) continue;
                partners[at(end)] = other;
                positions[at(end)] = edge.position;
            }
        }
    }
    ring.push_back(kKept);
    for (const std::int32_t u : ring) {
        EXPECT_EQ(pm.mesh.vertices[at(u)].partner, partners[at(u)]) << u;
        EXPECT_EQ(pm.bestPositions[at(u)].x, positions[at(u)].x) << u;
        EXPECT_EQ(pm.bestPositions[at(u)].y, positions[at(u)].y) << u;
    }
}

}  // namespace
}  // namespace korvalite::core
