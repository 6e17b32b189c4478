// SPDX-License-Identifier: MIT
#include "metric/edge_cost.h"

#include "progressive/progressive_mesh.h"
#include "support/mesh_builder.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace korvalite::core {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const FloatVec3 kEntryPosition{77, 78, 79};

// Two vertices, 0 at the origin and 1 at (1, 0, 0), and bits to set for each.
struct Edge {
    ProgressiveMesh pm;

    Edge() {
        pm.mesh = test::buildMesh({{0, 0, 0}, {1, 0, 0}}, {});
        pm.mesh.borderVertices.Resize(2, false);
        pm.mesh.uvSeamVertices.Resize(2, false);
        pm.mesh.uvSeamCorners.Resize(2, false);
    }
    Edge& border(std::int32_t v) {
        pm.mesh.borderVertices.Set(v);
        return *this;
    }
    Edge& seam(std::int32_t v) {
        pm.m_handleUVs_internal = true;
        pm.mesh.uvSeamVertices.Set(v);
        return *this;
    }
    [[nodiscard]] EdgeEvaluation evaluate(const Quadric3D& quadric, std::int32_t a = 0,
                                          std::int32_t b = 1) const {
        EdgeEvaluation result;
        result.position = kEntryPosition;
        EvaluateEdgeCost(pm.mesh, pm, result, a, b, quadric);
        return result;
    }
};

void expectPosition(const EdgeEvaluation& result, const FloatVec3& expected) {
    EXPECT_EQ(result.position.x, expected.x);
    EXPECT_EQ(result.position.y, expected.y);
    EXPECT_EQ(result.position.z, expected.z);
}

// scale * |p - minimum|^2 + value
Quadric3D bowl(double scale, const DoubleVec3& minimum, double value) {
    return {{scale, 0, 0, scale, 0, scale, -scale * minimum.x, -scale * minimum.y,
             -scale * minimum.z, scale * dot(minimum, minimum) + value}};
}

// The plane z = 0, which contains every point of the edge.
Quadric3D flatPatch() {
    return planeQuadric(0.0, 0.0, 1.0, 0.0);
}

TEST(EvaluateEdgeCost, TakesTheMinimumOfTheQuadric) {
    const EdgeEvaluation result = Edge().evaluate(bowl(1, {1, 2, 3}, 0.25));
    EXPECT_EQ(result.cost, 0.25F);
    expectPosition(result, {1, 2, 3});
}

TEST(EvaluateEdgeCost, TakesTheCostAtTheRoundedPosition) {
    // The minimum is at a third, which is not a float: the cost is what the rounding leaves.
    const Quadric3D q{{3e9, 0, 0, 1, 0, 1, -1e9, 0, 0, 1e9 / 3.0}};
    const float x = 1.0F / 3.0F;
    const EdgeEvaluation result = Edge().evaluate(q);
    EXPECT_EQ(result.position.x, x);
    EXPECT_EQ(result.cost, static_cast<float>(evaluateQuadric(q, {static_cast<double>(x), 0, 0})));
    EXPECT_GT(result.cost, 0.0F);
}

TEST(EvaluateEdgeCost, ASolvedCostBelowZeroIsZero) {
    const EdgeEvaluation result = Edge().evaluate(bowl(1, {1, 2, 3}, -5));
    EXPECT_EQ(result.cost, 0.0F);
    expectPosition(result, {1, 2, 3});
}

TEST(EvaluateEdgeCost, OnAFlatPatchTheSampleAtVertexAWins) {
    EdgeEvaluation result = Edge().evaluate(flatPatch());
    EXPECT_EQ(result.cost, 0.0F);
    expectPosition(result, {0, 0, 0});
    result = Edge().evaluate(flatPatch(), 1, 0);
    EXPECT_EQ(result.cost, 0.0F);
    expectPosition(result, {1, 0, 0});
}

