// SPDX-License-Identifier: MIT
//
// The cost update of a thread compared with that of the single-threaded driver: one records what
// the other writes.
#include "collapse/carry_attributes.h"
#include "ranking/neighbour_costs.h"

#include "collapse/collapse.h"
#include "collapse/sharing.h"
#include "drivers/preparation.h"
#include "host/progress_channel.h"
#include "metric/metric.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"
#include "support/run_state.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace korvalite::core {
namespace {

using test::MeshPtr;

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

template <typename Metric, typename Set>
MeshPtr ranked(DMesh mesh, Set set) {
    MeshPtr pm = test::prepared(std::move(mesh));
    set(*pm);
    pm->m_useVertexColors_internal = Metric::kHasColor;
    prepareLowMemoryRun<Metric>(*pm, {.raiseStageFlags = false, .logCostForms = false});
    progressChannel().EndMainTask();
    return pm;
}

void asItIs(ProgressiveMesh&) {}

// What a thread needs to update costs.
template <typename Metric>
struct Thread {
    ThreadContext context;
    NeighbourhoodScratch<Metric> scratch;

    explicit Thread(const ProgressiveMesh& pm) { context.marks.prepare(pm.mesh); }

    ThreadWorkRecord& record() { return context.workRecord; }
    void update(ProgressiveMesh& pm, std::int32_t kept, CriticalSections& sections,
                const CollapseRecord& collapse = {}) {
        Shared shared(pm, context.workRecord, sections);
        UpdateNeighbourCosts_LM(pm, kept, collapse.ringCorners, collapse.neighbours, context.marks,
                                scratch, shared);
    }
    [[nodiscard]] bool marksAreClear() const {
        const auto& slots = context.marks.vertexSlot;
        return std::all_of(slots.begin(), slots.end(),
                           [](std::uint16_t slot) { return slot == 65535; });
    }
};

// The same mesh twice: `one` for the single-threaded driver, `many` for one of several threads.
template <typename Metric>
class Twins {
public:
    template <typename Set>
    Twins(const DMesh& mesh, Set set)
        : one(ranked<Metric>(mesh, set)), many(ranked<Metric>(mesh, set)), thread_(*many) {
        marks_.prepare(one->mesh);
    }
    explicit Twins(const DMesh& mesh) : Twins(mesh, asItIs) {}

    // `collapse` is the collapse that kept `kept`, or empty.
    void updateAround(std::int32_t kept, const CollapseRecord& collapse = {}) {
        const test::Words before = test::stateOf(*many);
        thread_.record().clear();
        thread_.update(*many, kept, sections_, collapse);
        EXPECT_TRUE(test::stateOf(*many) == before) << "records and queue wait for the commit";
        EXPECT_TRUE(thread_.marksAreClear());

        IndexList expected{kept};
        IndexList ring;
        GetVertexNeighbours(one->mesh, kept, ring);
        expected.insert(expected.end(), ring.begin(), ring.end());
        EXPECT_EQ(thread_.record().updateVertices, expected);

        Alone alone(*one);
        UpdateNeighbourCosts_LM(*one, kept, collapse.ringCorners, collapse.neighbours, marks_,
                                scratch_, alone);
        commit();
        EXPECT_TRUE(test::stateOf(*many) == test::stateOf(*one)) << "around " << kept;
    }

    // Performs the next collapse of the queue on both meshes; returns false at the end.
    bool collapseNext() {
        const std::int32_t v = one->costQueue.Top();
        EXPECT_EQ(many->costQueue.Top(), v);
        if (v == kNone || one->mesh.vertices[at(v)].cost >= kPenalizedCost) return false;
        const std::int32_t u = one->mesh.vertices[at(v)].partner;
        CollapseRecord collapse;
        const bool stands = collapseOn(*one, v, u, collapse);
        CollapseRecord again;
        EXPECT_EQ(collapseOn(*many, v, u, again), stands);
        if (stands && one->mesh.vertexActive.Test(u)) updateAround(u, collapse);
        return true;
    }

