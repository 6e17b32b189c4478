// SPDX-License-Identifier: MIT
#include "ranking/neighbour_costs.h"

#include "drivers/preparation.h"
#include "metric/edge_cost.h"
#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost_init.h"
#include "support/prepared_mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <numbers>
#include <vector>

namespace korvalite::core {
namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

DMesh hillyGrid() {
    DMesh mesh = test::grid(8, 8, test::hills);
    test::jitter(mesh, 0.2F, 3);
    return mesh;
}

template <typename Metric>
struct Queued {
    ProgressiveMesh pm;
    NeighbourhoodMarks marks;
    NeighbourhoodScratch<Metric> scratch;

    explicit Queued(DMesh mesh) {
        test::prepare(pm, std::move(mesh));
        if (pm.mesh.hasColors()) {
            pm.m_useVertexColors_internal = true;
            computeColorScale(pm);
        }
        InitVerticesCostNoMat<Metric>(pm);
        marks.prepare(pm.mesh);
    }
    void update(std::int32_t kept) {
        Alone alone(pm);
        UpdateNeighbourCosts_LM(pm, kept, {}, {}, marks, scratch, alone);
    }
    [[nodiscard]] bool marksAreClear() const {
        const auto none = NeighbourhoodMarks::kNoSlot;
        return std::all_of(marks.vertexSlot.begin(), marks.vertexSlot.end(),
                           [&](std::uint16_t slot) { return slot == none; });
    }
};

// Computes the costs around a vertex again without slots: the quadrics of the kept vertex, its ring
// and its outer ring come from the triangles that touch the kept vertex or the outer ring.
template <typename Metric>
class Slowly {
public:
    Slowly(const ProgressiveMesh& pm, std::int32_t kept) : pm_(pm), kept_(kept) {
        GetVertexNeighbours(pm.mesh, kept, ring_);
        listTriangles();
        for (const std::int32_t triangle : triangles_) {
            const auto quadric = Metric::triangleQuadric(pm.mesh, pm, triangle);
            for (std::int32_t c = 3 * triangle; c < 3 * triangle + 3; ++c)
                quadrics_[vertexAt(pm.mesh, c)] += quadric;
        }
        for (const std::int32_t w : ring_)
            rankAgainstNeighbours(w);
    }
    std::map<std::int32_t, std::pair<float, std::int32_t>> best;

private:
    void listTriangles() {
        const auto list = [&](std::int32_t vertex) {
            forEachCorner(pm_.mesh, vertex, [&](std::int32_t c) {
                if (!contains(triangles_, c / 3)) triangles_.push_back(c / 3);
            });
        };
        list(kept_);
        IndexList seen = ring_;
        seen.push_back(kept_);
        IndexList around;
        std::vector<std::int32_t> outer;
        for (const std::int32_t w : ring_) {
            GetVertexNeighbours(pm_.mesh, w, around);
            for (const std::int32_t x : around) {
                if (contains(seen, x)) continue;
                seen.push_back(x);
                outer.push_back(x);
            }
        }
        for (const std::int32_t x : outer)
            list(x);
    }
    void rankAgainstNeighbours(std::int32_t w) {
        IndexList around;
        GetVertexNeighbours(pm_.mesh, w, around);
        for (const std::int32_t x : around) {
            if (contains(ring_, x) && x < w) continue;
            const BitArray& seam = pm_.mesh.uvSeamVertices;
            const BitArray& seamCorner = pm_.mesh.uvSeamCorners;
            if (pm_.m_handleUVs_internal && seam.Test(w) && seam.Test(x) &&
                (seamCorner.Test(w) || seamCorner.Test(x)))
                continue;
            EdgeEvaluation edge;
            Metric::evaluateEdge(pm_.mesh, pm_, edge, w, x, quadrics_[w] + quadrics_[x]);
            take(w, x, edge.cost);
            if (x == kept_ || contains(ring_, x)) take(x, w, edge.cost);
        }
    }
    void take(std::int32_t vertex, std::int32_t partner, float cost) {
        auto& entry = best.try_emplace(vertex, kNotCollapsible, kNone).first->second;
        if (entry.first > cost) entry = {cost, partner};
    }

