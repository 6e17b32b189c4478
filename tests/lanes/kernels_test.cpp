// SPDX-License-Identifier: MIT
//
// Every kernel against the plain routine, bit for bit.
#include "lanes/kernels.h"

#include "mesh/corner_lists.h"
#include "metric/edge_cost.h"
#include "metric/lane_forms.h"
#include "metric/mesh_quadrics.h"
#include "metric/metric_rules.h"
#include "support/mesh_builder.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

template <typename Number>
bool isSame(Number a, Number b) {
    using Bits = std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b) || (std::isnan(a) && std::isnan(b));
}

class Lanes : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        kernels_ = lanes::kernelsNamed(GetParam());
        if (kernels_ == nullptr)
            GTEST_SKIP() << "The program or the processor has no " << GetParam() << " kernels.";
    }
    const lanes::Kernels* kernels_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(EachWidth, Lanes, testing::Values("sse2", "avx2"),
                         [](const auto& name) { return std::string(name.param); });

TEST(LaneKernels, AreKnownByTheirNames) {
    for (const char* const name : {"", "none", "SSE2", "sse", "avx", "avx2 ", "avx512"})
        EXPECT_EQ(lanes::kernelsNamed(name), nullptr) << name;
    for (const char* const name : {"sse2", "avx2"}) {
        if (const lanes::Kernels* const kernels = lanes::kernelsNamed(name)) {
            EXPECT_STREQ(kernels->name, name);
        }
    }
}

TEST(LaneKernels, OfARunAreAmongThoseThatTheProcessorHas) {
    const lanes::Kernels* const chosen = lanes::kernels();
    EXPECT_EQ(lanes::kernels(), chosen);
    if (chosen != nullptr) {
        EXPECT_EQ(lanes::kernelsNamed(chosen->name), chosen);
    }
}

TEST(LaneKernels, TakeListsOfWholeGroups) {
    EXPECT_EQ(lanes::padded(0), 0U);
    EXPECT_EQ(lanes::padded(1), 4U);
    EXPECT_EQ(lanes::padded(4), 4U);
    EXPECT_EQ(lanes::padded(5), 8U);
    EXPECT_EQ(lanes::padded(1000), 1000U);
}

TEST(LaneKernels, HoldEachCoefficientOnce) {
    // The order that the header states.
    const char* const inLane[] = {"aa", "bb", "cc", "dd", "ab", "bc", "cd", "ad", "ac", "bd"};
    const char* const plain[] = {"aa", "ab", "ac", "bb", "bc", "cc", "ad", "bd", "cd", "dd"};
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_STREQ(inLane[lanes::kPlaceInLane[i]], plain[i]);
}

// Triangles.

using Point = FloatVec3 (*)(test::Random& random);

FloatVec3 within(test::Random& random, float most) {
    return {random.around(most), random.around(most), random.around(most)};
}
FloatVec3 ordinary(test::Random& random) {
    return within(random, 10);
}
// Some equal coordinates, so that there are triangles without area and flat ground.
FloatVec3 onALattice(test::Random& random) {
    return {static_cast<float>(random.between(-1, 1)), static_cast<float>(random.between(-1, 1)),
            static_cast<float>(random.between(0, 1))};
}
// Long and thin triangles.
FloatVec3 onANeedle(test::Random& random) {
    const float t = random.around(1000);
    return {t + random.around(1e-4F), 2 * t, 3 * t + random.around(1e-3F)};
}
FloatVec3 minute(test::Random& random) {
    return within(random, 1e-20F);
}
// The lengths of normals are around 1e-24, where a triangle begins to have no area.
FloatVec3 nearlyWithoutArea(test::Random& random) {
    return within(random, 1.2e-12F);
}
FloatVec3 huge(test::Random& random) {
    return within(random, 1e20F);
}
FloatVec3 nearTheLargest(test::Random& random) {
    return within(random, 1e38F);
}
float anyNumber(test::Random& random) {
    constexpr float kNumbers[] = {kNaN,
                                  kInfinity,
                                  -kInfinity,
                                  -0.0F,
                                  0.0F,
                                  1.0F,
                                  -1.0F,
                                  1e20F,
                                  1e-20F,
                                  1e38F,
                                  std::numeric_limits<float>::max(),
                                  std::numeric_limits<float>::denorm_min()};
    return random.onceIn(2) ? random.around(5) : kNumbers[random.below(std::size(kNumbers))];
}
FloatVec3 anyNumbers(test::Random& random) {
    return {anyNumber(random), anyNumber(random), anyNumber(random)};
}
// Zeros of both signs, so that the signs of zeros in the quadrics matter.
FloatVec3 inACoordinatePlane(test::Random& random) {
    FloatVec3 point = ordinary(random);
    const float zero = random.onceIn(2) ? 0.0F : -0.0F;
    (random.onceIn(2) ? point.x : point.z) = zero;
    return point;
}