TEST(EvaluateEdgeCost, ForASingularBlockTheBestOfNineSamplesWins) {
    // The error is 4 (x - 0.3)^2, in x alone; 0.25 is the nearest of the samples at eighths.
    const Quadric3D q{{4, 0, 0, 0, 0, 0, -1.2, 0, 0, 0.36}};
    const EdgeEvaluation result = Edge().evaluate(q);
    expectPosition(result, {0.25F, 0, 0});
    EXPECT_EQ(result.cost, static_cast<float>(evaluateQuadric(q, {0.25, 0, 0})));
}

TEST(EvaluateEdgeCost, NearASingularBlockTheSamplesMayBeatTheMinimum) {
    // The error is negative around (0.3, 0, 0). That of the minimum is clamped to 0, and the
    // samples at eighths of the edge are lower.
    const Quadric3D shallow = bowl(0.05, {0.3, 0, 0}, -1);  // 0.05^3 < 0.001
    Edge edge;
    expectPosition(edge.evaluate(shallow), {0.25F, 0, 0});
    EXPECT_EQ(edge.evaluate(shallow).cost, 0.0F);
    edge.pm.useDegeneracySearch = false;
    expectPosition(edge.evaluate(shallow), {0.3F, 0, 0});
    edge.pm.useDegeneracySearch = true;
    expectPosition(edge.evaluate(bowl(0.11, {0.3, 0, 0}, -1)), {0.3F, 0, 0});  // 0.11^3 > 0.001
}

TEST(EvaluateEdgeCost, TheSamplesMustBeatTheMinimumStrictly) {
    expectPosition(Edge().evaluate(bowl(0.05, {0.3, 0, 0}, 0)), {0.3F, 0, 0});
    expectPosition(Edge().evaluate(bowl(0.0625, {0.5, 0, 0}, 0)), {0.5F, 0, 0});
}

TEST(EvaluateEdgeCost, DegeneracyHasItsOwnMeasureNotTheDeterminant) {
    // [[0.5, 0, 0.25], [0, 1, 0], [0.25, 0, 0.5]]: the determinant is 0.1875, the measure 0.25 -
    // 0.25.
    Quadric3D q{{0.5, 0, 0.25, 1, 0, 0.5, -0.15, 0, -0.075, -1}};
    expectPosition(Edge().evaluate(q), {0.25F, 0, 0});
    // The same with the sign of both corners flipped: 0.25 + 0.25.
    q = {{0.5, 0, -0.25, 1, 0, 0.5, -0.15, 0, 0.075, -1}};
    EXPECT_NEAR(Edge().evaluate(q).position.x, 0.3, 1e-6);
    // With every term, the measure q0 q3 q5 - q4 q4 - q1 q1 q5 - q2 q4 + q1 q2 q4 - q2 q3 is 24 - 1
    // - 4 - 0.5 + 0.5 - 1 = 18 here, and the determinant is 20.5.
    q = {{2, 1, 0.5, 2, 1, 6, 0, 0, 0, -1}};
    q.q[5] = (0.5 * 1 - 1 * 0.5 * 1 + 0.5 * 2 + 1) / (2 * 2 - 1);  // makes the measure 0
    const auto& m = q.q;
    ASSERT_LT(std::abs(m[0] * m[3] * m[5] - m[4] * m[4] - m[1] * m[1] * m[5] - m[2] * m[4] +
                       m[1] * m[2] * m[4] - m[2] * m[3]),
              1e-12);
    ASSERT_GT(std::abs(m[0] * (m[3] * m[5] - m[4] * m[4]) - m[1] * (m[1] * m[5] - m[4] * m[2]) +
                       m[2] * (m[1] * m[4] - m[3] * m[2])),
              0.1);
    // The minimum is the origin with -1, clamped to 0; the sample at the origin has -1.
    expectPosition(Edge().evaluate(q, 1, 0), {0, 0, 0});
}

