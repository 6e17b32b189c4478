// SPDX-License-Identifier: MIT
//
// The turns of the collapse loop while symmetry is handled.
#include "drivers/collapse_loop.h"

#include "drivers/scripted_driver.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvalite::core {
namespace {

using test::index;
using test::kU;
using test::kV;
using test::kVertices;
using test::line;
using test::Log;
using test::Turns;

constexpr std::int32_t at(std::int32_t column, std::int32_t row) {
    return test::MirroredGrid::at(column, row);
}

class CollapsePairs : public test::DecimationTest {};

TEST_F(CollapsePairs, TheMirrorImageCollapsesTooAndIsRecordedNext) {
    Turns t(true);
    const std::int32_t mv = t.image(kV);
    const std::int32_t mu = t.image(kU);
    t.queue(kV, kU, 3);
    t.queue(mv, mu, 4);
    EXPECT_EQ(t.run(), (Log{line("place", kV, kU), line("carry", kV, kU), line("carry", mv, mu),
                            line("update", kU), line("update", mu)}));
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices - 2);
    EXPECT_FALSE(t.pm.costQueue.isQueued(mv));
    ASSERT_EQ(t.recorded(), 2U);
    EXPECT_EQ(t.script.recordedBefore, (std::vector<std::uint32_t>{0, 0}));
    EXPECT_EQ(t.pm.vsplitList.ensureLoaded(0).vertex(), kV);
    EXPECT_EQ(t.pm.vsplitList.ensureLoaded(1).vertex(), mv);
}

TEST_F(CollapsePairs, APairMayPassTheTargetByOne) {
    Turns t(true);
    t.pm.TargetNumItem = kVertices - 1;
    t.queue(kV, kU, 3);
    t.run();
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices - 2);
}

TEST_F(CollapsePairs, TheMirrorImagesPartnerMirrorsThePartner) {
    Turns t(true);
    t.queue(kV, kU, 3);
    t.set(t.image(kV), t.image(at(3, 2)), 4);
    t.run();
    EXPECT_EQ(t.pm.mesh.vertices[index(t.image(kV))].partner, t.image(kU));
}

TEST_F(CollapsePairs, TheMirrorImageIsRemovedFromTheFirstRing) {
    // Two adjacent vertices that the test has paired: each is in the other's ring.
    Turns t(true);
    const std::int32_t mv = at(3, 2);
    const std::int32_t mu = at(3, 1);
    t.pair(kV, mv);
    t.pair(kU, mu);
    t.queue(kV, kU, 3);
    t.run();
    ASSERT_EQ(t.script.neighbours.size(), 2U) << "both collapses succeed";
    EXPECT_FALSE(contains(t.script.neighbours[0], mv));
    EXPECT_TRUE(contains(t.script.neighbours[0], mu));
}

TEST_F(CollapsePairs, ARefusedMirrorImageUndoesTheFirstCollapseAndPenalizesBoth) {
    Turns t(true);
    const std::int32_t mv = t.image(kV);
    const std::int32_t mu = t.image(kU);
    // A third triangle at an edge of its ring, so that the fan of the kept vertex would not be a
    // disc.
    DMesh& mesh = t.pm.mesh;
    for (const std::int32_t vertex : {mu, t.image(at(2, 0)), t.image(at(1, 0))})
        mesh.triangles.push_back(static_cast<std::uint32_t>(vertex));
    test::completeMesh(mesh);
    BuildVertexCorners(mesh);
    const test::Words before = test::arraysOf(mesh, test::Part::All);
    t.queue(kV, kU, 3);
    t.set(mv, mu, 2);
    t.pm.symmetrySlaves.Set(mv);
    t.queue(at(3, 3), kNone, 4);
    EXPECT_EQ(t.run(), (Log{line("place", kV, kU)}));
    EXPECT_EQ(test::arraysOf(mesh, test::Part::All), before);
    EXPECT_TRUE(test::cornerListsAreSound(mesh));
    EXPECT_EQ(t.cost(kV), 3 * 100.0F + 1e10F);
    EXPECT_EQ(t.cost(mv), 2 * 100.0F + 1e10F);
    EXPECT_TRUE(t.pm.costQueue.isQueued(kV));
    EXPECT_FALSE(t.pm.costQueue.isQueued(mv)) << "it was not queued before";
    EXPECT_FALSE(t.pm.costQueue.isQueued(at(3, 3))) << "the next one has had its turn";
    EXPECT_EQ(t.recorded(), 0U);
}

TEST_F(CollapsePairs, WhatSymmetryForbidsIsPenalizedBeforeAnyChange) {
    struct Case {
        const char* name;
        std::int32_t v;
        std::int32_t u;
        std::int32_t unpaired;
        std::uint32_t triangles;
    };
    for (const Case& c : {Case{"from the plane to a vertex off it", at(0, 2), at(1, 2), kNone, 64},
                          Case{"a paired vertex onto an unpaired one", kV, kU, kU, 64},
                          Case{"a pair in a mesh of few triangles", kV, kU, kNone, 7}}) {
        Turns t(true);
        if (c.unpaired != kNone) t.unpair(c.unpaired);
        t.pm.mesh.numActiveTriangles = c.triangles;
        const test::Words before = test::arraysOf(t.pm.mesh, test::Part::All);
        t.queue(c.v, c.u, 3);
        EXPECT_EQ(t.run(), (Log{line("place", c.v, c.u)})) << c.name;
        EXPECT_EQ(t.cost(c.v), 3 * 100.0F + 1e10F) << c.name;
        EXPECT_TRUE(t.pm.costQueue.isQueued(c.v)) << c.name;
        EXPECT_EQ(test::arraysOf(t.pm.mesh, test::Part::All), before) << c.name;
        EXPECT_EQ(t.recorded(), 0U) << c.name;
    }
}