    MeshPtr one;
    MeshPtr many;

private:
    void commit() {
        const ThreadWorkRecord& record = thread_.record();
        many->costQueue.RemoveAll(record.updateVertices);
        for (std::size_t i = 0; i < record.updateVertices.size(); ++i) {
            const std::int32_t vertex = record.updateVertices[i];
            many->mesh.vertices[at(vertex)].cost = record.updateCosts[i];
            many->mesh.vertices[at(vertex)].partner = record.updatePartners[i];
            if (!many->isSymmetrySlave(vertex)) many->costQueue.Insert(vertex);
        }
    }
    bool collapseOn(ProgressiveMesh& pm, std::int32_t v, std::int32_t u, CollapseRecord& record) {
        KeptQuadrics<Metric> quadrics;
        const EdgeEvaluation evaluation = evaluateCollapse(pm.mesh, pm, v, u, quadrics);
        if (CollapseEdge(pm, v, u, evaluation.position, record, collapseScratch_, Alone(pm)) !=
            CollapseResult::Done) {
            Penalize(pm.mesh, pm.costQueue, v);
            return false;
        }
        carryColor<Metric>(pm.mesh, record.split, u, evaluation);
        if (pm.m_handleUVs_internal)
            UpdateUVsAfterCollapse(pm.mesh, v, u, record.split, uvScratch_, Alone(pm));
        pm.costQueue.Remove(v);
        return true;
    }

    Thread<Metric> thread_;
    CriticalSections sections_;
    NeighbourhoodMarks marks_;
    NeighbourhoodScratch<Metric> scratch_;
    CollapseScratch collapseScratch_;
    IndexList uvScratch_;
};

class NeighbourCostsOnThreads : public test::DecimationTest {
protected:
    template <typename Metric>
    static void expectAlikeEverywhere(Twins<Metric>& twins) {
        const std::int32_t count = twins.one->mesh.vertexCount();
        for (std::int32_t v = 0; v < count && !HasFailure(); ++v)
            twins.updateAround(v);
    }
    template <typename Metric>
    static void expectAlikeThroughCollapses(Twins<Metric>& twins, int collapses = 50) {
        while (collapses-- > 0 && !HasFailure() && twins.collapseNext()) {
        }
        EXPECT_LT(twins.one->mesh.numActiveVertices,
                  static_cast<std::uint32_t>(twins.one->mesh.vertexCount()));
    }
};

DMesh hillyGrid() {
    DMesh mesh = test::grid(8, 8, test::hills);
    test::jitter(mesh, 0.2F, 3);
    return mesh;
}

TEST_F(NeighbourCostsOnThreads, AreThoseOfTheSingleThreadedDriver) {
    for (const DMesh& mesh : {hillyGrid(), test::sphere(2), test::tetrahedron()}) {
        Twins<PlainMetric> twins(mesh);
        expectAlikeEverywhere(twins);
    }
}

TEST_F(NeighbourCostsOnThreads, StayEqualFromCollapseToCollapse) {
    for (const char* name : {"spot.Vok", "synth-torus.Vok"}) {
        Twins<PlainMetric> twins(test::sample(name));
        expectAlikeThroughCollapses(twins);
    }
}

TEST_F(NeighbourCostsOnThreads, AreEqualWithTheColourMetric) {
    Twins<ColorMetric> made(test::colorfulBall());
    expectAlikeEverywhere(made);
    Twins<ColorMetric> real(test::sample("spot-colored.Vok"));
    expectAlikeThroughCollapses(real);
}

TEST_F(NeighbourCostsOnThreads, AreEqualAlongSeams) {
    DMesh mesh = hillyGrid();
    test::addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle % 16 < 6 ? 0 : 1; });
    Twins<PlainMetric> made(mesh);
    ASSERT_TRUE(made.one->m_handleUVs_internal);
    ASSERT_GT(made.one->mesh.uvSeamCorners.CountSet(), 0);
    expectAlikeEverywhere(made);
    Twins<PlainMetric> real(test::sample("synth-seams.Vok"));
    ASSERT_TRUE(real.one->m_handleUVs_internal);
    expectAlikeThroughCollapses(real);
}