TEST(EvaluateEdgeCost, OneBorderEndIsKeptAndItsCostIsNotClamped) {
    const Quadric3D q = bowl(1, {5, 0, 0}, -100);
    EdgeEvaluation result = Edge().border(0).evaluate(q);
    expectPosition(result, {0, 0, 0});
    EXPECT_EQ(result.cost, -75.0F);
    result = Edge().border(1).evaluate(q);
    expectPosition(result, {1, 0, 0});
    EXPECT_EQ(result.cost, -84.0F);
    result = Edge().border(0).evaluate(q, 1, 0);
    expectPosition(result, {0, 0, 0});
}

TEST(EvaluateEdgeCost, BetweenTwoBorderEndsTheSamplesDecide) {
    for (const std::int32_t mode : {BORDER_MODE_NONE, BORDERMODE_PROTECT}) {
        Edge edge;
        edge.border(0).border(1).pm.BorderMode = mode;
        const EdgeEvaluation result = edge.evaluate(bowl(1, {0.6, 2, 0}, 0));
        expectPosition(result, {0.625F, 0, 0});
        EXPECT_EQ(result.cost,
                  static_cast<float>(evaluateQuadric(bowl(1, {0.6, 2, 0}, 0), {0.625, 0, 0})));
        EXPECT_EQ(edge.evaluate(bowl(1, {0.5, 0, 0}, -3)).cost, 0.0F);
    }
}

TEST(EvaluateEdgeCost, AFrozenBorderForbidsTheEdgeBeforeTheMaskApplies) {
    for (const std::int32_t vertex : {0, 1}) {
        Edge edge;
        edge.border(vertex).pm.BorderMode = BORDERMODE_FREEZE;
        edge.pm.mesh.maskValues = {100, 100};  // would make FLT_MAX infinite
        const EdgeEvaluation result = edge.evaluate(bowl(1, {1, 2, 3}, 0));
        EXPECT_EQ(result.cost, kNotCollapsible);
        expectPosition(result, kEntryPosition);
    }
    Edge inner;
    inner.pm.BorderMode = BORDERMODE_FREEZE;
    expectPosition(inner.evaluate(bowl(1, {1, 2, 3}, 0)), {1, 2, 3});
}

TEST(EvaluateEdgeCost, OneSeamEndIsKept) {
    const Quadric3D q = bowl(1, {5, 0, 0}, 0);
    expectPosition(Edge().seam(0).evaluate(q), {0, 0, 0});
    expectPosition(Edge().seam(1).evaluate(q), {1, 0, 0});
    // A seam at a wins over the border's choice.
    expectPosition(Edge().seam(0).border(1).evaluate(q), {0, 0, 0});
    expectPosition(Edge().seam(0).border(0).border(1).evaluate(q), {0, 0, 0});
    // With a seam at b, the border's end stays: a, if only a is on a border.
    expectPosition(Edge().seam(1).border(0).evaluate(q), {0, 0, 0});
    expectPosition(Edge().seam(1).border(1).evaluate(q), {1, 0, 0});
    expectPosition(Edge().seam(1).border(0).border(1).evaluate(q), {1, 0, 0});
}

TEST(EvaluateEdgeCost, BetweenTwoSeamEndsSamplesInsteadOfSolving) {
    const Quadric3D q = bowl(1, {0.6, 2, 0}, 0);
    expectPosition(Edge().seam(0).seam(1).evaluate(q), {0.625F, 0, 0});
    expectPosition(Edge().seam(0).seam(1).border(0).evaluate(q), {0, 0, 0});
    expectPosition(Edge().seam(0).seam(1).border(1).evaluate(q), {1, 0, 0});
    expectPosition(Edge().seam(0).seam(1).border(0).border(1).evaluate(q), {0.625F, 0, 0});
}

TEST(EvaluateEdgeCost, SeamsCountOnlyWhileUVsAreHandled) {
    Edge edge;
    edge.seam(0).pm.m_handleUVs_internal = false;
    expectPosition(edge.evaluate(bowl(1, {1, 2, 3}, 0)), {1, 2, 3});
}

