// SPDX-License-Identifier: MIT
#include "ranking/initial_edges.h"

#include "support/mirrored_grid.h"
#include "support/stop_request.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <utility>
#include <vector>

namespace korvalite::core {

std::ostream& operator<<(std::ostream& out, EdgeVerdict verdict) {
    return out << (verdict == EdgeVerdict::Evaluate ? "evaluate"
                   : verdict == EdgeVerdict::Skip   ? "skip"
                                                    : "skip unasked");
}

namespace {

using Edge = std::pair<std::int32_t, std::int32_t>;
using Edges = std::vector<Edge>;

constexpr std::int32_t at(std::int32_t column, std::int32_t row) {
    return test::MirroredGrid::at(column, row);
}

struct Mirrored : test::MirroredGrid {
    EdgeEnds ends;
    EdgeVerdict judge(std::int32_t a, std::int32_t b) {
        ends = {};
        return judgeInitialEdge(pm, a, b, ends);
    }
    void enslave(std::int32_t v) {
        if (pm.symmetrySlaves.count() == 0) pm.symmetrySlaves.Resize(pm.mesh.vertexCount(), false);
        pm.symmetrySlaves.Set(v);
    }
    void markSeam(const IndexList& seam, std::int32_t corner) {
        pm.m_handleUVs_internal = true;
        pm.mesh.uvSeamVertices.Resize(pm.mesh.vertexCount(), false);
        pm.mesh.uvSeamCorners.Resize(pm.mesh.vertexCount(), false);
        for (const std::int32_t v : seam)
            pm.mesh.uvSeamVertices.Set(v);
        pm.mesh.uvSeamCorners.Set(corner);
    }
};

TEST(InitialEdges, AnInnerEdgeIsEvaluatedAtItsLowerEnd) {
    Mirrored m;
    EXPECT_EQ(m.judge(at(1, 1), at(2, 1)), EdgeVerdict::Evaluate);
    EXPECT_EQ(m.judge(at(2, 1), at(1, 1)), EdgeVerdict::Skip);
    EXPECT_TRUE(m.ends.updateA && m.ends.updateB);
}

TEST(InitialEdges, AnEdgeWithABorderEndIsEvaluatedInEitherDirection) {
    Mirrored m;
    for (const Edge& edge : {Edge{at(1, 0), at(2, 0)}, Edge{at(1, 0), at(1, 1)}}) {
        EXPECT_EQ(m.judge(edge.first, edge.second), EdgeVerdict::Evaluate);
        EXPECT_EQ(m.judge(edge.second, edge.first), EdgeVerdict::Evaluate);
    }
}

TEST(InitialEdges, AVertexIsNotEvaluatedAgainstItself) {
    Mirrored m;
    EXPECT_EQ(m.judge(at(1, 0), at(1, 0)), EdgeVerdict::Skip);
}

TEST(InitialEdges, SlavesGetNoCostAndAreNotEvaluatedTogether) {
    Mirrored m;
    m.enslave(at(2, 2));
    EXPECT_EQ(m.judge(at(1, 2), at(2, 2)), EdgeVerdict::Evaluate);
    EXPECT_TRUE(m.ends.updateA);
    EXPECT_FALSE(m.ends.updateB);
    EXPECT_EQ(m.judge(at(2, 2), at(3, 2)), EdgeVerdict::Evaluate);
    EXPECT_FALSE(m.ends.updateA);
    EXPECT_TRUE(m.ends.updateB);
    m.enslave(at(3, 2));
    EXPECT_EQ(m.judge(at(2, 2), at(3, 2)), EdgeVerdict::SkipUnasked);
    m.pm.m_handleSymmetry_internal = false;
    EXPECT_EQ(m.judge(at(2, 2), at(3, 2)), EdgeVerdict::Evaluate);
}

TEST(InitialEdges, TwoSlavesAcrossThePlaneAreStillEvaluated) {
    Mirrored m;
    m.pair(at(2, 2), at(3, 2));
    m.enslave(at(2, 2));
    m.enslave(at(3, 2));
    EXPECT_EQ(m.judge(at(2, 2), at(3, 2)), EdgeVerdict::Evaluate);
    EXPECT_FALSE(m.ends.updateA || m.ends.updateB);
}

TEST(InitialEdges, WithinThePlaneSlavesDoNotMatter) {
    Mirrored m;
    m.enslave(at(0, 1));
    EXPECT_EQ(m.judge(at(0, 1), at(0, 2)), EdgeVerdict::Evaluate);
    EXPECT_TRUE(m.ends.updateA && m.ends.updateB);
}

TEST(InitialEdges, TheSeamRuleExemptsEdgesWithinAndAcrossThePlane) {
    Mirrored m;
    m.markSeam({at(1, 1), at(1, 2), at(0, 1), at(0, 2), at(2, 2), at(3, 2)}, at(1, 2));
    m.pm.mesh.uvSeamCorners.Set(at(0, 2));
    m.pm.mesh.uvSeamCorners.Set(at(3, 2));
    m.pair(at(2, 2), at(3, 2));
    EXPECT_EQ(m.judge(at(1, 1), at(1, 2)), EdgeVerdict::SkipUnasked);
    EXPECT_EQ(m.judge(at(0, 1), at(0, 2)), EdgeVerdict::Evaluate) << "within the plane";
    EXPECT_EQ(m.judge(at(2, 2), at(3, 2)), EdgeVerdict::Evaluate) << "across the plane";
    m.pm.m_handleSymmetry_internal = false;
    EXPECT_EQ(m.judge(at(0, 1), at(0, 2)), EdgeVerdict::SkipUnasked);
    EXPECT_EQ(m.judge(at(2, 2), at(3, 2)), EdgeVerdict::SkipUnasked);
    m.pm.m_handleUVs_internal = false;
    EXPECT_EQ(m.judge(at(1, 1), at(1, 2)), EdgeVerdict::Evaluate);
}

// Walks with costs from a function and returns the edges asked for.
template <typename CostOf>
Edges walk(ProgressiveMesh& pm, CostOf costOf) {
    for (VertexRecord& vertex : pm.mesh.vertices)
        forgetCost(vertex);
    Edges asked;
    rankInitialEdges(
        pm,
        [&](EdgeEvaluation& edge, std::int32_t a, std::int32_t b) {
            asked.emplace_back(a, b);
            edge.cost = costOf(a, b);
        },
        [](std::int32_t, const EdgeEvaluation&) {});
    return asked;
}

constexpr auto kAllOne = [](std::int32_t, std::int32_t) { return 1.0F; };

TEST(InitialEdges, EachEdgeOfAClosedMeshIsVisitedOnceInCornerOrder) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    // The triangles are 0 2 1, 0 1 3, 0 3 2 and 1 2 3.
    EXPECT_EQ(walk(pm, kAllOne), (Edges{{0, 2}, {0, 1}, {1, 3}, {0, 3}, {1, 2}, {2, 3}}));
}

TEST(InitialEdges, TheFirstOfEqualCostsWinsAtBothEnds) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    walk(pm, kAllOne);
    const std::vector<std::int32_t> partners{2, 0, 0, 1};
    for (std::size_t v = 0; v < 4; ++v) {
        EXPECT_EQ(pm.mesh.vertices[v].partner, partners[v]) << v;
        EXPECT_EQ(pm.mesh.vertices[v].cost, 1.0F);
    }
}