constexpr Point kPointKinds[] = {ordinary,       onALattice,         onANeedle,
                                 minute,         nearlyWithoutArea,  huge,
                                 nearTheLargest, inACoordinatePlane, anyNumbers};

// A whole number of groups of triangles between random vertices, some of which are repeated.
DMesh randomTriangles(test::Random& random, Point point, std::uint32_t count) {
    test::Points points;
    for (int i = 0; i < 40; ++i)
        points.push_back(point(random));
    test::Faces faces;
    for (std::uint32_t i = 0; i < count; ++i)
        faces.push_back({random.below(40), random.below(40), random.below(40)});
    return test::buildMesh(points, faces);
}

testing::AssertionResult isQuadric(const lanes::LaneQuadric& sum, const Quadric3D& expected) {
    for (std::size_t i = 0; i < expected.q.size(); ++i) {
        const double found = sum.q[lanes::kPlaceInLane[i]];
        if (!isSame(found, expected.q[i])) {
            return testing::AssertionFailure()
                   << "coefficient " << i << " is " << found << " instead of " << expected.q[i];
        }
    }
    return testing::AssertionSuccess();
}

void expectSums(const lanes::Kernels& kernels, test::Random& random, Point point,
                bool areaWeighted) {
    constexpr std::uint32_t kSums = 12;
    const DMesh mesh = randomTriangles(random, point, 4 * random.below(12));
    MetricRules rules;
    rules.UseAreaWeighting = areaWeighted;
    // Few sums, so that triangles often have one of them at two corners or three.
    std::vector<std::uint32_t> places;
    for (std::size_t corner = 0; corner < mesh.triangles.size(); ++corner)
        places.push_back(random.below(kSums));
    std::vector<lanes::LaneQuadric> sums(kSums);
    std::vector<Quadric3D> expected(kSums);
    for (std::size_t place = 0; place < kSums; ++place) {
        // They need not begin at zero; -0 keeps the sign of the zero that is added to it.
        const auto kind = random.below(3);
        for (std::size_t i = 0; i < 10; ++i) {
            if (kind == 1) expected[place].q[i] = -0.0;
            if (kind == 2) expected[place].q[i] = static_cast<double>(random.around(3));
            sums[place].q[lanes::kPlaceInLane[i]] = expected[place].q[i];
        }
    }
    for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
        const Quadric3D quadric = ComputeTriangleQuadric(mesh, rules, triangle);
        for (const std::int32_t corner : cornersOf(triangle))
            expected[places[static_cast<std::size_t>(corner)]] += quadric;
    }
    kernels.sumTriangleQuadrics(positionsOf(mesh),
                                {mesh.triangles.data(), places.data(), mesh.triangles.size() / 3},
                                areaWeighted, sums.data());
    for (std::size_t place = 0; place < kSums; ++place)
        EXPECT_TRUE(isQuadric(sums[place], expected[place]));
}

TEST_P(Lanes, SumTheQuadricsOfTriangles) {
    test::Random random(1);
    for (const Point point : kPointKinds) {
        for (int round = 0; round < 300; ++round)
            expectSums(*kernels_, random, point, round % 2 == 0);
    }
}

