// SPDX-License-Identifier: MIT
//
// The kernels for colours against the plain routines, bit for bit.
#include "lanes/kernels.h"

#include "mesh/corner_lists.h"
#include "metric/edge_cost.h"
#include "metric/lane_forms.h"
#include "metric/mesh_quadrics.h"
#include "support/mesh_builder.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

constexpr std::uint32_t kPoints = 30;

class ColorLanes : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        kernels_ = lanes::kernelsNamed(GetParam());
        if (kernels_ == nullptr)
            GTEST_SKIP() << "The program or the processor has no " << GetParam() << " kernels.";
    }
    const lanes::Kernels* kernels_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(EachWidth, ColorLanes, testing::Values("sse2", "avx2"),
                         [](const auto& name) { return std::string(name.param); });

bool isSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

testing::AssertionResult isQuadric(const lanes::LaneColorQuadric& sum,
                                   const ColorQuadric& expected) {
    const lanes::LaneColorQuadric other = toLanes(expected);
    for (std::size_t i = 0; i < 23; ++i) {
        if (!isSame(sum.q[i], other.q[i])) {
            return testing::AssertionFailure()
                   << "coefficient " << i << " is " << sum.q[i] << " instead of " << other.q[i];
        }
    }
    return testing::AssertionSuccess();
}

enum class Kind { Ordinary, Lattice, Minute, Huge, Any };
constexpr Kind kKinds[] = {Kind::Ordinary, Kind::Lattice, Kind::Minute, Kind::Huge, Kind::Any};

float coordinate(test::Random& random, Kind kind) {
    switch (kind) {
    case Kind::Ordinary: return random.around(10);
    case Kind::Lattice: return static_cast<float>(random.between(-1, 1));  // many without area
    case Kind::Minute: return random.around(1e-13F);
    case Kind::Huge: return random.around(1e20F);
    case Kind::Any: break;
    }
    constexpr float kNumbers[] = {std::numeric_limits<float>::quiet_NaN(),
                                  std::numeric_limits<float>::infinity(), -0.0F, 0.0F, 1e38F};
    return random.onceIn(8) ? kNumbers[random.below(std::size(kNumbers))] : random.around(5);
}

// Triangles between random coloured vertices, some of which are repeated.
DMesh coloredTriangles(test::Random& random, Kind kind, std::uint32_t count) {
    test::Points points;
    for (std::uint32_t i = 0; i < kPoints; ++i) {
        points.push_back(
            {coordinate(random, kind), coordinate(random, kind), coordinate(random, kind)});
    }
    test::Faces faces;
    for (std::uint32_t i = 0; i < count; ++i)
        faces.push_back({random.below(kPoints), random.below(kPoints), random.below(kPoints)});
    DMesh mesh = test::buildMesh(points, faces);
    for (std::uint32_t i = 0; i < kPoints; ++i) {
        mesh.vertexColors.push_back(test::packColor(random.below(256), random.below(256),
                                                    random.below(256), random.below(256)));
    }
    return mesh;
}

MetricRules rulesOf(test::Random& random) {
    MetricRules rules;
    rules.colorScale = random.onceIn(4) ? 0.0 : static_cast<double>(random.around(0.01F));
    rules.UseAreaWeighting = random.onceIn(2);
    return rules;
}

TEST_P(ColorLanes, SumTheQuadricsOfTriangles) {
    constexpr std::uint32_t kSums = 12;
    test::Random random(1);
    for (const Kind kind : kKinds) {
        for (int round = 0; round < 200; ++round) {
            const DMesh mesh = coloredTriangles(random, kind, 4 * random.below(12));
            const MetricRules rules = rulesOf(random);
            // Few sums, so that triangles often have one of them at two corners or three.
            std::vector<std::uint32_t> places;
            for (std::size_t corner = 0; corner < mesh.triangles.size(); ++corner)
                places.push_back(random.below(kSums));
            std::vector<lanes::LaneColorQuadric> sums(kSums);
            std::vector<ColorQuadric> expected(kSums);
            for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
                const ColorQuadric quadric = ComputeTriangleColorQuadric(mesh, rules, triangle);
                for (const std::int32_t corner : cornersOf(triangle))
                    expected[places[static_cast<std::size_t>(corner)]] += quadric;
            }
            kernels_->sumTriangleColorQuadrics(
                positionsOf(mesh), colorsOf(mesh, rules),
                {mesh.triangles.data(), places.data(), mesh.triangles.size() / 3}, sums.data());
            for (std::size_t place = 0; place < kSums; ++place)
                ASSERT_TRUE(isQuadric(sums[place], expected[place])) << round;
        }
    }
}

