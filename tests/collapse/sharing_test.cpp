// SPDX-License-Identifier: MIT
#include "collapse/sharing.h"

#include "collapse/symmetric_collapse.h"
#include "drivers/preparation.h"
#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost.h"
#include "support/decimation_run.h"
#include "support/mirrored_grid.h"
#include "support/run_state.h"
#include "support/slow_ranking.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvalite::core {
namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

// 6 x 6 hilly squares: vertex (column, row) has the index 7 * row + column. Tests set its cost.
struct Hills {
    ProgressiveMesh pm;
    CriticalSections sections;
    ThreadWorkRecord record;
    Shared shared{pm, record, sections};

    explicit Hills(DMesh mesh = test::grid(6, 6, test::hills)) {
        test::prepare(pm, std::move(mesh));
        for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v)
            set(v, 100.0F + static_cast<float>(v), v == 0 ? 1 : 0);
    }
    void set(std::int32_t v, float cost, std::int32_t partner) {
        pm.mesh.vertices[at(v)].cost = cost;
        pm.mesh.vertices[at(v)].partner = partner;
    }
    [[nodiscard]] bool isUntouched() const {
        return record.updateVertices.empty() && record.updateCosts.empty() &&
               record.updatePartners.empty() && record.removedVertices.empty();
    }
};

DMesh coloredBall() {
    DMesh mesh = test::sphere(2);
    test::jitter(mesh, 0.02F, 1);
    test::addColors(mesh, [](const FloatVec3& p) {
        return test::packColor(static_cast<std::uint32_t>(100 + 90 * p.x), 30,
                               static_cast<std::uint32_t>(100 + 90 * p.y));
    });
    return mesh;
}

TEST(SharedPenalty, OnlyRecordsTheRaisedCostOfAQueuedVertex) {
    Hills m;
    m.set(24, 3, 25);
    m.pm.costQueue.Insert(24);
    const test::Words before = test::stateOf(m.pm);
    m.shared.penalize(24);
    EXPECT_TRUE(test::stateOf(m.pm) == before);
    EXPECT_EQ(m.record.updateVertices, IndexList{24});
    EXPECT_EQ(m.record.updateCosts, std::vector<float>{3 * 100.0F + 1e10F});
    EXPECT_EQ(m.record.updatePartners, IndexList{25});
    EXPECT_TRUE(m.record.removedVertices.empty());
}

TEST(SharedPenalty, OnlyRecordsTheRaisedCostOfAVertexInABucket) {
    // Two costs so far apart that one vertex is still in its bucket when the other's is poured.
    Hills m;
    m.set(10, 1e-6F, 11);
    m.set(24, 5, 25);
    m.pm.costQueue.Insert(10);
    m.pm.costQueue.Insert(24);
    ASSERT_EQ(m.pm.costQueue.Top(), 10);
    const test::Words before = test::stateOf(m.pm);
    m.shared.penalize(10);
    m.shared.penalize(24);
    EXPECT_TRUE(test::stateOf(m.pm) == before);
    EXPECT_EQ(m.record.updateVertices, (IndexList{10, 24}));
}

TEST(SharedPenalty, RaisesTheCostOfAnUnqueuedVertexAtOnce) {
    Hills m;
    m.set(24, 3, 25);
    m.shared.penalize(24);
    EXPECT_EQ(m.pm.mesh.vertices[24].cost, 3 * 100.0F + 1e10F);
    EXPECT_EQ(m.pm.mesh.vertices[24].partner, 25);
    EXPECT_FALSE(m.pm.costQueue.isQueued(24));
    EXPECT_TRUE(m.isUntouched());
}

TEST(SharedPenalty, RaisesCostsAsTheSingleThreadedDriverDoes) {
    for (const float cost : {0.0F, 0.25F, 1e9F, 2e10F, 1e35F, 3e38F}) {
        for (const bool queued : {false, true}) {
            Hills one;
            Hills many;
            for (Hills* m : {&one, &many}) {
                m->set(24, cost, 25);
                if (queued) m->pm.costQueue.Insert(24);
            }
            Penalize(one.pm.mesh, one.pm.costQueue, 24);
            many.shared.penalize(24);
            const float raised =
                queued ? many.record.updateCosts.at(0) : many.pm.mesh.vertices[24].cost;
            EXPECT_EQ(raised, one.pm.mesh.vertices[24].cost) << cost;
        }
    }
}