TEST_P(Lanes, SumTheQuadricsAroundAVertex) {
    test::Random random(2);
    for (const Point point : kPointKinds) {
        for (std::uint32_t round = 0; round < 300; ++round) {
            const std::uint32_t count = round % 23;
            DMesh mesh = randomTriangles(random, point, count);
            MetricRules rules;
            rules.UseAreaWeighting = random.onceIn(2);
            Quadric3D expected;
            for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle)
                expected += ComputeTriangleQuadric(mesh, rules, triangle);
            // What follows the list is read, but not added.
            while (mesh.triangles.size() < 3 * lanes::padded(count))
                mesh.triangles.push_back(random.below(40));
            lanes::LaneQuadric sum{};
            kernels_->sumVertexQuadric(positionsOf(mesh), {mesh.triangles.data(), nullptr, count},
                                       rules.UseAreaWeighting, &sum);
            EXPECT_TRUE(isQuadric(sum, expected)) << count;
        }
    }
}

// Edges.

struct Edges {
    std::vector<EdgeEnd> ends;
    std::vector<Quadric3D> quadrics;   // one for each end
    std::vector<std::uint32_t> pairs;  // two ends per edge

    [[nodiscard]] std::size_t count() const { return pairs.size() / 2; }
    [[nodiscard]] Quadric3D sum(std::size_t edge) const {
        return quadrics[pairs[2 * edge]] + quadrics[pairs[2 * edge + 1]];
    }
    void add(const FloatVec3& position, const Quadric3D& quadric) {
        EdgeEnd end;
        end.position = position;
        ends.push_back(end);
        quadrics.push_back(quadric);
    }
    // Some edges have the same vertex at both ends.
    void pairAtRandom(test::Random& random, std::uint32_t count) {
        const auto last = static_cast<std::uint32_t>(ends.size());
        for (std::uint32_t i = 0; i < 2 * count; ++i)
            pairs.push_back(random.below(last));
    }
};

// What occurred among the edges compared.
struct Seen {
    std::size_t edges = 0;
    std::size_t undecided = 0;  // NaN
    std::size_t singular = 0;
    std::size_t notCollapsible = 0;
    std::size_t searchedFromAMinimum = 0;
    std::set<std::tuple<bool, bool, bool>> swaps;  // of the elimination
};

// The exchanges of rows in invert3. False if a pivot is 0.
bool noteSwaps(const Quadric3D& quadric, Seen& seen) {
    const auto& q = quadric.q;
    std::array<std::array<double, 3>, 3> m{
        {{q[0], q[1], q[2]}, {q[1], q[3], q[4]}, {q[2], q[4], q[5]}}};
    const auto order = [&](std::size_t upper, std::size_t lower, std::size_t column) {
        const bool swap = std::abs(m[lower][column]) > std::abs(m[upper][column]);
        if (swap) std::swap(m[lower], m[upper]);
        return swap;
    };
    const auto reduce = [&](std::size_t row, std::size_t pivot) {
        const double factor = m[row][pivot] / m[pivot][pivot];
        for (std::size_t k = pivot; k < 3; ++k)
            m[row][k] -= factor * m[pivot][k];
    };
    const bool swap12 = order(1, 2, 0);
    const bool swap01 = order(0, 1, 0);
    if (m[0][0] == 0) return false;
    reduce(1, 0);
    reduce(2, 0);
    const bool swapLast = order(1, 2, 1);
    if (m[1][1] == 0) return false;
    reduce(2, 1);
    if (m[2][2] == 0) return false;
    seen.swaps.insert({swap12, swap01, swapLast});
    return true;
}

float plainCost(const MetricRules& rules, const Edges& edges, std::size_t edge) {
    EdgeEvaluation result;
    evaluateEdge(rules, edges.ends[edges.pairs[2 * edge]], edges.ends[edges.pairs[2 * edge + 1]],
                 edges.sum(edge), result);
    return result.cost;
}

