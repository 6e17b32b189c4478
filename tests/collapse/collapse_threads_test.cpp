// SPDX-License-Identifier: MIT
//
// The forms of the collapse and of its undo that several threads may run at once.
#include "collapse/collapse.h"

#include "collapse/sharing.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"
#include "support/prepared_mesh.h"
#include "support/random.h"
#include "support/run_state.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace korvalite::core {
namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

test::Words wordsOf(const CollapseRecord& record) {
    const VSplit& split = record.split;
    test::Words words{static_cast<std::uint32_t>(split.vertex), split.savedColor,
                      record.flags.collapsed ? 1U : 0U, record.flags.survivorWasBorder ? 1U : 0U};
    for (const float coordinate : {split.position.x, split.position.y, split.position.z})
        test::appendFloat(words, coordinate);
    for (const auto* list :
         {&split.corners, &split.removedTriangles, &record.neighbours, &record.ringCorners}) {
        words.push_back(static_cast<std::uint32_t>(list->size()));
        test::append(words, *list);
    }
    return words;
}

// A mesh with all vertices queued, and what a thread needs to collapse on it.
struct Side {
    ProgressiveMesh pm;
    CollapseRecord record;
    ThreadWorkRecord threadRecord;
    CollapseScratch scratch;

    explicit Side(const DMesh& mesh) {
        test::prepare(pm, mesh);
        for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v)
            pm.costQueue.Insert(v);
    }
};

// The same mesh twice: `one` for the single-threaded forms, `many` for the others.
struct Twins {
    Side one;
    Side many;
    CriticalSections sections;

    explicit Twins(const DMesh& mesh) : one(mesh), many(mesh) {}

    template <typename Set>
    void set(Set set) {
        set(one.pm);
        set(many.pm);
    }
    CollapseResult run(std::int32_t v, std::int32_t w, const FloatVec3& position) {
        one.record.clear();
        many.record.clear();
        const CollapseResult result =
            CollapseEdge(one.pm, v, w, position, one.record, one.scratch, Alone(one.pm));
        EXPECT_EQ(CollapseEdge(many.pm, v, w, position, many.record, many.scratch,
                               Shared(many.pm, many.threadRecord, sections)),
                  result);
        EXPECT_EQ(wordsOf(many.record), wordsOf(one.record));
        return result;
    }
    CollapseResult run(std::int32_t v, std::int32_t w) {
        return run(v, w, one.pm.mesh.vertices[at(w)].position());
    }
    void undo(std::int32_t v, std::int32_t w) {
        UndoCollapse(one.pm.mesh, v, w, one.record, one.scratch, Alone(one.pm));
        UndoCollapse(many.pm.mesh, v, w, many.record, many.scratch,
                     Shared(many.pm, many.threadRecord, sections));
    }
    [[nodiscard]] bool areAlike() const { return test::stateOf(one.pm) == test::stateOf(many.pm); }
};

TEST(CollapseOnThreads, HasTheResultOfTheSingleThreadedForm) {
    Twins t(test::grid(3, 3));
    ASSERT_EQ(t.run(5, 6, {1.5F, 1, 0}), CollapseResult::Done);
    EXPECT_TRUE(t.areAlike());
    EXPECT_EQ(t.many.pm.mesh.numActiveVertices, 15U);
    EXPECT_EQ(t.many.pm.mesh.numActiveTriangles, 16U);
    EXPECT_EQ(t.many.record.split.removedTriangles, (IndexList{8, 3}));
    EXPECT_EQ(t.many.record.neighbours.size(), 8U);
    t.undo(5, 6);
    EXPECT_TRUE(t.areAlike());
    EXPECT_EQ(t.many.pm.mesh.numActiveVertices, 16U);
}

TEST(CollapseOnThreads, ARefusalByANormalChangesNothing) {
    Twins t(test::grid(3, 3));
    const test::Words before = test::stateOf(t.many.pm);
    EXPECT_EQ(t.run(5, 6, {10, 10, 0}), CollapseResult::Refused);
    EXPECT_TRUE(test::stateOf(t.many.pm) == before);
    EXPECT_TRUE(t.areAlike());
}

TEST(CollapseOnThreads, AVertexWithoutCornersIsRefusedWhateverTheSettings) {
    for (const bool guarded : {false, true}) {
        Side side(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}, {{0, 1, 2}}));
        side.pm.ProtectTopology = guarded;
        side.pm.AvoidNormalReverse = guarded;
        const test::Words before = test::stateOf(side.pm);
        CriticalSections sections;
        EXPECT_EQ(CollapseEdge(side.pm, 3, 0, {5, 5, 5}, side.record, side.scratch,
                               Shared(side.pm, side.threadRecord, sections)),
                  CollapseResult::Refused);
        EXPECT_TRUE(test::stateOf(side.pm) == before);
        EXPECT_EQ(side.record.split.vertex, kNone);
    }
}

