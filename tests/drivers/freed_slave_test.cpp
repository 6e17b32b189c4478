// SPDX-License-Identifier: MIT
//
// A slave whose master collapses alone: the high-speed driver ranks it and queues it at once, and a
// thread lists it for the queue.
#include "drivers/in_memory_drivers.h"
#include "drivers/low_memory_hooks.h"
#include "drivers/preparation.h"
#include "metric/mesh_quadrics.h"
#include "ranking/high_speed_costs.h"
#include "ranking/vertex_cost.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace korvalite::core {
namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

std::int32_t mirrorOf(const DMesh& mesh, std::int32_t v) {
    const FloatVec3 p = mesh.vertices[at(v)].position();
    std::int32_t image = 0;
    while (mesh.vertices[at(image)].x != -p.x || mesh.vertices[at(image)].y != p.y ||
           mesh.vertices[at(image)].z != p.z)
        ++image;
    return image;
}

// The corner of the first triangle that goes from a to b.
std::size_t cornerOf(const DMesh& mesh, std::int32_t a, std::int32_t b) {
    std::int32_t corner = 0;
    while (vertexAt(mesh, corner) != a || vertexAt(mesh, nextCorner(corner)) != b)
        ++corner;
    return at(corner);
}

// The two triangles of an edge share the other diagonal of their quad afterwards.
void flipEdge(DMesh& mesh, std::int32_t a, std::int32_t b) {
    const std::size_t ab = cornerOf(mesh, a, b);
    const std::size_t ba = cornerOf(mesh, b, a);
    const auto opposite = [&](std::size_t corner) {
        return mesh.triangles[at(previousCorner(static_cast<std::int32_t>(corner)))];
    };
    const std::uint32_t c = opposite(ab);
    const std::uint32_t d = opposite(ba);
    mesh.triangles[at(nextCorner(static_cast<std::int32_t>(ab)))] = d;
    mesh.triangles[at(nextCorner(static_cast<std::int32_t>(ba)))] = c;
}

// A ball with one short edge, from v to u on the side of the masters. In the mirror image that edge
// is flipped, so the collapse of v onto u has none.
struct BallWithAShortEdge {
    DMesh mesh = test::sphere(2);
    std::int32_t v;
    std::int32_t u;
    std::int32_t mv = 0;
    std::int32_t mu = 0;

    explicit BallWithAShortEdge(std::int32_t corner)
        : v(vertexAt(mesh, corner)), u(vertexAt(mesh, nextCorner(corner))) {
        mv = mirrorOf(mesh, v);
        mu = mirrorOf(mesh, u);
        shorten(v, u);
        shorten(mv, mu);
        flipEdge(mesh, mv, mu);
    }

private:
    void shorten(std::int32_t from, std::int32_t to) {
        const FloatVec3 p = mesh.vertices[at(from)].position();
        const FloatVec3 q = mesh.vertices[at(to)].position();
        mesh.vertices[at(to)].setPosition(
            {p.x + 0.01F * (q.x - p.x), p.y + 0.01F * (q.y - p.y), p.z + 0.01F * (q.z - p.z)});
    }
};

// The corners of the edges beside the plane, on the side of the masters.
IndexList edgesBesideThePlane() {
    const DMesh mesh = test::sphere(2);
    const auto x = [&mesh](std::int32_t corner) {
        return mesh.vertices[at(vertexAt(mesh, corner))].x;
    };
    IndexList corners;
    for (std::int32_t corner = 0; corner < mesh.cornerCount(); ++corner) {
        if (x(corner) < 0 && x(nextCorner(corner)) < 0 && x(previousCorner(corner)) == 0)
            corners.push_back(corner);
    }
    return corners;
}

class FreedSlave : public test::DecimationTest {
protected:
    void collapseTheShortEdge(std::int32_t corner) {
        const BallWithAShortEdge ball(corner);
        pm = test::prepared(ball.mesh);
        test::askForSymmetry(*pm, 0);
        pm->AvoidNormalReverse = false;
        pm->TargetNumItem = static_cast<std::uint32_t>(pm->mesh.vertices.size()) - 1;
        ASSERT_EQ(doDecimation_HS(*pm), 0);
        const bool vIsGone = !pm->mesh.vertexActive.Test(ball.v);
        ASSERT_TRUE(vIsGone || !pm->mesh.vertexActive.Test(ball.u));
        freed = vIsGone ? ball.mv : ball.mu;
        ASSERT_TRUE(pm->mesh.vertexActive.Test(freed));
        EXPECT_TRUE(pm->costQueue.isQueued(freed));
    }
    [[nodiscard]] float cost() const { return pm->mesh.vertices[at(freed)].cost; }

    test::MeshPtr pm;
    std::int32_t freed = kNone;
};

TEST_F(FreedSlave, IsRankedFromStoredQuadrics) {
    int different = 0;
    for (const std::int32_t corner : edgesBesideThePlane()) {
        ASSERT_NO_FATAL_FAILURE(collapseTheShortEdge(corner));
        const float ranked = cost();
        HighSpeedState stored;
        for (std::int32_t t = 0; t < pm->mesh.triangleCount(); ++t)
            stored.triangleQuadrics.push_back(ComputeTriangleQuadric(pm->mesh, *pm, t));
        IndexList ring;
        RecomputeVertexCostFromStored(*pm, stored, freed, ring);
        EXPECT_EQ(ranked, cost());
        RecomputeVertexCost(*pm, freed, ring);
        if (ranked != cost()) ++different;
    }
    EXPECT_GT(different, 0) << "of the stored quadrics some know the plane";
}

// A thread's hook for a vertex of a ball, and what it lists for the queue.
class FreedSlaveOfAThread : public test::DecimationTest {
protected:
    FreedSlaveOfAThread() : pm(test::prepared(test::sphere(2))) {
        prepareLowMemoryRun<PlainMetric>(*pm, {});
        marks.prepare(pm->mesh);
    }
    void rank(std::int32_t vertex) {
        Shared shared(*pm, record, sections);
        LowMemoryHooks<PlainMetric, Shared>(*pm, marks, shared).rankFreedSlave(vertex);
    }

    test::MeshPtr pm;
    NeighbourhoodMarks marks;
    ThreadWorkRecord record;
    CriticalSections sections;
};

TEST_F(FreedSlaveOfAThread, IsListedWithItsCostForTheQueue) {
    rank(7);
    ASSERT_EQ(record.updateVertices, IndexList{7});
    IndexList ring;
    const RankedVertex expected = rankVertex<PlainMetric>(*pm, 7, ring);
    EXPECT_EQ(record.updateCosts.front(), expected.cost);
    EXPECT_EQ(record.updatePartners.front(), expected.partner);
}

TEST_F(FreedSlaveOfAThread, IsLeftAsItIsIfNothingCanCollapse) {
    pm->mesh.borderVertices.Set(7);
    pm->BorderMode = BORDERMODE_FREEZE;
    rank(7);
    EXPECT_TRUE(record.updateVertices.empty());
}

}  // namespace
}  // namespace korvalite::core