void expectCosts(const lanes::Kernels& kernels, const MetricRules& rules, const Edges& edges,
                 Seen& seen) {
    std::vector<lanes::LaneQuadric> quadrics(edges.quadrics.size());
    for (std::size_t end = 0; end < quadrics.size(); ++end) {
        for (std::size_t i = 0; i < 10; ++i)
            quadrics[end].q[lanes::kPlaceInLane[i]] = edges.quadrics[end].q[i];
    }
    std::vector<float> costs(edges.count(), -1.0F);
    const bool isUndecided = kernels.evaluateEdges(positionsOf(edges.ends), quadrics.data(),
                                                   {edges.pairs.data(), edges.count()},
                                                   edgeSettings(rules), costs.data());
    EXPECT_EQ(isUndecided, std::ranges::any_of(costs, [](float cost) { return std::isnan(cost); }));
    MetricRules withoutSearch = rules;
    withoutSearch.useDegeneracySearch = false;
    for (std::size_t edge = 0; edge < edges.count(); ++edge) {
        const float plain = plainCost(rules, edges, edge);
        const bool hasInverse = noteSwaps(edges.sum(edge), seen);
        ++seen.edges;
        seen.singular += hasInverse ? 0U : 1U;
        seen.notCollapsible += plain == kNotCollapsible ? 1U : 0U;
        seen.searchedFromAMinimum +=
            hasInverse && !isSame(plain, plainCost(withoutSearch, edges, edge)) ? 1U : 0U;
        if (std::isnan(costs[edge])) {
            ++seen.undecided;
            EXPECT_EQ(plain, kNotCollapsible);
        } else {
            ASSERT_TRUE(isSame(costs[edge], plain))
                << costs[edge] << " instead of " << plain << " at " << edge << ' '
                << testing::PrintToString(edges.sum(edge).q);
        }
    }
}

void expectCostsWithAllSettings(const lanes::Kernels& kernels, const Edges& edges, Seen& seen) {
    for (const bool search : {true, false}) {
        for (const std::int32_t samples : {1, 2, 8}) {
            MetricRules rules;
            rules.useDegeneracySearch = search;
            rules.numPositionSamples = samples;
            expectCosts(kernels, rules, edges, seen);
        }
    }
}

// Compares the costs of random edges between the ends that fill() adds.
template <typename Fill>
Seen expectCostsOf(const lanes::Kernels& kernels, std::uint32_t seed, int rounds, Fill fill) {
    test::Random random(seed);
    Seen seen;
    for (int round = 0; round < rounds; ++round) {
        Edges edges;
        fill(random, edges);
        edges.pairAtRandom(random, 4 * random.below(10));
        expectCostsWithAllSettings(kernels, edges, seen);
    }
    return seen;
}

DoubleVec3 randomNormal(test::Random& random) {
    return toDouble(within(random, 1));
}

// The plane with normal n through p.
Quadric3D planeThrough(const FloatVec3& p, const DoubleVec3& n) {
    return planeQuadric(n.x, n.y, n.z, -dot(n, toDouble(p)));
}

double powerOfTen(test::Random& random, std::int32_t most) {
    return std::pow(10.0, random.between(-most, most));
}

// Planes near each end whose normals are longer on some axes, in random order.
void fillWithPlanes(test::Random& random, Edges& edges, float size, std::int32_t mostPower) {
    for (int end = 0; end < 30; ++end) {
        const DoubleVec3 scale{powerOfTen(random, mostPower), powerOfTen(random, mostPower),
                               powerOfTen(random, mostPower)};
        const FloatVec3 position = within(random, size);
        Quadric3D quadric;
        for (std::uint32_t i = random.below(7); i < 7; ++i) {
            const DoubleVec3 n = randomNormal(random);
            quadric += planeThrough(position + within(random, size / 100),
                                    {n.x * scale.x, n.y * scale.y, n.z * scale.z});
        }
        edges.add(position, quadric);
    }
}