TEST(CollapseOnThreads, ARefusalByTheLinkTestIsUndoneTheSameWay) {
    Twins both(test::grid(2, 1));
    EXPECT_EQ(both.run(1, 4), CollapseResult::RefusedBothBorder);
    EXPECT_TRUE(both.areAlike());
    EXPECT_TRUE(test::isSound(both.many.pm.mesh));
    EXPECT_TRUE(test::cornerListsAreSound(both.many.pm.mesh));

    Twins inner(test::grid(3, 3));
    inner.set([](ProgressiveMesh& pm) { pm.mesh.borderVertices.Set(5); });
    EXPECT_EQ(inner.run(5, 6), CollapseResult::Refused);
    EXPECT_TRUE(inner.areAlike());
    EXPECT_FALSE(inner.many.pm.mesh.borderVertices.Test(6));
}

TEST(CollapseOnThreads, ProtectTopologyRefusesToOrphanAVertex) {
    Twins t(test::oneTriangle());
    EXPECT_EQ(t.run(0, 1), CollapseResult::Refused);
    EXPECT_TRUE(t.areAlike());
    EXPECT_EQ(t.many.pm.mesh.numActiveVertices, 3U);
}

TEST(CollapseOnThreads, TheKeptVertexInheritsTheBorderUntilUndone) {
    Twins t(test::grid(3, 3));
    t.set([](ProgressiveMesh& pm) { pm.ProtectTopology = pm.AvoidNormalReverse = false; });
    ASSERT_EQ(t.run(1, 5), CollapseResult::Done);
    EXPECT_TRUE(t.many.pm.mesh.borderVertices.Test(5));
    EXPECT_TRUE(t.areAlike());
    t.undo(1, 5);
    EXPECT_FALSE(t.many.pm.mesh.borderVertices.Test(5));
    EXPECT_TRUE(t.areAlike());
}

TEST(CollapseOnThreads, WithoutProtectTopologyOrphansStayActiveAndQueued) {
    Twins t(test::oneTriangle());
    t.set([](ProgressiveMesh& pm) { pm.ProtectTopology = false; });
    ASSERT_EQ(t.run(0, 1), CollapseResult::Done);
    const ProgressiveMesh& pm = t.many.pm;
    for (const std::int32_t orphan : {1, 2}) {
        EXPECT_TRUE(pm.mesh.vertexCorners.isEmpty(orphan));
        EXPECT_TRUE(pm.mesh.vertexActive.Test(orphan));
        EXPECT_TRUE(pm.costQueue.isQueued(orphan));
    }
    EXPECT_EQ(pm.mesh.numActiveVertices, 2U);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 0U);
    // The single-threaded form owns the queue and removes both at once.
    EXPECT_EQ(t.one.pm.mesh.numActiveVertices, 0U);
    EXPECT_FALSE(t.one.pm.costQueue.isQueued(2));
    t.undo(0, 1);
    EXPECT_EQ(pm.mesh.numActiveVertices, 3U);
    EXPECT_TRUE(test::isSound(pm.mesh));
    EXPECT_TRUE(test::cornerListsAreSound(pm.mesh));
}

// Collapses at random and undoes every second collapse. When the single-threaded form removes an
// orphan, the twins differ, and the walk ends.
class RandomCollapses {
public:
    RandomCollapses(const DMesh& mesh, std::uint32_t seed) : random_(seed), t_(mesh) {
        const bool protect = random_.onceIn(2);
        const bool avoid = random_.onceIn(2);
        const bool finishing = random_.onceIn(4);
        t_.set([&](ProgressiveMesh& pm) {
            pm.ProtectTopology = protect;
            pm.AvoidNormalReverse = avoid;
            pm.inFinishStep = finishing;
        });
    }
    void run(int steps) {
        while (steps-- > 0 && !testing::Test::HasFailure() && takeStep()) {
        }
    }

private:
    bool takeStep() {
        const DMesh& mesh = t_.one.pm.mesh;
        const auto v = static_cast<std::int32_t>(
            random_.below(static_cast<std::uint32_t>(mesh.vertices.size())));
        IndexList ring;
        if (mesh.vertexActive.Test(v)) GetVertexNeighbours(mesh, v, ring);
        if (ring.empty()) return true;
        const std::int32_t w = ring[random_.below(static_cast<std::uint32_t>(ring.size()))];
        if (w == v) return true;
        const std::uint32_t before = mesh.numActiveVertices;
        const CollapseResult result =
            t_.run(v, w,
                   mesh.vertices[at(w)].position() +
                       FloatVec3{random_.around(0.2F), random_.around(0.2F), 0});
        if (result == CollapseResult::Done && mesh.numActiveVertices < before - 1) {
            EXPECT_EQ(t_.many.pm.mesh.numActiveVertices, before - 1);
            EXPECT_TRUE(test::countsMatchBits(t_.many.pm.mesh));
            return false;
        }
        if (result == CollapseResult::Done && random_.onceIn(2)) t_.undo(v, w);
        EXPECT_TRUE(t_.areAlike());
        return true;
    }