TEST_F(CollapsePairs, AnUnpairedVertexCollapsesAloneOntoAPairedOne) {
    Turns t(true);
    t.unpair(kV);
    const FloatVec3 place = t.position(kU);
    t.script.replace = [&](std::int32_t, std::int32_t) {
        return FloatVec3{place.x + 0.25F, place.y, place.z};
    };
    t.queue(kV, kU, 3);
    EXPECT_EQ(t.run(), (Log{line("place", kV, kU), line("carry", kV, kU), line("update", kU)}));
    EXPECT_EQ(t.position(kU).x, place.x);
}

// A triangle across the plane, separate from the rest: v, u on the plane, and the mirror image of
// v.
struct TriangleAcross : Turns {
    std::int32_t v = pm.mesh.vertexCount();
    std::int32_t u = v + 1;
    std::int32_t mv = v + 2;

    TriangleAcross() : Turns(true) {
        pm.ProtectTopology = false;
        add({-1, 51, 0}, mv);
        add({0, 50, 0}, u);
        add({1, 51, 0}, v);
        addTriangle(v, u, mv);
    }
    void add(const FloatVec3& p, std::int32_t image) {
        pm.mesh.vertices.push_back({p.x, p.y, p.z, kNotCollapsible, kNone});
        pm.mesh.symmetryCache.pairing.push_back(image);
    }
    void addTriangle(std::int32_t a, std::int32_t b, std::int32_t c) {
        for (const std::int32_t vertex : {a, b, c})
            pm.mesh.triangles.push_back(static_cast<std::uint32_t>(vertex));
    }
    void collapseOntoThePlane() {
        test::completeMesh(pm.mesh);
        BuildVertexCorners(pm.mesh);
        ComputeBorderVertices(pm.mesh);
        pm.costQueue.Init(pm.mesh.vertexCount());
        pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
        pm.symmetrySlaves.Set(mv);
        queue(v, u, 3);
        run();
    }
};

TEST_F(CollapsePairs, AMirrorImageWithoutALivingPartnerIsLeftOut) {
    // The first collapse removes the triangle along with all its vertices.
    TriangleAcross t;
    t.collapseOntoThePlane();
    EXPECT_EQ(t.script.log,
              (Log{line("place", t.v, t.u), line("carry", t.v, t.u), line("refresh", t.v)}));
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices);
    EXPECT_TRUE(test::isSound(t.pm.mesh));
    EXPECT_EQ(t.recorded(), 1U);
}

TEST_F(CollapsePairs, AMirrorImageAlreadyGoneIsRecordedButNotCountedAgain) {
    // The vertex of the plane has another triangle, so the second collapse has somewhere to go.
    TriangleAcross t;
    const std::int32_t a = t.mv + 1;
    t.add({-1, 49, 0}, a + 1);
    t.add({1, 49, 0}, a);
    t.addTriangle(t.u, a, a + 1);
    t.collapseOntoThePlane();
    EXPECT_EQ(t.script.log,
              (Log{line("place", t.v, t.u), line("carry", t.v, t.u), line("carry", t.mv, t.u),
                   line("update", t.u), line("update", t.u)}));
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices + 3);
    EXPECT_TRUE(test::isSound(t.pm.mesh));
    EXPECT_EQ(t.recorded(), 2U);
}

TEST_F(CollapsePairs, ACollapseOntoItsMirrorImageLeavesThatFreeOnThePlane) {
    Turns t(true);
    t.pair(kV, kU);
    t.pair(kU, kV);
    t.pm.AvoidNormalReverse = false;  // the plane is far from this pair
    t.pm.symmetrySlaves.Set(kU);
    t.queue(kV, kU, 3);
    EXPECT_EQ(t.run(), (Log{line("place", kV, kU), line("carry", kV, kU), line("update", kU)}));
    EXPECT_EQ(t.position(kU).x, 0.0F);
    EXPECT_EQ(t.pm.mesh.symmetryCache.pairing[index(kU)], kU);
    EXPECT_FALSE(t.pm.symmetrySlaves.Test(kU));
    EXPECT_EQ(t.recorded(), 1U);
}

TEST_F(CollapsePairs, ASlaveIsFreedWhenItsMasterCollapsesAlone) {
    struct Case {
        const char* name;
        bool slave;
        bool queued;
        float cost;
        bool isFreed;
    };
    for (const Case& c :
         {Case{"a slave", true, false, 7, true},
          Case{"a slave that cannot collapse", true, false, kNotCollapsible, true},
          Case{"no slave", false, false, 7, false}, Case{"a queued slave", true, true, 7, false}}) {
        Turns t(true);
        // The images of the two ends are not adjacent, so the first collapses alone.
        const std::int32_t slave = t.image(at(3, 3));
        t.pair(kV, slave);
        t.pair(kU, t.image(at(1, 1)));
        if (c.slave) t.pm.symmetrySlaves.Set(slave);
        if (c.queued) t.queue(slave, kNone, 9);
        t.script.freedCost = c.cost;
        t.queue(kV, kU, 3);
        Log expected{line("place", kV, kU), line("carry", kV, kU), line("update", kU)};
        if (c.isFreed) expected.push_back(line("free", slave));
        t.pm.TargetNumItem = kVertices - 1;
        EXPECT_EQ(t.run(), expected) << c.name;
        EXPECT_EQ(t.pm.symmetrySlaves.Test(slave), c.slave && !c.isFreed) << c.name;
        EXPECT_EQ(t.pm.costQueue.isQueued(slave), c.queued || (c.isFreed && c.cost == 7.0F))
            << c.name;
    }
}

}  // namespace
}  // namespace korvalite::core
