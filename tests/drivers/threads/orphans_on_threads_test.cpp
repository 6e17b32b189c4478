// SPDX-License-Identifier: MIT
//
// Without ProtectTopology, a collapse may remove the last triangle of a third vertex. A thread that
// collapses must not touch the queue, so this vertex stays queued until it is picked itself, and is
// then dropped or refused.
#include "drivers/threads/thread_loop.h"

#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "support/decimation_run.h"
#include "support/mesh_validator.h"
#include "support/prepared_mesh.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

// 4 x 4 squares, and a triangle v u x that is detached, or attached by its u to vertex 0.
struct Hanging {
    ProgressiveMesh pm;
    ThreadContext context;
    SharedRun run;
    std::int32_t v = 0;
    std::int32_t u = 0;
    std::int32_t x = 0;

    explicit Hanging(bool atTheGrid) {
        DMesh mesh = test::grid(4, 4, test::hills);
        const auto add = [&](const FloatVec3& position) {
            mesh.vertices.emplace_back();
            mesh.vertices.back().setPosition(position);
            return mesh.vertexCount() - 1;
        };
        v = add({-1, -1, 0});
        x = add({-1, -2, 0});
        u = atTheGrid ? 0 : add({-2, -1, 0});
        for (const std::int32_t vertex : {v, u, x})
            mesh.triangles.push_back(static_cast<std::uint32_t>(vertex));
        test::completeMesh(mesh);
        test::prepareUnranked(pm, std::move(mesh));
        pm.ProtectTopology = false;
        test::threadsOf(pm).lockedVertices.Reset(pm.mesh.vertexCount());
        context.marks.prepare(pm.mesh);
    }
    void queue(std::int32_t vertex, float cost, std::int32_t partner) {
        pm.mesh.vertices[static_cast<std::size_t>(vertex)].cost = cost;
        pm.mesh.vertices[static_cast<std::size_t>(vertex)].partner = partner;
        pm.costQueue.Insert(vertex);
    }
    void collapseTo(std::uint32_t vertices) {
        pm.TargetNumItem = vertices;
        doDecimationLoop_LM_MT<PlainMetric>(pm, context, run);
    }
};

class OrphansOnThreads : public test::DecimationTest {};

TEST_F(OrphansOnThreads, StayActiveAndQueuedUntilTheyArePicked) {
    Hanging h(false);
    h.queue(h.v, 0, h.u);
    h.queue(h.x, 1, h.v);
    h.collapseTo(h.pm.mesh.numActiveVertices - 1);
    EXPECT_FALSE(h.pm.mesh.vertexActive.Test(h.v));
    EXPECT_TRUE(h.pm.mesh.vertexActive.Test(h.x));
    EXPECT_TRUE(h.pm.costQueue.isQueued(h.x));
    EXPECT_EQ(h.pm.mesh.numActiveVertices, 27U);
    EXPECT_TRUE(test::isSound(h.pm.mesh));
}

TEST_F(OrphansOnThreads, AreDroppedWhenPickedIfTheirPartnerIsGone) {
    Hanging h(false);
    h.queue(h.v, 0, h.u);
    h.queue(h.x, 1, h.v);
    h.collapseTo(0);
    EXPECT_FALSE(h.pm.costQueue.isQueued(h.x));
    EXPECT_TRUE(h.pm.mesh.vertexActive.Test(h.x));
    EXPECT_EQ(h.pm.mesh.numActiveVertices, 27U);
    EXPECT_TRUE(test::isSound(h.pm.mesh));
    EXPECT_EQ(test::threadsOf(h.pm).lockedVertices.CountSet(), 0);
}

TEST_F(OrphansOnThreads, AreRefusedAndPenalizedIfTheirPartnerIsStillThere) {
    for (const bool atTheGrid : {false, true}) {
        Hanging h(atTheGrid);
        h.queue(h.v, 0, h.u);
        h.queue(h.x, 0, h.u);
        const DMesh& mesh = h.pm.mesh;
        const std::uint32_t triangles = mesh.numActiveTriangles;
        h.collapseTo(mesh.numActiveVertices - 1);
        ASSERT_TRUE(h.pm.costQueue.isQueued(h.x));
        h.pm.costQueue.Clear();
        h.queue(h.x, 0, h.u);
        const std::uint32_t vertices = mesh.numActiveVertices;
        const FloatVec3 partner = mesh.vertices[static_cast<std::size_t>(h.u)].position();
        h.collapseTo(0);
        EXPECT_TRUE(mesh.vertexActive.Test(h.x));
        EXPECT_TRUE(h.pm.costQueue.isQueued(h.x));
        EXPECT_EQ(mesh.vertices[static_cast<std::size_t>(h.x)].cost, kPenalizedCost);
        EXPECT_EQ(mesh.vertices[static_cast<std::size_t>(h.u)].x, partner.x);
        EXPECT_EQ(mesh.vertices[static_cast<std::size_t>(h.u)].y, partner.y);
        EXPECT_EQ(mesh.vertices[static_cast<std::size_t>(h.u)].z, partner.z);
        EXPECT_EQ(mesh.numActiveVertices, vertices);
        EXPECT_EQ(mesh.numActiveTriangles, triangles - 1);
        EXPECT_TRUE(test::isSound(h.pm.mesh));
        EXPECT_TRUE(test::cornerListsAreSound(h.pm.mesh));
        EXPECT_EQ(test::threadsOf(h.pm).lockedVertices.CountSet(), 0);
    }
}

}  // namespace
}  // namespace korvalite::core