TEST_P(ColorLanes, SumTheQuadricsAroundAVertex) {
    test::Random random(2);
    for (const Kind kind : kKinds) {
        for (std::uint32_t round = 0; round < 200; ++round) {
            const std::uint32_t count = round % 23;
            DMesh mesh = coloredTriangles(random, kind, count);
            const MetricRules rules = rulesOf(random);
            ColorQuadric expected;
            for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle)
                expected += ComputeTriangleColorQuadric(mesh, rules, triangle);
            // What follows the list is read, but not added.
            while (mesh.triangles.size() < 3 * lanes::padded(count))
                mesh.triangles.push_back(random.below(kPoints));
            lanes::LaneColorQuadric sum{};
            kernels_->sumVertexColorQuadric(positionsOf(mesh), colorsOf(mesh, rules),
                                            {mesh.triangles.data(), nullptr, count}, &sum);
            ASSERT_TRUE(isQuadric(sum, expected)) << round;
        }
    }
}

// The quadrics of some triangles each; those of few triangles are singular.
std::vector<ColorQuadric> randomQuadrics(test::Random& random, Kind kind) {
    const DMesh mesh = coloredTriangles(random, kind, 60);
    const MetricRules rules = rulesOf(random);
    std::vector<ColorQuadric> quadrics(20);
    for (ColorQuadric& quadric : quadrics) {
        for (std::uint32_t i = random.below(8); i < 8; ++i) {
            const auto triangle = static_cast<std::int32_t>(random.below(60));
            quadric += ComputeTriangleColorQuadric(mesh, rules, triangle);
        }
    }
    return quadrics;
}

TEST_P(ColorLanes, EvaluateEdges) {
    test::Random random(3);
    std::size_t collapsible = 0;
    std::size_t notCollapsible = 0;
    for (const Kind kind : kKinds) {
        for (int round = 0; round < 300; ++round) {
            const std::vector<ColorQuadric> quadrics = randomQuadrics(random, kind);
            std::vector<lanes::LaneColorQuadric> forms;
            for (const ColorQuadric& quadric : quadrics)
                forms.push_back(toLanes(quadric));
            std::vector<std::uint32_t> ends(2 * lanes::padded(random.below(20)));
            for (std::uint32_t& end : ends)
                end = random.below(static_cast<std::uint32_t>(quadrics.size()));
            std::vector<float> costs(ends.size() / 2, -1.0F);
            kernels_->evaluateColorEdges(forms.data(), {ends.data(), costs.size()}, kNotCollapsible,
                                         costs.data());
            for (std::size_t edge = 0; edge < costs.size(); ++edge) {
                EdgeEvaluation plain;
                evaluateColorEdge(MetricRules(), EdgeEnd(), EdgeEnd(),
                                  quadrics[ends[2 * edge]] + quadrics[ends[2 * edge + 1]], plain);
                ASSERT_EQ(std::bit_cast<std::uint32_t>(costs[edge]),
                          std::bit_cast<std::uint32_t>(plain.cost))
                    << costs[edge] << " instead of " << plain.cost;
                ++(plain.cost == kNotCollapsible ? notCollapsible : collapsible);
            }
        }
    }
    EXPECT_GT(collapsible, 1000U);
    EXPECT_GT(notCollapsible, 1000U);
}

}  // namespace
}  // namespace korvalite::core