TEST_F(NeighbourCostsOnThreads, AreEqualAmongSlaves) {
    Twins<PlainMetric> made(test::sphere(3),
                            [](ProgressiveMesh& pm) { test::askForSymmetry(pm, 0); });
    ASSERT_GT(made.one->symmetrySlaves.CountSet(), 0);
    expectAlikeEverywhere(made);
    Twins<PlainMetric> real(test::sample("synth-symmetric.Vok"),
                            [](ProgressiveMesh& pm) { test::askForSymmetry(pm, 0); });
    ASSERT_GT(real.one->symmetrySlaves.CountSet(), 0);
    expectAlikeThroughCollapses(real);
}

TEST_F(NeighbourCostsOnThreads, ASlaveGetsAnEntryWithoutACost) {
    const MeshPtr pm = ranked<PlainMetric>(test::sphere(3),
                                           [](ProgressiveMesh& m) { test::askForSymmetry(m, 0); });
    Thread<PlainMetric> thread(*pm);
    CriticalSections sections;
    std::int32_t slaves = 0;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        const ThreadWorkRecord& record = thread.record();
        thread.record().clear();
        thread.update(*pm, v, sections);
        for (std::size_t i = 0; i < record.updateVertices.size(); ++i) {
            if (!pm->symmetrySlaves.Test(record.updateVertices[i])) continue;
            ++slaves;
            EXPECT_EQ(record.updateCosts[i], kNotCollapsible);
            EXPECT_EQ(record.updatePartners[i], kNone);
        }
    }
    EXPECT_GT(slaves, 0);
}

TEST_F(NeighbourCostsOnThreads, DoNotDependOnStoredCosts) {
    // The stored costs are lower than any that could be found.
    Twins<PlainMetric> twins(hillyGrid());
    for (const MeshPtr* pm : {&twins.one, &twins.many}) {
        for (std::int32_t v = 0; v < (*pm)->mesh.vertexCount(); ++v) {
            (*pm)->costQueue.Remove(v);
            (*pm)->mesh.vertices[at(v)].cost = 0;
            (*pm)->mesh.vertices[at(v)].partner = 80;
            (*pm)->costQueue.Insert(v);
        }
    }
    expectAlikeEverywhere(twins);
    EXPECT_GT(twins.many->mesh.vertices[40].cost, 0.0F);
}

TEST_F(NeighbourCostsOnThreads, OfASecondCollapseFollowThoseOfTheFirst) {
    const MeshPtr pm = ranked<PlainMetric>(hillyGrid(), asItIs);
    CriticalSections sections;
    // The two rings overlap, so some vertices are in both.
    Thread<PlainMetric> first(*pm);
    Thread<PlainMetric> second(*pm);
    Thread<PlainMetric> both(*pm);
    first.update(*pm, 40, sections);
    second.update(*pm, 42, sections);
    both.record().appendUpdate(3, 7, 8);  // from a refusal earlier in the turn
    both.update(*pm, 40, sections);
    both.update(*pm, 42, sections);

    Thread<PlainMetric> expected(*pm);
    expected.record().appendUpdate(3, 7, 8);
    for (Thread<PlainMetric>* thread : {&first, &second}) {
        const ThreadWorkRecord& record = thread->record();
        for (std::size_t i = 0; i < record.updateVertices.size(); ++i)
            expected.record().appendUpdate(record.updateVertices[i], record.updateCosts[i],
                                           record.updatePartners[i]);
    }
    EXPECT_EQ(both.record().updateVertices, expected.record().updateVertices);
    EXPECT_EQ(both.record().updateCosts, expected.record().updateCosts);
    EXPECT_EQ(both.record().updatePartners, expected.record().updatePartners);
}

