// SPDX-License-Identifier: MIT
//
// Every kind of turn that the loop can take for a single vertex; collapse_pairs_test.cpp has the
// mirrored pairs.
#include "drivers/collapse_loop.h"

#include "drivers/scripted_driver.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/step_recorder.h"
#include "support/stop_request.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using test::index;
using test::kU;
using test::kV;
using test::kVertices;
using test::line;
using test::Log;
using test::Script;
using test::Turns;

constexpr std::int32_t at(std::int32_t column, std::int32_t row) {
    return test::MirroredGrid::at(column, row);
}

class CollapseLoopTest : public test::DecimationTest {};

TEST_F(CollapseLoopTest, PlacesCollapsesCarriesRanksThenRecords) {
    Turns t;
    t.queue(kV, kU, 3);
    EXPECT_EQ(t.run(), (Log{line("place", kV, kU), line("carry", kV, kU), line("update", kU)}));
    EXPECT_EQ(t.script.recordedBefore, (std::vector<std::uint32_t>{0}));
    EXPECT_EQ(t.recorded(), 1U);
    EXPECT_EQ(t.pm.vsplitList.ensureLoaded(0).vertex(), kV);
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices - 1);
    EXPECT_FALSE(t.pm.costQueue.isQueued(kV));
}

TEST_F(CollapseLoopTest, SumsAKeptQuadricAgainOnlyAfterAChange) {
    Turns t;
    const auto sum = [&](std::int32_t v) {
        Quadric3D quadric;
        ComputeVertexQuadricFromTriangles(t.pm.mesh, t.pm, quadric, v);
        return quadric.q;
    };
    const auto before = sum(kU);
    // Two collapses are refused, because they would flip the triangles around kU; then one
    // succeeds.
    const std::int32_t left = at(1, 1);
    const std::int32_t right = at(3, 1);
    t.script.replace = [&](std::int32_t v, std::int32_t u) {
        t.pm.mesh.vertices[index(kU)].z += 1;  // does not affect any test of a collapse
        const FloatVec3 stay = t.pm.mesh.vertices[index(u)].position();
        return v == kV ? stay : FloatVec3{100, 100, 0};
    };
    t.queue(left, kU, 1);
    t.queue(right, kU, 2);
    t.queue(kV, kU, 3);
    t.queue(at(2, 0), kU, 4);
    t.run();
    ASSERT_EQ(t.script.quadrics.size(), 4U);
    EXPECT_EQ(t.script.quadrics[0].q, before);
    EXPECT_EQ(t.script.quadrics[1].q, before);
    EXPECT_EQ(t.script.quadrics[2].q, before);
    EXPECT_NE(t.script.quadrics[3].q, before);
}

TEST_F(CollapseLoopTest, RecordsNothingUnlessAsked) {
    Turns t;
    t.pm.recordVSplits = false;
    t.queue(kV, kU, 3);
    t.run();
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices - 1);
    EXPECT_EQ(t.recorded(), 0U);
}

TEST_F(CollapseLoopTest, TheStoredCostDecidesNotTheEvaluatedOne) {
    Turns t;
    t.script.evaluatedCost = kNotCollapsible;
    t.queue(kV, kU, 3);
    t.run();
    EXPECT_FALSE(t.pm.mesh.vertexActive.Test(kV));
}

TEST_F(CollapseLoopTest, EndsAtTheTargetWithTheRestStillQueued) {
    for (const bool triangles : {false, true}) {
        Turns t;
        t.pm.targetCountsVertices = !triangles;
        t.pm.TargetNumItem = t.pm.activeCount() - (triangles ? 2U : 1U);
        t.queue(kV, kU, 3);
        t.queue(at(3, 3), at(3, 2), 4);
        EXPECT_EQ(t.run().size(), 3U);
        EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices - 1);
        EXPECT_EQ(t.pm.mesh.numActiveTriangles, 62U);
        EXPECT_TRUE(t.pm.costQueue.isQueued(at(3, 3)));
    }
}

TEST_F(CollapseLoopTest, EndsWithoutAQueueOrWithAnEmptyOne) {
    Turns empty;
    EXPECT_TRUE(empty.run().empty());
    Turns none;
    none.pm.costQueue.Release();
    EXPECT_TRUE(none.run().empty());
}