    test::Random random_;
    Twins t_;
};

TEST(CollapseOnThreads, MatchesTheSingleThreadedFormAtRandom) {
    DMesh dirty = test::grid(4, 4, test::hills);
    for (std::size_t i = 0; i < 15; ++i)
        dirty.triangles.push_back(dirty.triangles[i]);
    dirty.triangles.insert(dirty.triangles.end(), {7, 6, 12, 12, 6, 18, 8, 8, 9, 13, 13, 13});
    test::completeMesh(dirty);
    for (const DMesh& mesh : {test::sphere(2), test::torus(8, 6), test::grid(6, 5, test::hills),
                              test::tetrahedron(), dirty}) {
        for (std::uint32_t seed = 1; seed <= 12; ++seed) {
            RandomCollapses(mesh, seed).run(200);
            ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
        }
    }
}

constexpr std::int32_t kIslands = 16;

// Sixteen grids of 3 x 3 squares, interleaved like the teeth of a comb: vertex i of island k has
// the index 16 * i + k, and so has each triangle. Every byte of the bit arrays covers eight
// islands.
DMesh islands() {
    const DMesh grid = test::grid(3, 3);
    test::Points points;
    test::Faces faces;
    for (const VertexRecord& vertex : grid.vertices) {
        for (std::int32_t k = 0; k < kIslands; ++k)
            points.push_back(vertex.position() + FloatVec3{0, 0, static_cast<float>(k)});
    }
    for (std::size_t t = 0; t < grid.triangles.size(); t += 3) {
        for (std::uint32_t k = 0; k < kIslands; ++k) {
            const auto here = [&](std::size_t c) { return kIslands * grid.triangles[t + c] + k; };
            faces.push_back({here(0), here(1), here(2)});
        }
    }
    return test::buildMesh(points, faces);
}

// Each collapse moves vertex 1 of an island, on its border, onto the inner vertex 5.
constexpr std::int32_t removedOn(std::int32_t island) {
    return kIslands * 1 + island;
}
constexpr std::int32_t keptOn(std::int32_t island) {
    return kIslands * 5 + island;
}

// Four threads that collapse on the islands again and again, each on its own islands, which share
// their bytes with those of the others. The last collapses are not undone.
class Crowd {
public:
    static constexpr std::int32_t kThreads = 4;
    static constexpr int kRounds = 40'000;

    Crowd() : before(islands()) {
        pm.ProtectTopology = pm.AvoidNormalReverse = false;
        test::prepare(pm, before);
        test::onThreads(kThreads, [&](std::size_t thread) {
            Owner owner(*this, static_cast<std::int32_t>(thread));
            for (int round = 1; round < kRounds && !lost; ++round) {
                owner.collapse();
                owner.undo();
            }
            owner.collapse();
        });
    }

    const DMesh before;
    ProgressiveMesh pm;
    CriticalSections sections;
    std::atomic<bool> lost = false;

private:
    class Owner {
    public:
        Owner(Crowd& crowd, std::int32_t thread) : crowd_(crowd), first_(thread) {}

        void collapse() {
            for (std::size_t i = 0; i < kOwned; ++i) {
                records_[i].clear();
                CollapseEdge(crowd_.pm, removedOn(island(i)), keptOn(island(i)), {1, 0, 0},
                             records_[i], scratch_, shared_);
            }
            lookFor(true);
        }
        void undo() {
            for (std::size_t i = 0; i < kOwned; ++i) {
                UndoCollapse(crowd_.pm.mesh, removedOn(island(i)), keptOn(island(i)), records_[i],
                             scratch_, shared_);
            }
            lookFor(false);
        }