TEST_F(NeighbourCostsOnThreads, RecordAVertexWithoutTrianglesAsNotCollapsible) {
    const MeshPtr pm = ranked<PlainMetric>(
        test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}, {{0, 1, 2}}), asItIs);
    Thread<PlainMetric> thread(*pm);
    CriticalSections sections;
    thread.update(*pm, 3, sections);
    EXPECT_EQ(thread.record().updateVertices, IndexList{3});
    EXPECT_EQ(thread.record().updateCosts, std::vector<float>{kNotCollapsible});
    EXPECT_EQ(thread.record().updatePartners, IndexList{kNone});
}

// The entries for all vertices, one after the other.
ThreadWorkRecord updateEverywhere(ProgressiveMesh& pm, CriticalSections& sections) {
    Thread<PlainMetric> thread(pm);
    for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v)
        thread.update(pm, v, sections);
    return thread.record();
}

TEST_F(NeighbourCostsOnThreads, AreRankedBySeveralThreadsWithoutInterference) {
    DMesh mesh = hillyGrid();
    test::addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle % 16 < 6 ? 0 : 1; });
    const MeshPtr pm = ranked<PlainMetric>(mesh, asItIs);
    CriticalSections sections;
    const ThreadWorkRecord alone = updateEverywhere(*pm, sections);
    const test::Words before = test::stateOf(*pm);
    test::onThreads(4, [&](std::size_t) {
        const ThreadWorkRecord record = updateEverywhere(*pm, sections);
        EXPECT_EQ(record.updateVertices, alone.updateVertices);
        EXPECT_EQ(record.updateCosts, alone.updateCosts);
        EXPECT_EQ(record.updatePartners, alone.updatePartners);
    });
    EXPECT_TRUE(test::stateOf(*pm) == before);
}

TEST_F(NeighbourCostsOnThreads, WaitForAThreadThatIsMovingASeam) {
    DMesh mesh = hillyGrid();
    test::addCornerUVs(mesh);
    const MeshPtr pm = ranked<PlainMetric>(mesh, asItIs);
    ASSERT_TRUE(pm->m_handleUVs_internal);
    CriticalSections sections;
    const auto setSeam = [&](bool isSeam) {
        for (std::int32_t v = 36; v < 45; ++v) {
            pm->mesh.uvSeamVertices.Assign(v, isSeam);
            pm->mesh.uvSeamCorners.Assign(v, isSeam);
        }
    };
    const auto costsAround40 = [&] {
        Thread<PlainMetric> thread(*pm);
        thread.update(*pm, 40, sections);
        return thread.record().updateCosts;
    };
    setSeam(true);
    const std::vector<float> expected = costsAround40();
    setSeam(false);
    ASSERT_NE(costsAround40(), expected);

    std::atomic<bool> begun = false;
    std::vector<float> found;
    std::unique_lock inside(sections.csUvSeams);
    std::thread other([&] {
        begun = true;
        found = costsAround40();
    });
    while (!begun)
        std::this_thread::yield();
    for (int i = 0; i < 2000; ++i)
        std::this_thread::yield();
    setSeam(true);
    inside.unlock();
    other.join();
    EXPECT_EQ(found, expected);
}

TEST_F(NeighbourCostsOnThreads, DoNotWaitForSeamsWithoutUVs) {
    const MeshPtr pm = ranked<PlainMetric>(hillyGrid(), asItIs);
    ASSERT_FALSE(pm->m_handleUVs_internal);
    CriticalSections sections;
    const std::lock_guard inside(sections.csUvSeams);
    Thread<PlainMetric> thread(*pm);
    thread.update(*pm, 40, sections);  // would block for ever if it waited
    EXPECT_FALSE(thread.record().updateVertices.empty());
}

}  // namespace
}  // namespace korvalite::core