TEST_F(CollapseLoopTest, DropsAVertexWithoutAPartnerWhateverItsCost) {
    for (const float cost : {1.0F, 5e10F}) {
        Turns t;
        t.queue(kV, kNone, cost);
        EXPECT_TRUE(t.run().empty());
        EXPECT_FALSE(t.pm.costQueue.isQueued(kV));
        EXPECT_EQ(t.cost(kV), cost);
        EXPECT_TRUE(t.pm.mesh.vertexActive.Test(kV));
    }
}

TEST_F(CollapseLoopTest, DropsAVertexWhosePartnerIsGoneUntilItIsRankedAgain) {
    Turns t;
    t.queue(kU, at(2, 0), 1);
    t.queue(kV, kU, 2);
    t.queue(at(3, 3), at(3, 2), 3);
    // The first collapse removes the partner of the second; after the third, the second is ranked
    // again.
    int collapses = 0;
    t.script.afterCollapse = [&] {
        if (++collapses == 2) t.queue(kV, at(2, 3), 4);
    };
    EXPECT_EQ(t.run(), (Log{line("place", kU, at(2, 0)), line("carry", kU, at(2, 0)),
                            line("update", at(2, 0)), line("place", at(3, 3), at(3, 2)),
                            line("carry", at(3, 3), at(3, 2)), line("update", at(3, 2)),
                            line("place", kV, at(2, 3)), line("carry", kV, at(2, 3)),
                            line("update", at(2, 3))}));
}

TEST_F(CollapseLoopTest, ARefusedCollapseIsPenalizedAndTheNextTried) {
    Turns t;
    t.script.replace = [&](std::int32_t v, std::int32_t u) {
        // Far enough away to flip triangles.
        return v == kV ? FloatVec3{-50, -50, 0} : t.position(u);
    };
    t.queue(kV, kU, 3);
    t.queue(at(3, 3), at(3, 2), 4);
    const test::Words before = test::arraysOf(t.pm.mesh, test::Part::All);
    t.pm.TargetNumItem = kVertices - 1;
    EXPECT_EQ(t.run(), (Log{line("place", kV, kU), line("place", at(3, 3), at(3, 2)),
                            line("carry", at(3, 3), at(3, 2)), line("update", at(3, 2))}));
    EXPECT_EQ(t.cost(kV), 3 * 100.0F + 1e10F);
    EXPECT_TRUE(t.pm.costQueue.isQueued(kV));
    EXPECT_EQ(t.recorded(), 1U);
    EXPECT_NE(test::arraysOf(t.pm.mesh, test::Part::All), before);
}

TEST_F(CollapseLoopTest, EndsAtTheFirstPenalizedCost) {
    for (const bool finishStep : {false, true}) {
        Turns t;
        t.pm.AllowFinishStep = finishStep;
        t.queue(kV, kU, std::nextafter(1e10F, 0.0F));
        t.queue(at(3, 3), at(3, 2), 1e10F);
        t.queue(at(1, 3), at(1, 2), std::numeric_limits<float>::infinity());
        EXPECT_EQ(t.run().size(), 3U);
        EXPECT_EQ(t.recorded(), 1U);
        EXPECT_TRUE(t.pm.costQueue.isQueued(at(3, 3)));
        EXPECT_EQ(t.pm.decimationFinishTriangleCount, kNone);
    }
}

TEST_F(CollapseLoopTest, ResetsTheFinishStepAtTheStart) {
    Turns t;
    t.pm.AllowFinishStep = true;
    t.pm.finishStepStarted = true;
    t.pm.inFinishStep = true;
    t.queue(kV, kU, 1e10F);
    EXPECT_TRUE(t.run().empty());
    EXPECT_FALSE(t.pm.finishStepStarted);
    EXPECT_FALSE(t.pm.inFinishStep);
}

TEST_F(CollapseLoopTest, AStartedFinishStepRanksAllAgainWithoutSymmetry) {
    Turns t(true);
    t.pm.AllowFinishStep = true;
    t.unpair(kV);
    t.unpair(kU);
    t.queue(kV, kU, 3);
    t.queue(at(3, 3), at(3, 2), 1e10F);
    t.pm.symmetrySlaves.Set(at(4, 4));
    t.script.afterCollapse = [&] { t.pm.finishStepStarted = true; };
    Log expected{line("place", kV, kU), line("carry", kV, kU), line("update", kU)};
    for (std::int32_t v = 0; v < t.pm.mesh.vertexCount(); ++v) {
        if (v != kV) expected.push_back(line("finish", v));
    }
    EXPECT_EQ(t.run(), expected);
    EXPECT_EQ(t.pm.decimationFinishTriangleCount, 62);
    EXPECT_TRUE(t.pm.inFinishStep);
    EXPECT_FALSE(t.pm.m_handleSymmetry_internal);
    EXPECT_EQ(t.pm.symmetrySlaves.CountSet(), 0);
    EXPECT_FALSE(t.pm.costQueue.isQueued(at(3, 3)));
}