    private:
        static constexpr std::size_t kOwned = kIslands / kThreads;

        [[nodiscard]] std::int32_t island(std::size_t i) const {
            return first_ + kThreads * static_cast<std::int32_t>(i);
        }
        // Checks at once, as the next round would hide a lost bit.
        void lookFor(bool collapsed) {
            const DMesh& mesh = crowd_.pm.mesh;
            for (std::size_t i = 0; i < kOwned; ++i) {
                bool intact = mesh.vertexActive.Test(removedOn(island(i))) != collapsed &&
                              mesh.borderVertices.Test(keptOn(island(i))) == collapsed;
                for (const std::int32_t triangle : records_[i].split.removedTriangles)
                    intact = intact && mesh.triangleActive.Test(triangle) != collapsed;
                if (!intact) crowd_.lost = true;
            }
        }

        Crowd& crowd_;
        std::int32_t first_;
        CollapseRecord records_[kOwned];
        CollapseScratch scratch_;
        ThreadWorkRecord threadRecord_;
        Shared shared_{crowd_.pm, threadRecord_, crowd_.sections};
    };
};

class SharedBytes : public testing::Test {
protected:
    static void SetUpTestSuite() { crowd = std::make_unique<Crowd>(); }
    static void TearDownTestSuite() { crowd.reset(); }

    static inline std::unique_ptr<Crowd> crowd;
};

TEST_F(SharedBytes, NoThreadFindsItsBitsChangedByAnother) {
    EXPECT_FALSE(crowd->lost);
}

TEST_F(SharedBytes, RemovingVerticesLosesNoBitAndNoCount) {
    const DMesh& mesh = crowd->pm.mesh;
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v)
        EXPECT_EQ(mesh.vertexActive.Test(v), v / kIslands != 1) << v;
    EXPECT_EQ(mesh.numActiveVertices, 15U * kIslands);
}

TEST_F(SharedBytes, RemovingTrianglesLosesNoBitAndNoCount) {
    // The removed triangles hold the edge from 1 to 5.
    const DMesh& mesh = crowd->pm.mesh;
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        int ends = 0;
        for (std::size_t c = 3 * at(t); c < 3 * at(t) + 3; ++c) {
            const std::uint32_t row = crowd->before.triangles[c] / kIslands;
            ends += row == 1 || row == 5 ? 1 : 0;
        }
        EXPECT_EQ(mesh.triangleActive.Test(t), ends < 2) << t;
    }
    EXPECT_EQ(mesh.numActiveTriangles, 16U * kIslands);
}

TEST_F(SharedBytes, MovingBordersLosesNoBit) {
    // The inner vertices are 5, 6, 9 and 10; 5 has become part of the border.
    const DMesh& mesh = crowd->pm.mesh;
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        const std::int32_t row = v / kIslands;
        EXPECT_EQ(mesh.borderVertices.Test(v), row != 6 && row != 9 && row != 10) << v;
    }
}

TEST_F(SharedBytes, TheResultIsThatOfOneThread) {
    ProgressiveMesh one;
    CollapseRecord record;
    CollapseScratch scratch;
    one.ProtectTopology = one.AvoidNormalReverse = false;
    test::prepare(one, crowd->before);
    for (std::int32_t k = 0; k < kIslands; ++k) {
        for (int round = 1; round <= Crowd::kRounds; ++round) {
            record.clear();
            CollapseEdge(one, removedOn(k), keptOn(k), {1, 0, 0}, record, scratch, Alone(one));
            if (round == Crowd::kRounds) break;
            UndoCollapse(one.mesh, removedOn(k), keptOn(k), record, scratch, Alone(one));
        }
    }
    EXPECT_TRUE(test::stateOf(crowd->pm) == test::stateOf(one));
    EXPECT_TRUE(test::cornerListsAreSound(crowd->pm.mesh));
}

// The data that each section guards, as another thread sees it.
struct Guarded {
    const char* name;
    CriticalSection CriticalSections::*section;
    test::Words (*look)(const DMesh&);
};

test::Words bitsAndCount(const BitArray& bits, const std::uint32_t& count) {
    test::Words words{loadRelaxed(count)};
    test::append(words, bits);
    return words;
}

constexpr Guarded kGuarded[] = {
    {"vertices", &CriticalSections::csActiveVertices,
     [](const DMesh& mesh) { return bitsAndCount(mesh.vertexActive, mesh.numActiveVertices); }},
    {"triangles", &CriticalSections::csActiveTriangles,
     [](const DMesh& mesh) { return bitsAndCount(mesh.triangleActive, mesh.numActiveTriangles); }},
    {"borders", &CriticalSections::csBorderVertices,
     [](const DMesh& mesh) { return bitsAndCount(mesh.borderVertices, 0); }},
};