TEST(InitialEdges, ALowerCostReplacesAnEarlierOne) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    walk(pm, [](std::int32_t a, std::int32_t b) {
        if (a == 2 || b == 2) return kNotCollapsible;
        return static_cast<float>(10 - a - b);
    });
    EXPECT_EQ(pm.mesh.vertices[0].partner, 3);
    EXPECT_EQ(pm.mesh.vertices[1].partner, 3);
    EXPECT_EQ(pm.mesh.vertices[2].partner, kNone);
    EXPECT_EQ(pm.mesh.vertices[3].partner, 1);
}

TEST(InitialEdges, TrianglesRemovedByAnEarlierRunAreSkipped) {
    ProgressiveMesh pm;
    test::prepare(pm, test::twoTriangles());
    pm.mesh.triangleActive.Clear(1);
    EXPECT_EQ(walk(pm, kAllOne), (Edges{{0, 1}, {1, 2}, {2, 0}}));
    EXPECT_EQ(pm.mesh.vertices[3].partner, kNone);
}

TEST(InitialEdges, AStopRequestEndsTheWalkAfterTheFirstEdge) {
    const test::StopRequest stop;
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    EXPECT_EQ(walk(pm, kAllOne), (Edges{{0, 2}}));
    // Here the first edge is 2-1, visited from its upper end and therefore skipped.
    test::prepare(pm, test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                                      {{2, 1, 0}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}}));
    EXPECT_TRUE(walk(pm, kAllOne).empty());
}

TEST(InitialEdges, AtAForbiddenEdgeStopRequestsAreNotChecked) {
    const test::StopRequest stop;
    Mirrored m;
    // The first edge of the first triangle is forbidden.
    const auto a = static_cast<std::int32_t>(m.pm.mesh.triangles[0]);
    const auto b = static_cast<std::int32_t>(m.pm.mesh.triangles[1]);
    m.markSeam({a, b}, a);
    m.pm.m_handleSymmetry_internal = false;
    const Edges asked = walk(m.pm, kAllOne);
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_EQ(asked[0].first, b);
}

TEST(InitialEdges, TheQueueGetsAllCollapsibleVertices) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    for (std::size_t v = 0; v < 4; ++v)
        pm.mesh.vertices[v].cost = v == 1 ? kNotCollapsible : static_cast<float>(5 - v);
    fillQueue(pm);
    EXPECT_EQ(pm.costQueue.vertexCount(), 4);
    for (const std::int32_t expected : {3, 2, 0, -1}) {
        const std::int32_t top = pm.costQueue.Top();
        EXPECT_EQ(top, expected);
        if (top != -1) pm.costQueue.Remove(top);
    }
}

}  // namespace
}  // namespace korvalite::core