TEST(EvaluateEdgeCost, VerticesOutsideTheBitArraysAreNeitherBorderNorSeam) {
    Edge edge;
    edge.pm.m_handleUVs_internal = true;
    edge.pm.BorderMode = BORDERMODE_FREEZE;
    edge.pm.mesh.borderVertices.Free();
    edge.pm.mesh.uvSeamVertices.Free();
    expectPosition(edge.evaluate(bowl(1, {1, 2, 3}, 0)), {1, 2, 3});
}

TEST(EvaluateEdgeCost, SamplesAreComputedInFloats) {
    test::Random random(17);
    for (int round = 0; round < 300; ++round) {
        Edge edge;
        edge.border(0).border(1);
        edge.pm.numPositionSamples = random.between(1, 12);
        for (VertexRecord& vertex : edge.pm.mesh.vertices) {
            vertex.setPosition({random.around(5), random.around(5), random.around(5)});
        }
        Quadric3D q;
        for (double& slot : q.q)
            slot = static_cast<double>(random.around(2));
        const VertexRecord& a = edge.pm.mesh.vertices[0];
        const VertexRecord& b = edge.pm.mesh.vertices[1];
        float best = std::numeric_limits<float>::max();
        FloatVec3 place = kEntryPosition;
        for (int i = 0; i <= edge.pm.numPositionSamples; ++i) {
            const float t = static_cast<float>(i) / static_cast<float>(edge.pm.numPositionSamples);
            const float x = (1 - t) * a.x + t * b.x;
            const float y = (1 - t) * a.y + t * b.y;
            const float z = (1 - t) * a.z + t * b.z;
            const double e = evaluateQuadric(
                q, {static_cast<double>(x), static_cast<double>(y), static_cast<double>(z)});
            if (static_cast<double>(best) > e) {
                best = static_cast<float>(e);
                place = {x, y, z};
            }
        }
        const EdgeEvaluation result = edge.evaluate(q);
        ASSERT_EQ(result.cost, best < 0 ? 0.0F : best);
        expectPosition(result, place);
    }
}

TEST(EvaluateEdgeCost, ASampleCountOfZeroKeepsTheInitialPosition) {
    Edge edge;
    edge.border(0).border(1).pm.numPositionSamples = 0;  // 0 / 0: no job can set this
    const EdgeEvaluation result = edge.evaluate(bowl(1, {0, 0, 0}, 0));
    EXPECT_EQ(result.cost, kNotCollapsible);
    expectPosition(result, kEntryPosition);
}

float maskedCost(std::uint8_t maskA, std::uint8_t maskB, float cost) {
    Edge edge;
    edge.pm.mesh.maskValues = {maskA, maskB};
    return edge.evaluate(bowl(1, {1, 2, 3}, static_cast<double>(cost))).cost;
}

TEST(EvaluateEdgeCost, AMaskOf255AtBothEndsKeepsTheCostBitIdentical) {
    for (const float cost : {0.0F, 0.1F, 3.0F, 1e-30F, 1e10F}) {
        Edge plain;
        Edge masked;
        masked.pm.mesh.maskValues = {255, 255};
        const Quadric3D q{{1, 0, 0, 1, 0, 1, 0, 0, 0, static_cast<double>(cost)}};
        EXPECT_EQ(std::bit_cast<std::uint32_t>(masked.evaluate(q).cost),
                  std::bit_cast<std::uint32_t>(plain.evaluate(q).cost));
        EXPECT_EQ(plain.evaluate(q).cost, cost);
    }
}

TEST(EvaluateEdgeCost, AMaskOfZeroForbidsTheEdgeButKeepsThePosition) {
    Edge edge;
    edge.pm.mesh.maskValues = {0, 255};
    const EdgeEvaluation result = edge.evaluate(bowl(1, {1, 2, 3}, 4));
    EXPECT_EQ(result.cost, kNotCollapsible);
    expectPosition(result, {1, 2, 3});
    EXPECT_EQ(maskedCost(255, 0, 4), kNotCollapsible);
}