TEST_F(CollapseLoopTest, MakesNoFinishStepUnlessAllowed) {
    Turns t;
    t.queue(kV, kU, 3);
    t.queue(at(3, 3), at(3, 2), 1e10F);
    t.script.afterCollapse = [&] { t.pm.finishStepStarted = true; };
    EXPECT_EQ(t.run().size(), 3U);
    EXPECT_FALSE(t.pm.inFinishStep);
    EXPECT_TRUE(t.pm.costQueue.isQueued(at(3, 3)));
}

TEST_F(CollapseLoopTest, IfTheKeptVertexVanishesItsRingIsRefreshedFromTheRecord) {
    ProgressiveMesh pm;
    test::prepare(pm, test::oneTriangle());
    pm.ProtectTopology = false;
    pm.recordVSplits = true;
    pm.TargetNumItem = 0;
    openVSplitList(pm);
    for (std::int32_t v = 0; v < 3; ++v) {
        pm.mesh.vertices[index(v)].cost = static_cast<float>(v);
        pm.mesh.vertices[index(v)].partner = (v + 1) % 3;
        pm.costQueue.Insert(v);
    }
    Script script(pm);
    Alone alone(pm);
    CollapseLoop(pm, script, alone).run();
    EXPECT_EQ(script.log, (Log{line("place", 0, 1), line("carry", 0, 1), line("refresh", 0)}));
    EXPECT_EQ(pm.mesh.numActiveVertices, 0U);
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 1U);
}

TEST_F(CollapseLoopTest, AStopRequestEndsItAfterTheCurrentCollapse) {
    const test::HostedProgress host;
    Turns t;
    t.queue(kV, kU, 3);
    t.queue(at(3, 3), at(3, 2), 4);
    t.script.afterCollapse = [] { test::HostedProgress::askToStop(); };
    EXPECT_EQ(t.run().size(), 3U);
    EXPECT_EQ(t.recorded(), 1U);
    EXPECT_EQ(t.pm.mesh.numActiveVertices, kVertices - 1);
    EXPECT_TRUE(t.pm.costQueue.isQueued(at(3, 3)));
}

// Separate strips, each with one edge that may collapse.
DMesh strips(std::uint32_t count) {
    test::Points points;
    test::Faces faces;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto y = static_cast<float>(2 * i);
        const std::uint32_t first = 4 * i;
        points.insert(points.end(), {{0, y, 0}, {1, y, 0}, {1, y + 1, 0}, {0, y + 1, 0}});
        faces.insert(faces.end(), {{first, first + 1, first + 2}, {first, first + 2, first + 3}});
    }
    return test::buildMesh(points, faces);
}

TEST_F(CollapseLoopTest, ShowsProgressEvery200CollapsesExcludingRefusals) {
    ProgressiveMesh pm;
    test::prepare(pm, strips(450));
    pm.TargetNumItem = 0;
    pm.recordVSplits = false;
    const auto collapseOf = [&](std::int32_t strip, std::int32_t v, std::int32_t u, float cost) {
        pm.mesh.vertices[index(4 * strip + v)].cost = cost;
        pm.mesh.vertices[index(4 * strip + v)].partner = 4 * strip + u;
        pm.costQueue.Insert(4 * strip + v);
    };
    for (std::int32_t strip = 0; strip < 450; ++strip) {
        // A collapse along the diagonal would remove both triangles and is refused. Along the side
        // it succeeds.
        collapseOf(strip, 0, 2, 1);
        collapseOf(strip, 1, 2, 2);
    }
    test::StepRecorder steps;
    pm.monitor = &steps;
    Script script(pm);
    Alone alone(pm);
    CollapseLoop(pm, script, alone).run();
    Log progress;
    for (const std::string& entry : script.log) {
        if (entry.starts_with("progress")) progress.push_back(entry);
    }
    EXPECT_EQ(pm.mesh.numActiveVertices, 1800U - 450);
    EXPECT_EQ(progress, (Log{"progress 200", "progress 400"}));
    EXPECT_EQ(steps.numbers, (std::vector<int>{10, 11, 11}));
}

}  // namespace
}  // namespace korvalite::core