    const ProgressiveMesh& pm_;
    std::int32_t kept_;
    IndexList ring_;
    IndexList triangles_;
    std::map<std::int32_t, typename Metric::Quadric> quadrics_;
};

template <typename Metric>
void expectReferenceCosts(Queued<Metric>& m) {
    for (std::int32_t kept = 0; kept < m.pm.mesh.vertexCount(); ++kept) {
        const Slowly<Metric> expected(m.pm, kept);
        m.update(kept);
        for (const auto& [vertex, entry] : expected.best) {
            EXPECT_EQ(m.pm.mesh.vertices[at(vertex)].cost, entry.first) << kept << ' ' << vertex;
            EXPECT_EQ(m.pm.mesh.vertices[at(vertex)].partner, entry.second) << kept;
        }
        EXPECT_TRUE(m.marksAreClear());
    }
}

template <typename Metric>
void expectReferenceCosts(DMesh mesh) {
    Queued<Metric> m(std::move(mesh));
    expectReferenceCosts(m);
}

TEST(UpdateNeighbourCosts, RanksTheKeptVertexAndItsRingByFreshQuadrics) {
    expectReferenceCosts<PlainMetric>(hillyGrid());
    expectReferenceCosts<PlainMetric>(test::sphere(2));
}

TEST(UpdateNeighbourCosts, DoesTheSameWithColours) {
    expectReferenceCosts<ColorMetric>(test::colorfulBall());
}

// Flat in one half, at a height of a third, where errors are rounding errors of either sign; hilly
// in the other half.
DMesh halfFlatGrid() {
    return test::grid(8, 8, [](std::uint32_t c, std::uint32_t r) {
        return c < 5 ? 1.0F / 3.0F : test::hills(c, r);
    });
}

TEST(UpdateNeighbourCosts, DoesTheSameWhereCollapsesCostNothing) {
    expectReferenceCosts<PlainMetric>(test::grid(8, 8));
    expectReferenceCosts<PlainMetric>(halfFlatGrid());
    DMesh tilted = halfFlatGrid();
    for (VertexRecord& vertex : tilted.vertices)
        vertex.setPosition({vertex.x, 0.6F * vertex.y - 0.8F * vertex.z, vertex.z + vertex.y / 7});
    expectReferenceCosts<PlainMetric>(tilted);
    DMesh coloured = halfFlatGrid();
    test::addColors(coloured, [](const FloatVec3&) { return test::packColor(10, 20, 30); });
    expectReferenceCosts<ColorMetric>(coloured);
}

TEST(UpdateNeighbourCosts, DoesTheSameWhereFlatGroundWasRefusedBefore) {
    Queued<PlainMetric> m(halfFlatGrid());
    for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v)
        Penalize(m.pm.mesh, m.pm.costQueue, v);
    expectReferenceCosts(m);
}

TEST(UpdateNeighbourCosts, LeavesOutEdgesHeldByASeam) {
    // A seam across the grid with a bend in the middle.
    Queued<PlainMetric> m(hillyGrid());
    m.pm.m_handleUVs_internal = true;
    m.pm.mesh.uvSeamVertices.Resize(m.pm.mesh.vertexCount(), false);
    m.pm.mesh.uvSeamCorners.Resize(m.pm.mesh.vertexCount(), false);
    for (std::int32_t v = 36; v < 45; ++v)
        m.pm.mesh.uvSeamVertices.Set(v);
    m.pm.mesh.uvSeamCorners.Set(40);
    expectReferenceCosts(m);
    EXPECT_NE(m.pm.mesh.vertices[40].partner, 39);
    EXPECT_NE(m.pm.mesh.vertices[40].partner, 41);
    EXPECT_NE(m.pm.mesh.vertices[39].partner, 40);
    EXPECT_NE(m.pm.mesh.vertices[41].partner, 40);
}

TEST(UpdateNeighbourCosts, OmitsTrianglesOfRingVerticesAloneFromTheQuadrics) {
    // Around vertex 0 of a tetrahedron, all other vertices are ring: the triangle 1 2 3 is not
    // listed, and the edge 1-2 costs as much as if that face did not exist.
    Queued<PlainMetric> whole(test::tetrahedron());
    expectReferenceCosts(whole);
    DMesh open = test::tetrahedron();
    open.triangles.resize(9);
    test::completeMesh(open);
    Queued<PlainMetric> without(open);
    without.pm.mesh.borderVertices.Reset(4);
    without.update(0);
    whole.update(0);
    for (std::size_t v = 0; v < 4; ++v)
        EXPECT_EQ(whole.pm.mesh.vertices[v].cost, without.pm.mesh.vertices[v].cost) << v;
}

TEST(UpdateNeighbourCosts, UsesTheListsOfTheCollapseAsTheRing) {
    Queued<PlainMetric> with(hillyGrid());
    Queued<PlainMetric> without(hillyGrid());
    IndexList ring;
    IndexList corners;
    GetVertexCornersAndNeighbours(with.pm.mesh, 40, ring, corners);
    Alone alone(with.pm);
    UpdateNeighbourCosts_LM(with.pm, 40, corners, ring, with.marks, with.scratch, alone);
    without.update(40);
    for (std::size_t v = 0; v < with.pm.mesh.vertices.size(); ++v) {
        EXPECT_EQ(with.pm.mesh.vertices[v].cost, without.pm.mesh.vertices[v].cost);
        EXPECT_EQ(with.pm.mesh.vertices[v].partner, without.pm.mesh.vertices[v].partner);
    }
}