TEST(CollapseOnThreads, ChangesGuardedDataOnlyInsideItsSection) {
    for (const Guarded& guarded : kGuarded) {
        for (const bool undone : {false, true}) {
            Side side(test::grid(3, 3));
            CriticalSections sections;
            const DMesh& mesh = side.pm.mesh;
            side.pm.ProtectTopology = side.pm.AvoidNormalReverse = false;
            const auto collapse = [&] {
                CollapseEdge(side.pm, 1, 5, {1, 0, 0}, side.record, side.scratch,
                             Shared(side.pm, side.threadRecord, sections));
            };
            if (undone) collapse();

            const auto look = [&] { return guarded.look(mesh); };
            const test::Words before = look();
            EXPECT_TRUE(test::staysTheSameInside(
                sections.*guarded.section, look,
                [&] {
                    if (!undone) return collapse();
                    UndoCollapse(side.pm.mesh, 1, 5, side.record, side.scratch,
                                 Shared(side.pm, side.threadRecord, sections));
                }))
                << guarded.name << undone;
            EXPECT_NE(look(), before) << guarded.name << undone;
        }
    }
}

class CountsAfterARun : public test::DecimationTest {
protected:
    template <typename Set>
    static void expectExact(const DMesh& mesh, Set set) {
        for (const std::uint32_t part : {2U, 8U, 1000U}) {
            const test::MeshPtr pm = test::decimatedBy(
                MEMSPEED_TRADEOFF_LOW_MEM_MT, mesh, [&](ProgressiveMesh& settings) {
                    settings.NumThread = 4;
                    settings.TargetNumItem = settings.mesh.numActiveVertices / part;
                    set(settings);
                });
            EXPECT_EQ(pm->mesh.vertexActive.CountSet(),
                      static_cast<std::int32_t>(pm->mesh.numActiveVertices));
            EXPECT_EQ(pm->mesh.triangleActive.CountSet(),
                      static_cast<std::int32_t>(pm->mesh.numActiveTriangles));
            EXPECT_LT(pm->mesh.numActiveVertices, mesh.numActiveVertices);
            EXPECT_TRUE(test::isSound(pm->mesh));
            const auto reached = test::surfaceOf(pm->mesh);
            test::goAllUp(*pm);
            EXPECT_TRUE(test::isSound(pm->mesh));
            EXPECT_EQ(pm->mesh.numActiveVertices, mesh.numActiveVertices);
            EXPECT_TRUE(test::surfaceOf(pm->mesh) == test::surfaceOf(mesh));
            test::goAllDown(*pm);
            EXPECT_TRUE(test::isSound(pm->mesh));
            EXPECT_TRUE(test::surfaceOf(pm->mesh) == reached);
        }
    }
};

TEST_F(CountsAfterARun, OnSeveralThreadsMatchTheSetBits) {
    DMesh ball = test::sphere(4);
    test::jitter(ball, 0.005F, 3);
    expectExact(ball, [](ProgressiveMesh&) {});
    expectExact(test::grid(30, 30, test::hills), [](ProgressiveMesh&) {});
}

TEST_F(CountsAfterARun, WithSymmetryMatchTheSetBits) {
    expectExact(test::sphere(4), [](ProgressiveMesh& pm) { test::askForSymmetry(pm, 0); });
}

TEST_F(CountsAfterARun, WithoutProtectTopologyMatchTheSetBits) {
    // Triangles attached to the grid by one vertex or by none.
    DMesh mesh = test::grid(20, 20, test::hills);
    test::Random random(1);
    const auto last = static_cast<std::uint32_t>(mesh.vertices.size());
    for (std::uint32_t i = 0; i < 40; ++i) {
        for (std::uint32_t k = 0; k < 3; ++k) {
            mesh.vertices.emplace_back();
            mesh.vertices.back().setPosition(
                {random.around(9), random.around(9), random.around(3)});
        }
        const std::uint32_t first = last + 3 * i;
        const std::uint32_t third = random.onceIn(2) ? random.below(last) : first + 2;
        mesh.triangles.insert(mesh.triangles.end(), {first, first + 1, third});
    }
    test::completeMesh(mesh);
    expectExact(mesh, [](ProgressiveMesh& pm) { pm.ProtectTopology = false; });
}

}  // namespace
}  // namespace korvalite::core