TEST_P(Lanes, EvaluateEdgesBetweenPlanes) {
    const Seen seen = expectCostsOf(*kernels_, 3, 300, [](test::Random& random, Edges& edges) {
        fillWithPlanes(random, edges, 10, 0);
    });
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_EQ(seen.notCollapsible, 0U);
    EXPECT_LT(seen.singular, seen.edges / 100);
}

TEST_P(Lanes, EvaluateEdgesWithEveryOrderOfPivots) {
    const Seen seen = expectCostsOf(*kernels_, 4, 300, [](test::Random& random, Edges& edges) {
        fillWithPlanes(random, edges, 10, 2);
    });
    EXPECT_EQ(seen.swaps.size(), 8U);
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_EQ(seen.notCollapsible, 0U);
    EXPECT_GT(seen.searchedFromAMinimum, 0U);
}

// The matrix becomes nearly singular, so that every rounding of the elimination shows in the cost.
void makeNearlySingular(test::Random& random, Quadric3D& quadric) {
    auto& q = quadric.q;
    q[5] = (q[0] * q[4] * q[4] - 2 * q[1] * q[2] * q[4] + q[3] * q[2] * q[2]) /
           (q[0] * q[3] - q[1] * q[1]) * (1 + 1e-8 * static_cast<double>(random.around(1)));
}

TEST_P(Lanes, EvaluateEdgesWithEqualCandidatesForAPivot) {
    // Equal but for the sign, so that the order of rows stays.
    const Seen seen = expectCostsOf(*kernels_, 14, 300, [](test::Random& random, Edges& edges) {
        const std::uint32_t kind = random.below(4);
        const double sign = random.onceIn(2) ? 1.0 : -1.0;
        for (int end = 0; end < 30; ++end) {
            Quadric3D quadric;
            auto& q = quadric.q;
            for (double& coefficient : q)
                coefficient = static_cast<double>(random.around(1));
            if (kind == 0) q[1] = sign * q[2];
            if (kind == 1) q[0] = sign * q[1];
            if (kind == 2) q[0] = sign * q[2];
            if (kind == 3) {
                q[1] = 0;
                q[4] = sign * q[3];
            }
            makeNearlySingular(random, quadric);
            // Half of the edges have such a quadric at one end only, and none at the other.
            edges.add(ordinary(random), random.onceIn(2) ? quadric : Quadric3D{});
        }
    });
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_LT(seen.singular, seen.edges / 2);
}

TEST_P(Lanes, EvaluateEdgesOfAnyQuadric) {
    // Not of planes: the error may be negative, and a saddle is often above the samples.
    const Seen seen = expectCostsOf(*kernels_, 5, 300, [](test::Random& random, Edges& edges) {
        const double scale = powerOfTen(random, 1) / 10;
        for (int end = 0; end < 30; ++end) {
            Quadric3D quadric;
            for (double& coefficient : quadric.q)
                coefficient = static_cast<double>(random.around(1)) * scale;
            quadric.q[9] *= 10;
            edges.add(ordinary(random), quadric);
        }
    });
    EXPECT_EQ(seen.swaps.size(), 8U);
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_GT(seen.searchedFromAMinimum, 100U);
}

TEST_P(Lanes, EvaluateEdgesNearTheMeasureOfDegeneracy) {
    // Saddles with the samples below them: the cost tells whether there was a search. The cube of
    // twice the scale is around 0.001.
    const Seen seen = expectCostsOf(*kernels_, 6, 300, [](test::Random& random, Edges& edges) {
        for (int end = 0; end < 30; ++end) {
            const double scale = 0.05 * (1.0 + 0.02 * static_cast<double>(random.around(1)));
            const double down = random.onceIn(2) ? -scale : scale;
            const DoubleVec3 p = toDouble(ordinary(random));
            edges.add(ordinary(random), {{down, 0, 0, down, 0, scale, -down * p.x, -down * p.y,
                                          -scale * p.z, 5 + static_cast<double>(random.unit())}});
        }
    });
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_GT(seen.searchedFromAMinimum, seen.edges / 50);
    EXPECT_LT(seen.searchedFromAMinimum, seen.edges / 2);
}