TEST(EvaluateEdgeCost, TheLowerMaskScalesTheCostByItsTable) {
    EXPECT_EQ(maskedCost(1, 255, 2), 2 * 418.25F);
    EXPECT_EQ(maskedCost(255, 4, 2), 2 * 118.25F);
    EXPECT_EQ(maskedCost(4, 4, 1), 118.25F);
    EXPECT_EQ(maskedCost(5, 9, 2), 2 * 18.25F);
    EXPECT_EQ(maskedCost(9, 10, 2), 2 * 14.25F);
    EXPECT_EQ(maskedCost(10, 255, 2), 2 * 13.25F);
    EXPECT_EQ(maskedCost(155, 200, 2), 2 * 6.0F);
    for (int m = 1; m < 256; ++m) {
        const auto lack = static_cast<float>(255 - m);
        float factor = lack / 20.0F + 1.0F;
        if (m < 10) factor = lack + 1.0F - 232.75F;
        if (m < 5) factor = lack * 100.0F + 1.0F + 250.0F - 232.75F - 25000.0F;
        EXPECT_EQ(maskedCost(static_cast<std::uint8_t>(m), 255, 3), 3 * factor) << m;
    }
}

TEST(EvaluateEdgeCost, AMaskOfAnotherSizeIsIgnored) {
    Edge edge;
    edge.pm.mesh.maskValues = {0};
    EXPECT_EQ(edge.evaluate(bowl(1, {1, 2, 3}, 4)).cost, 4.0F);
}

TEST(EvaluateEdgeCost, NaNAndInfinityNeverWinAsACost) {
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        for (std::size_t slot = 0; slot < 10; ++slot) {
            Quadric3D q = bowl(1, {1, 2, 3}, 0);
            q.q[slot] = bad;
            for (const bool border : {false, true}) {
                Edge edge;
                if (border) edge.border(0).border(1);
                const float cost = edge.evaluate(q).cost;
                EXPECT_FALSE(cost < 0.0F);
            }
        }
    }
}

TEST(EvaluateEdgeCost, AMinimumThatIsNotFiniteCountsAsSingular) {
    // The error falls along the edge, to 3 at its end. The inverse of the smallest pivot overflows,
    // whether or not the block is degenerate by its measure.
    for (const double other : {1.0, 1e160}) {
        for (const double least : {1e-310, 1e-60}) {
            const Quadric3D q{{least, 0, 0, other, 0, other, -1, 0, 0, 5}};
            const EdgeEvaluation result = Edge().evaluate(q);
            EXPECT_EQ(result.cost, 3.0F) << other << ' ' << least;
            expectPosition(result, {1, 0, 0});
        }
    }
}

TEST(EvaluateEdgeCost, ACostThatIsNotFiniteCountsAsSingularToo) {
    // The cost overflows at the minimum, (1, 2, 3), as it does everywhere on the edge.
    const EdgeEvaluation result = Edge().evaluate(bowl(1, {1, 2, 3}, 1e39));
    EXPECT_EQ(result.cost, kNotCollapsible);
    expectPosition(result, kEntryPosition);
}

TEST(EvaluateEdgeCost, AKeptEndMustBeFiniteAndHaveAFiniteCost) {
    for (const double far : {1e30, kInfinity, -kInfinity, kNaN}) {
        Edge edge;
        edge.border(1);
        edge.pm.mesh.vertices[1].x = static_cast<float>(far);
        const EdgeEvaluation result = edge.evaluate(bowl(1, {0, 0, 0}, 0));
        EXPECT_EQ(result.cost, kNotCollapsible) << far;
        expectPosition(result, kEntryPosition);
    }
}

TEST(EvaluateEdgeCost, ASearchWithoutAFiniteResultForbidsTheEdge) {
    for (const double bad : {kInfinity, -kInfinity, kNaN}) {
        Edge edge;
        edge.border(0).border(1);
        for (VertexRecord& vertex : edge.pm.mesh.vertices)
            vertex.y = static_cast<float>(bad);
        const EdgeEvaluation result = edge.evaluate(bowl(1, {0, 0, 0}, 0));
        EXPECT_EQ(result.cost, kNotCollapsible) << bad;
        expectPosition(result, kEntryPosition);
    }
}