template <typename Metric>
void expectReferenceRanking(ProgressiveMesh& pm) {
    IndexList ring{77};
    const test::Words before = test::stateOf(pm);
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v) {
        const RankedVertex expected = test::rankSlowly<Metric>(pm, v);
        const auto [cost, partner] = rankVertex<Metric>(pm, v, ring);
        EXPECT_EQ(cost, expected.cost) << v;
        EXPECT_EQ(partner, expected.partner) << v;
    }
    EXPECT_TRUE(test::stateOf(pm) == before) << "nothing is stored";
}

TEST(RankVertex, RanksAVertexAgainstItsRingAndStoresNothing) {
    DMesh mesh = test::grid(6, 6, test::hills);
    test::jitter(mesh, 0.2F, 1);
    mesh.vertices.resize(mesh.vertices.size() + 1);  // in no triangle
    test::completeMesh(mesh);
    Hills m(mesh);
    expectReferenceRanking<PlainMetric>(m.pm);
}

TEST(RankVertex, RanksByTheColourMetricToo) {
    Hills m(coloredBall());
    m.pm.m_useVertexColors_internal = true;
    computeColorScale(m.pm);
    expectReferenceRanking<ColorMetric>(m.pm);
}

TEST(RankVertex, LeavesOutEdgesHeldByASeam) {
    // A seam across the middle with a bend at 24, which must not pair with its seam neighbours.
    Hills m;
    m.pm.m_handleUVs_internal = true;
    for (BitArray* bits : {&m.pm.mesh.uvSeamVertices, &m.pm.mesh.uvSeamCorners})
        bits->Resize(m.pm.mesh.vertexCount(), false);
    for (std::int32_t v = 21; v < 28; ++v)
        m.pm.mesh.uvSeamVertices.Set(v);
    m.pm.mesh.uvSeamCorners.Set(24);
    expectReferenceRanking<PlainMetric>(m.pm);
    IndexList ring;
    for (const std::int32_t v : {23, 24, 25}) {
        const auto [cost, partner] = rankVertex<PlainMetric>(m.pm, v, ring);
        EXPECT_FALSE(v == 24 ? partner == 23 || partner == 25 : partner == 24) << v;
    }
}

TEST(RankVertex, AgreesWithTheSingleThreadedDrivers) {
    Hills m(test::sample("synth-torus.Vok"));
    IndexList ring;
    for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v) {
        const auto [cost, partner] = rankVertex<PlainMetric>(m.pm, v, ring);
        RecomputeVertexCost(m.pm, v, ring);
        ASSERT_EQ(cost, m.pm.mesh.vertices[at(v)].cost) << v;
        ASSERT_EQ(partner, m.pm.mesh.vertices[at(v)].partner) << v;
    }
}

// The record that a collapse of `gone` would leave, whose ring now lacks `inactive`.
CollapseRecord collapseOf(ProgressiveMesh& pm, std::int32_t gone, std::int32_t inactive) {
    CollapseRecord collapse;
    collapse.split.vertex = gone;
    GetVertexCorners(pm.mesh, gone, collapse.split.corners);
    pm.mesh.vertexActive.Clear(inactive);
    return collapse;
}

// Expects the entries from `first` on to be what RefreshRingCosts would write.
void expectRefreshed(const Hills& m, std::size_t first, const VSplit& split) {
    Hills one;
    one.pm.mesh.vertexActive.Assign(m.pm.mesh.vertexActive);
    Alone alone(one.pm);
    RefreshRingCosts<PlainMetric>(one.pm, split, alone);
    IndexList refreshed;
    for (std::size_t i = first; i < m.record.updateVertices.size(); ++i) {
        const std::int32_t v = m.record.updateVertices[i];
        EXPECT_FALSE(contains(refreshed, v)) << v;
        refreshed.push_back(v);
        EXPECT_EQ(m.record.updateCosts[i], one.pm.mesh.vertices[at(v)].cost) << v;
        EXPECT_EQ(m.record.updatePartners[i], one.pm.mesh.vertices[at(v)].partner) << v;
    }
    for (std::int32_t v = 0; v < one.pm.mesh.vertexCount(); ++v)
        EXPECT_EQ(contains(refreshed, v), one.pm.costQueue.isQueued(v)) << v;
    EXPECT_EQ(m.record.updateCosts.size(), m.record.updateVertices.size());
    EXPECT_EQ(m.record.updatePartners.size(), m.record.updateVertices.size());
}