TEST_P(Lanes, EvaluateEdgesOnFlatGround) {
    const Seen seen = expectCostsOf(*kernels_, 7, 300, [](test::Random& random, Edges& edges) {
        // One plane or two, across the axes or tilted, and whole numbers that cancel exactly.
        for (int end = 0; end < 30; ++end) {
            const FloatVec3 position = onALattice(random);
            Quadric3D quadric;
            for (std::uint32_t i = random.below(3); i < 2; ++i)
                quadric += planeThrough(position, toDouble(onALattice(random)));
            edges.add(position, quadric);
        }
    });
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_EQ(seen.notCollapsible, 0U);
    EXPECT_GT(seen.singular, seen.edges / 4);
    EXPECT_LT(seen.singular, seen.edges);
    EXPECT_GE(seen.swaps.size(), 4U);
}

TEST_P(Lanes, EvaluateEdgesOfPlanesThatAreNearlyParallel) {
    const Seen seen = expectCostsOf(*kernels_, 8, 300, [](test::Random& random, Edges& edges) {
        // Ground that is all but flat, across one of the axes: rounding errors put some minima far
        // away and above the samples.
        const int axis = random.between(0, 2);
        const float spread = static_cast<float>(powerOfTen(random, 4)) * 1e-5F;
        for (int end = 0; end < 30; ++end) {
            FloatVec3 position = ordinary(random);
            setComponent(position, axis, 0.1F);
            Quadric3D quadric;
            for (int i = 0; i < 4; ++i) {
                FloatVec3 normal = within(random, spread);
                setComponent(normal, axis, 1.0F);
                quadric += planeThrough(position, toDouble(normal));
            }
            edges.add(position, quadric);
        }
    });
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_GT(seen.searchedFromAMinimum, 0U);
}

TEST_P(Lanes, EvaluateMinuteAndHugeEdges) {
    // From 1e20 on, some costs are too large for a float, and no sample may be taken.
    for (const float size : {1e-20F, 1e-10F, 1e10F, 1e18F, 1e20F, 1e30F, 1e38F}) {
        const Seen seen = expectCostsOf(*kernels_, 9, 60, [&](test::Random& random, Edges& edges) {
            fillWithPlanes(random, edges, size, 1);
        });
        EXPECT_EQ(seen.undecided, 0U) << size;
        EXPECT_EQ(seen.notCollapsible > 0, size > 1e19F) << size;
    }
}

TEST_P(Lanes, EvaluateEdgesOfPlanesOfAllSizes) {
    const Seen seen = expectCostsOf(*kernels_, 10, 300, [](test::Random& random, Edges& edges) {
        fillWithPlanes(random, edges, static_cast<float>(powerOfTen(random, 12)), 40);
    });
    EXPECT_EQ(seen.swaps.size(), 8U);
    EXPECT_GT(seen.singular, 0U);
}

TEST_P(Lanes, EvaluateEdgesOfNumbersThatAreNotFinite) {
    const Seen seen = expectCostsOf(*kernels_, 11, 600, [](test::Random& random, Edges& edges) {
        const std::uint32_t times = random.onceIn(2) ? 3 : 40;
        for (int end = 0; end < 30; ++end) {
            Quadric3D quadric;
            for (double& coefficient : quadric.q) {
                coefficient = static_cast<double>(random.onceIn(times) ? anyNumber(random)
                                                                       : random.around(3));
            }
            if (random.onceIn(4)) quadric.q = {0, 0, 0, 0, 0, 0, 0, 0, 0, quadric.q[9]};
            edges.add(random.onceIn(times) ? anyNumbers(random) : ordinary(random), quadric);
        }
    });
    EXPECT_GT(seen.undecided, 0U);
    EXPECT_LT(seen.undecided, seen.edges / 10);
    EXPECT_GT(seen.notCollapsible, seen.undecided);
}