TEST(EvaluateEdgeCost, ASearchResultBelowAllFloatsForbidsTheEdge) {
    Edge edge;
    edge.border(0).border(1);
    const EdgeEvaluation result = edge.evaluate(bowl(1, {0, 0, 0}, -1e39));
    EXPECT_EQ(result.cost, kNotCollapsible);
    expectPosition(result, kEntryPosition);
}

TEST(EvaluateEdgeCost, TheMaskAppliesToCostsThatAreNotFiniteToo) {
    Edge edge;
    const Quadric3D overflowing = bowl(1, {1, 2, 3}, 1e39);
    edge.pm.mesh.maskValues = {0, 255};
    EXPECT_EQ(edge.evaluate(overflowing).cost, kNotCollapsible);
    // Like any forbidden edge, it passes through the table too, and ends above FLT_MAX.
    edge.pm.mesh.maskValues = {4, 255};
    EXPECT_EQ(edge.evaluate(overflowing).cost, std::numeric_limits<float>::infinity());
}

// The colour form. Ten units of colour distance equal one unit of length, so s = 0.1 * byte.
struct ColorEdge : Edge {
    ColorEdge() { pm.colorScale = 0.1; }
    [[nodiscard]] EdgeEvaluation evaluate(const ColorQuadric& quadric) const {
        EdgeEvaluation result;
        result.position = kEntryPosition;
        result.color = {1, 2, 3};
        EvaluateEdgeCostColor(pm.mesh, pm, result, 0, 1, quadric);
        return result;
    }
};

// |p - (1, 2, 3)|^2 + |s - color|^2 + value
ColorQuadric colorBowl(const DoubleVec3& color, double value) {
    ColorQuadric q(bowl(1, {1, 2, 3}, value));
    q.b2 = {-color.x, -color.y, -color.z};
    q.c += dot(color, color);
    return q;
}

using Color = std::array<std::uint8_t, 3>;

TEST(EvaluateEdgeCostColor, TakesPositionAndColourOfTheMinimum) {
    const EdgeEvaluation result = ColorEdge().evaluate(colorBowl({1.05, 2.55, 20}, 0.5));
    expectPosition(result, {1, 2, 3});
    EXPECT_NEAR(result.cost, 0.5F, 1e-5F);
    EXPECT_EQ(result.color, (Color{10, 25, 200}));  // truncated, not rounded
}

TEST(EvaluateEdgeCostColor, ColoursAreClampedTo0And255) {
    EXPECT_EQ(ColorEdge().evaluate(colorBowl({-1, 25.6, 1e30}, 0)).color, (Color{0, 255, 255}));
    EXPECT_EQ(ColorEdge().evaluate(colorBowl({0, 25.59, -0.0}, 0)).color, (Color{0, 255, 0}));
}

TEST(EvaluateEdgeCostColor, ACostBelowZeroIsZero) {
    EXPECT_EQ(ColorEdge().evaluate(colorBowl({1, 1, 1}, -9)).cost, 0.0F);
}

TEST(EvaluateEdgeCostColor, WithoutAColourScaleNaNChannelsKeepTheirValue) {
    ColorEdge edge;
    edge.pm.colorScale = 0;
    EXPECT_EQ(edge.evaluate(colorBowl({0, 1, -1}, 0)).color, (Color{1, 255, 0}));
}

TEST(EvaluateEdgeCostColor, AnEdgeWithABorderEndNeverCollapses) {
    for (const std::int32_t mode : {BORDER_MODE_NONE, BORDERMODE_PROTECT, BORDERMODE_FREEZE}) {
        for (const std::int32_t vertex : {0, 1}) {
            ColorEdge edge;
            edge.border(vertex).pm.BorderMode = mode;
            const EdgeEvaluation result = edge.evaluate(colorBowl({1, 1, 1}, 0));
            EXPECT_EQ(result.cost, kNotCollapsible);
            expectPosition(result, kEntryPosition);
            EXPECT_EQ(result.color, (Color{1, 2, 3}));
        }
    }
}