TEST(UpdateNeighbourCosts, QueuesAllItRanksAndChangesNoOtherVertex) {
    Queued<PlainMetric> m(hillyGrid());
    const std::vector<VertexRecord> before(m.pm.mesh.vertices.begin(), m.pm.mesh.vertices.end());
    m.pm.mesh.vertices[40].z += 1;
    m.update(40);
    IndexList ring;
    GetVertexNeighbours(m.pm.mesh, 40, ring);
    for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v) {
        if (v == 40 || contains(ring, v)) {
            EXPECT_TRUE(m.pm.costQueue.isQueued(v));
        } else {
            EXPECT_EQ(m.pm.mesh.vertices[at(v)].cost, before[at(v)].cost) << v;
        }
    }
}

TEST(UpdateNeighbourCosts, NeitherRanksNorQueuesASlaveButItsNeighboursSeeIt) {
    Queued<PlainMetric> m(hillyGrid());
    IndexList ring;
    GetVertexNeighbours(m.pm.mesh, 40, ring);
    m.pm.m_handleSymmetry_internal = true;
    m.pm.symmetrySlaves.Resize(m.pm.mesh.vertexCount(), false);
    m.pm.symmetrySlaves.Set(ring[0]);
    m.update(40);
    EXPECT_EQ(m.pm.mesh.vertices[at(ring[0])].cost, kNotCollapsible);
    EXPECT_FALSE(m.pm.costQueue.isQueued(ring[0]));
    EXPECT_LT(m.pm.mesh.vertices[40].cost, kNotCollapsible);
}

TEST(UpdateNeighbourCosts, UnqueuesAVertexWithoutTriangles) {
    Queued<PlainMetric> m(
        test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}}, {{0, 1, 2}}));
    m.pm.mesh.vertices[3].cost = 1;
    m.pm.costQueue.Insert(3);
    m.update(3);
    EXPECT_FALSE(m.pm.costQueue.isQueued(3));
    EXPECT_EQ(m.pm.mesh.vertices[3].partner, kNone);
}

TEST(UpdateNeighbourCosts, NeverMakesAVertexItsOwnPartner) {
    DMesh mesh = hillyGrid();
    mesh.triangles.insert(mesh.triangles.end(), {40, 41, 41, 40, 40, 31});
    test::completeMesh(mesh);
    Queued<PlainMetric> m(mesh);
    for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v) {
        m.update(v);
        for (const std::int32_t x : {31, 40, 41})
            EXPECT_NE(m.pm.mesh.vertices[at(x)].partner, x) << v;
    }
    EXPECT_TRUE(m.marksAreClear());
}

TEST(UpdateNeighbourCosts, AcceptsCoordinatesThatAreNotFinite) {
    DMesh mesh = hillyGrid();
    mesh.vertices[40].x = std::numeric_limits<float>::quiet_NaN();
    mesh.vertices[30].y = std::numeric_limits<float>::infinity();
    Queued<PlainMetric> m(mesh);
    for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v)
        m.update(v);
    EXPECT_TRUE(m.marksAreClear());
}

// A fan of `spokes` triangles around vertex 0.
DMesh hub(std::uint32_t spokes) {
    test::Points points{{0, 0, 1}};
    test::Faces faces;
    for (std::uint32_t i = 0; i < spokes; ++i) {
        const double angle = 2 * std::numbers::pi * i / spokes;
        points.push_back(
            {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0});
        faces.push_back({0, i + 1, (i + 1) % spokes + 1});
    }
    return test::buildMesh(points, faces);
}

TEST(UpdateNeighbourCosts, RanksOnlyTheVerticesThatFitTheSlots) {
    DMesh mesh = hub(70000);
    ProgressiveMesh pm;
    test::prepareUnranked(pm, std::move(mesh));
    NeighbourhoodMarks marks;
    NeighbourhoodScratch<PlainMetric> scratch;
    marks.prepare(pm.mesh);
    Alone alone(pm);
    UpdateNeighbourCosts_LM(pm, 0, {}, {}, marks, scratch, alone);
    std::size_t ranked = 0;
    for (const VertexRecord& vertex : pm.mesh.vertices)
        ranked += vertex.cost != kNotCollapsible ? 1 : 0;
    EXPECT_LE(ranked, 65535U);
    EXPECT_GT(ranked, 65000U);
    for (const std::uint16_t slot : marks.vertexSlot)
        ASSERT_EQ(slot, 65535);
}

}  // namespace
}  // namespace korvalite::core