TEST_P(Lanes, EvaluateEdgesWithZerosOfBothSigns) {
    const Seen seen = expectCostsOf(*kernels_, 12, 300, [](test::Random& random, Edges& edges) {
        for (int end = 0; end < 30; ++end) {
            Quadric3D quadric;
            for (double& coefficient : quadric.q) {
                const double zero = random.onceIn(2) ? 0.0 : -0.0;
                coefficient = random.onceIn(3) ? zero : random.between(-2, 2);
            }
            edges.add(inACoordinatePlane(random), quadric);
        }
    });
    EXPECT_EQ(seen.undecided, 0U);
    EXPECT_GT(seen.singular, 0U);
}

TEST_P(Lanes, LeaveErrorsBelowAllFloatsToThePlainRoutine) {
    Edges edges;
    Quadric3D bottomless;
    bottomless.q[9] = -1e300;
    edges.add({0, 0, 0}, bottomless);
    edges.add({1, 0, 0}, {{1, 0, 0, 1, 0, 1, 0, 0, 0, 0.25}});
    edges.pairs = {0, 0, 1, 1, 0, 0, 1, 1};  // singular, solved
    Seen seen;
    expectCosts(*kernels_, {}, edges, seen);
    EXPECT_EQ(seen.undecided, 2U);
    EXPECT_EQ(seen.notCollapsible, 2U);
}

// Lists.

TEST_P(Lanes, KeepTheFirstOfEachItem) {
    test::Random random(13);
    for (int round = 0; round < 20000; ++round) {
        const std::size_t count = random.below(17);
        const std::int32_t kinds = random.between(1, 20);
        std::array<std::int32_t, 16> items{};
        for (std::int32_t& item : items) {
            item = random.between(0, kinds);
            if (random.onceIn(8)) item = random.onceIn(2) ? -1 - item : 2147483647 - item;
        }
        std::vector<std::int32_t> expected;
        for (std::size_t i = 0; i < count; ++i) {
            if (std::find(expected.begin(), expected.end(), items[i]) == expected.end())
                expected.push_back(items[i]);
        }
        std::array<std::int32_t, 16> distinct{};
        const std::size_t kept = kernels_->keepDistinct(items.data(), count, distinct.data());
        ASSERT_EQ(std::vector<std::int32_t>(distinct.data(), distinct.data() + kept), expected);
    }
}

TEST_P(Lanes, KeepItemsThatAllDifferOrAreAllEqual) {
    std::array<std::int32_t, 16> different{};
    for (std::size_t i = 0; i < 16; ++i)
        different[i] = static_cast<std::int32_t>(100 - i);
    const std::array<std::int32_t, 16> equal{};
    std::array<std::int32_t, 16> distinct{};
    for (std::size_t count = 0; count <= 16; ++count) {
        EXPECT_EQ(kernels_->keepDistinct(equal.data(), count, distinct.data()),
                  std::min<std::size_t>(count, 1));
        EXPECT_EQ(kernels_->keepDistinct(different.data(), count, distinct.data()), count);
        EXPECT_TRUE(std::equal(different.begin(),
                               different.begin() + static_cast<std::ptrdiff_t>(count),
                               distinct.begin()));
    }
}

TEST_P(Lanes, KeepDistinctItemsAtAllPairsOfPlaces) {
    for (std::size_t second = 1; second < 16; ++second) {
        for (std::size_t first = 0; first < second; ++first) {
            std::array<std::int32_t, 16> items{};
            for (std::size_t i = 0; i < 16; ++i)
                items[i] = static_cast<std::int32_t>(i);
            items[second] = items[first];
            std::array<std::int32_t, 16> distinct{};
            ASSERT_EQ(kernels_->keepDistinct(items.data(), 16, distinct.data()), 15U);
            ASSERT_EQ(std::count(distinct.begin(), distinct.begin() + 15, items[first]), 1);
            ASSERT_EQ(distinct[first], items[first]);
        }
    }
}

}  // namespace
}  // namespace korvalite::core