TEST(EvaluateEdgeCostColor, AnEdgeWithASeamEndNeverCollapsesWhileUVsAreHandled) {
    for (const std::int32_t vertex : {0, 1}) {
        ColorEdge edge;
        edge.seam(vertex);
        EXPECT_EQ(edge.evaluate(colorBowl({1, 1, 1}, 4)).cost, kNotCollapsible);
        edge.pm.m_handleUVs_internal = false;
        EXPECT_EQ(edge.evaluate(colorBowl({1, 1, 1}, 4)).cost, 4.0F);
    }
}

TEST(EvaluateEdgeCostColor, ASingularBlockForbidsTheEdgeWithoutASearch) {
    const EdgeEvaluation result = ColorEdge().evaluate(ColorQuadric(flatPatch()));
    EXPECT_EQ(result.cost, kNotCollapsible);
    expectPosition(result, kEntryPosition);
}

void expectForbidden(const EdgeEvaluation& result) {
    EXPECT_EQ(result.cost, kNotCollapsible);
    expectPosition(result, kEntryPosition);
    EXPECT_EQ(result.color, (Color{1, 2, 3}));
}

TEST(EvaluateEdgeCostColor, ANearlySingularBlockThatOverflowsForbidsTheEdge) {
    ColorQuadric q = colorBowl({1, 1, 1}, 0);
    q.A[0] = 1e-310;
    expectForbidden(ColorEdge().evaluate(q));
}

TEST(EvaluateEdgeCostColor, AMinimumBeyondAllFloatsForbidsTheEdge) {
    ColorQuadric q = colorBowl({1, 1, 1}, 0);
    q.A[0] = 1e-40;
    q.b1[0] = -1;
    expectForbidden(ColorEdge().evaluate(q));
}

TEST(EvaluateEdgeCostColor, ACostBeyondAllFloatsForbidsTheEdge) {
    expectForbidden(ColorEdge().evaluate(colorBowl({1, 1, 1}, 1e39)));
}

TEST(EvaluateEdgeCostColor, AppliesTheMaskExceptAtAFrozenBorder) {
    ColorEdge edge;
    edge.pm.mesh.maskValues = {4, 255};
    EXPECT_EQ(edge.evaluate(colorBowl({1, 1, 1}, 2)).cost, 2 * 118.25F);
    // A forbidden edge passes through the table too, and ends above FLT_MAX.
    edge.border(0);
    EXPECT_EQ(edge.evaluate(colorBowl({1, 1, 1}, 2)).cost, std::numeric_limits<float>::infinity());
    edge.pm.BorderMode = BORDERMODE_FREEZE;
    EXPECT_EQ(edge.evaluate(colorBowl({1, 1, 1}, 2)).cost, kNotCollapsible);
    ColorEdge forbidden;
    forbidden.pm.mesh.maskValues = {0, 255};
    EXPECT_EQ(forbidden.evaluate(colorBowl({1, 1, 1}, 2)).cost, kNotCollapsible);
}

TEST(EvaluateEdgeCostColor, HandlesNaNAndInfinity) {
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        for (int field = 0; field < 6; ++field) {
            ColorQuadric q = colorBowl({1, 1, 1}, 0);
            if (field == 0) q.A[1] = bad;
            if (field == 1) q.G[4] = bad;
            if (field == 2) q.C = bad;
            if (field == 3) q.b1[0] = bad;
            if (field == 4) q.b2[2] = bad;
            if (field == 5) q.c = bad;
            EXPECT_FALSE(ColorEdge().evaluate(q).cost < 0.0F);
        }
    }
}

}  // namespace
}  // namespace korvalite::core
