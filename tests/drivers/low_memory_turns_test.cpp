// SPDX-License-Identifier: MIT
//
// What the low-memory driver prepares for single turns of its loop, and what it does in them.
#include "drivers/low_memory_driver.h"
#include "host/progress_channel.h"

#include "drivers/preparation.h"
#include "mesh/corner_lists.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mirrored_grid.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvalite::core {
namespace {

using test::MeshPtr;

std::size_t index(std::int32_t v) {
    return static_cast<std::size_t>(v);
}

class LowMemoryTurns : public test::DecimationTest {};

TEST_F(LowMemoryTurns, PairsWithDifferentColoursActAlone) {
    DMesh ball = test::sphere(3);
    test::addColors(ball, [](const FloatVec3&) { return test::packColor(10, 20, 30); });
    ball.vertexColors[100] = test::packColor(12, 20, 30);
    MeshPtr pm = test::prepared(ball);
    test::askForSymmetry(*pm, 0);
    pm->m_useVertexColors_internal = true;
    doDecimationInit_LM<ColorMetric>(*pm);
    ASSERT_TRUE(pm->m_handleSymmetry_internal);
    EXPECT_EQ(pm->mesh.symmetryCache.pairing[100], kNone);
    EXPECT_NE(pm->mesh.symmetryCache.pairing[101], kNone);
    progressChannel().EndMainTask();
}

TEST_F(LowMemoryTurns, ThePlaneQuadricIsBuiltForTheFirstCosts) {
    MeshPtr pm = test::prepared(test::sphere(3));
    test::askForSymmetry(*pm, 0);
    ASSERT_EQ(pm->symmetryPlaneQuadric.asDouble.q[0], 0);
    doDecimationInit_LM<PlainMetric>(*pm);
    EXPECT_GT(pm->symmetryPlaneQuadric.asDouble.q[0], 100) << "the plane is x = 0";
    progressChannel().EndMainTask();
}

// The number of UVs at the corners of a vertex.
std::size_t uvCount(const DMesh& mesh, std::int32_t vertex) {
    IndexList uvs;
    for (std::int32_t corner = 0; corner < mesh.cornerCount(); ++corner) {
        if (!mesh.triangleActive.Test(corner / 3) || vertexAt(mesh, corner) != vertex) continue;
        if (!contains(uvs, uvIndexAt(mesh, corner))) uvs.push_back(uvIndexAt(mesh, corner));
    }
    return uvs.size();
}

TEST_F(LowMemoryTurns, EveryVertexOfAChartKeepsASingleUV) {
    DMesh ball = test::sphere(3);
    test::jitter(ball, 0.01F, 5);
    test::addCornerUVs(ball);
    for (const bool symmetric : {false, true}) {
        const MeshPtr pm =
            test::decimatedBy(MEMSPEED_TRADEOFF_LOW_MEM, ball, [&](ProgressiveMesh& settings) {
                settings.TargetNumItem = 60;
                if (symmetric) test::askForSymmetry(settings, 0);
            });
        ASSERT_TRUE(pm->m_handleUVs_internal);
        for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
            if (!pm->mesh.vertexActive.Test(v)) continue;
            EXPECT_EQ(uvCount(pm->mesh, v), 1U) << v;
        }
    }
}

// A mesh whose queue holds what the test puts into it, for the driver's own loop.
struct Turn : test::MirroredGrid {
    Turn() {
        pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
        for (VertexRecord& vertex : pm.mesh.vertices)
            forgetCost(vertex);
        pm.recordVSplits = true;
        openVSplitList(pm);
    }
    void queue(std::int32_t v, std::int32_t partner) {
        pm.mesh.vertices[index(v)].partner = partner;
        pm.mesh.vertices[index(v)].cost = 0;
        pm.costQueue.Insert(v);
    }
    void collapseOnce() {
        pm.TargetNumItem = pm.mesh.numActiveVertices - 1;
        doDecimationLoop_LM<PlainMetric>(pm);
    }
};

TEST_F(LowMemoryTurns, AFreedSlaveIsRankedAgainstItsRing) {
    Turn t;
    const std::int32_t v = t.at(2, 2);
    const std::int32_t u = t.at(2, 1);
    const std::int32_t slave = t.image(t.at(3, 3));
    t.pair(v, slave);
    t.pair(u, t.image(t.at(1, 1)));  // not a neighbour of the slave, so v acts alone
    t.pm.symmetrySlaves.Set(slave);
    t.queue(v, u);
    t.collapseOnce();
    ASSERT_FALSE(t.pm.mesh.vertexActive.Test(v));
    EXPECT_TRUE(t.pm.costQueue.isQueued(slave));
    const VertexRecord found = t.pm.mesh.vertices[index(slave)];
    IndexList ring;
    RecomputeVertexCost(t.pm, slave, ring);
    EXPECT_EQ(found.cost, t.pm.mesh.vertices[index(slave)].cost);
    EXPECT_EQ(found.partner, t.pm.mesh.vertices[index(slave)].partner);
}

TEST_F(LowMemoryTurns, IfTheKeptVertexVanishesTheThirdVertexIsRanked) {
    // A triangle attached to a corner of the grid by one vertex.
    ProgressiveMesh pm;
    DMesh mesh = test::grid(4, 4, test::hills);
    const std::int32_t v = mesh.vertexCount();
    const std::int32_t u = v + 1;
    for (const float y : {-1.0F, -2.0F}) {
        mesh.vertices.emplace_back();
        mesh.vertices.back().setPosition({-1, y, 0});
    }
    for (const std::int32_t vertex : {v, u, 0})
        mesh.triangles.push_back(static_cast<std::uint32_t>(vertex));
    test::completeMesh(mesh);
    test::prepareUnranked(pm, std::move(mesh));
    pm.ProtectTopology = false;
    pm.TargetNumItem = pm.mesh.numActiveVertices - 1;
    pm.mesh.vertices[index(v)].cost = 0;
    pm.mesh.vertices[index(v)].partner = u;
    pm.costQueue.Insert(v);
    doDecimationLoop_LM<PlainMetric>(pm);
    EXPECT_EQ(pm.mesh.numActiveVertices, 25U);
    EXPECT_TRUE(pm.costQueue.isQueued(0));
    EXPECT_LT(pm.mesh.vertices[0].cost, kNotCollapsible);
    EXPECT_FALSE(pm.costQueue.isQueued(1)) << "not a vertex of that triangle";
}

}  // namespace
}  // namespace korvalite::core