TEST(SharedRefresh, RecordsTheActiveVerticesAroundEitherCollapse) {
    Hills m;
    m.record.splitRecord = collapseOf(m.pm, 16, 17);
    m.record.mirrorSplitRecord = collapseOf(m.pm, 32, 31);
    const test::Words before = test::stateOf(m.pm);
    RefreshRingCosts<PlainMetric>(m.pm, m.record.splitRecord.split, m.shared);
    EXPECT_EQ(m.record.updateVertices.size(), 5U) << "a fan of six with one vertex inactive";
    expectRefreshed(m, 0, m.record.splitRecord.split);
    RefreshRingCosts<PlainMetric>(m.pm, m.record.mirrorSplitRecord.split, m.shared);
    EXPECT_EQ(m.record.updateVertices.size(), 10U);
    expectRefreshed(m, 5, m.record.mirrorSplitRecord.split);
    EXPECT_TRUE(test::stateOf(m.pm) == before) << "costs and queue are untouched";
}

TEST(SharedRefresh, RanksByTheDriversMetric) {
    Hills m(coloredBall());
    m.pm.m_useVertexColors_internal = true;
    computeColorScale(m.pm);
    m.record.splitRecord = collapseOf(m.pm, 20, 20);
    RefreshRingCosts<ColorMetric>(m.pm, m.record.splitRecord.split, m.shared);
    ASSERT_FALSE(m.record.updateVertices.empty());
    for (std::size_t i = 0; i < m.record.updateVertices.size(); ++i) {
        const RankedVertex expected =
            test::rankSlowly<ColorMetric>(m.pm, m.record.updateVertices[i]);
        EXPECT_EQ(m.record.updateCosts[i], expected.cost);
        EXPECT_EQ(m.record.updatePartners[i], expected.partner);
    }
}

TEST(Shared, UnqueueingAVertexIsOnlyRecorded) {
    Hills m;
    m.pm.costQueue.Insert(24);
    const test::Words before = test::stateOf(m.pm);
    m.shared.unqueue(24);
    EXPECT_TRUE(test::stateOf(m.pm) == before);
    EXPECT_EQ(m.record.removedVertices, IndexList{24});
    EXPECT_TRUE(m.record.updateVertices.empty());
}

TEST(Shared, FreesOneSlaveAtOnce) {
    Hills m;
    const std::int32_t count = m.pm.mesh.vertexCount();
    m.pm.symmetrySlaves.Resize(count, false);
    for (std::int32_t v = 8; v < 24; ++v)
        m.pm.symmetrySlaves.Set(v);
    freeSlave(m.pm, 12, m.shared);
    freeSlave(m.pm, 30, m.shared);  // not a slave
    for (std::int32_t v = 0; v < count; ++v)
        EXPECT_EQ(isSlave(m.pm, v, m.shared), v >= 8 && v < 24 && v != 12) << v;
    EXPECT_TRUE(m.isUntouched());
}

TEST(Shared, FreesASlaveOnlyInsideTheSection) {
    Hills m;
    m.pm.symmetrySlaves.Resize(m.pm.mesh.vertexCount(), false);
    m.pm.symmetrySlaves.Set(12);
    EXPECT_TRUE(test::staysTheSameInside(
        m.sections.csSymmetrySlaves, [&] { return m.pm.symmetrySlaves.Test(12); },
        [&] { freeSlave(m.pm, 12, m.shared); }));
    EXPECT_FALSE(m.pm.symmetrySlaves.Test(12));
}

TEST(Shared, FreeingSlavesOfOneByteOnSeveralThreadsLosesNone) {
    constexpr std::int32_t kThreads = 4;
    constexpr std::int32_t kSlaves = 40'000;
    ProgressiveMesh pm;
    CriticalSections sections;
    for (int round = 0; round < 10; ++round) {
        pm.symmetrySlaves.Reset(kSlaves);
        for (std::int32_t v = 0; v < kSlaves; ++v)
            pm.symmetrySlaves.Set(v);
        // Each thread frees two of the eight slaves of a byte, but the last slave of every third
        // byte stays.
        const auto staysASlave = [](std::int32_t v) { return v % 24 == 23; };
        test::onThreads(kThreads, [&](std::size_t thread) {
            ThreadWorkRecord record;
            const Shared shared(pm, record, sections);
            for (auto v = static_cast<std::int32_t>(thread); v < kSlaves; v += kThreads) {
                if (!staysASlave(v)) freeSlave(pm, v, shared);
            }
        });
        std::int32_t wrong = 0;
        for (std::int32_t v = 0; v < kSlaves; ++v)
            wrong += pm.symmetrySlaves.Test(v) != staysASlave(v) ? 1 : 0;
        ASSERT_EQ(wrong, 0);
    }
}

}  // namespace
}  // namespace korvalite::core
