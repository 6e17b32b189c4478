// SPDX-License-Identifier: MIT
#include "symmetry/mirror_pairs.h"

#include "mesh/dmesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kTolerance = 0.01F;

using Indices = std::vector<std::int32_t>;

DMesh cloud(const std::vector<FloatVec3>& points) {
    DMesh mesh;
    for (const FloatVec3& p : points) {
        VertexRecord record;
        record.setPosition(p);
        mesh.vertices.push_back(record);
    }
    return mesh;
}

MirrorPairs pairAcrossX(const std::vector<FloatVec3>& points, float tolerance = kTolerance) {
    MirrorPairs pairs;
    EXPECT_TRUE(pairVertices(pairs, cloud(points), 0, {0, 0, 0}, tolerance));
    return pairs;
}

Indices secondSideOf(const MirrorPairs& pairs) {
    Indices vertices;
    for (std::int32_t v = 0; v < pairs.secondSide.count(); ++v) {
        if (pairs.secondSide.Test(v)) vertices.push_back(v);
    }
    return vertices;
}

void expectSymmetric(const MirrorPairs& pairs) {
    std::int32_t paired = 0;
    for (std::size_t v = 0; v < pairs.pairing.size(); ++v) {
        const std::int32_t mirror = pairs.pairing[v];
        if (mirror == -1) continue;
        ++paired;
        ASSERT_LT(static_cast<std::size_t>(mirror), pairs.pairing.size());
        ASSERT_EQ(pairs.pairing[static_cast<std::size_t>(mirror)], static_cast<std::int32_t>(v));
    }
    EXPECT_EQ(pairs.pairedCount, paired);
}

/// The reference: sweeps step by step and walks every candidate.
MirrorPairs pairByWalking(const DMesh& mesh, int axis, const FloatVec3& centre, float t) {
    const auto x = [&](std::int32_t v) {
        return component(mesh.vertices[static_cast<std::size_t>(v)].position(), axis);
    };
    const auto n = mesh.vertexCount();
    const float c = component(centre, axis);
    Indices s(mesh.vertices.size());
    std::iota(s.begin(), s.end(), 0);
    std::stable_sort(s.begin(), s.end(), [&](auto a, auto b) {
        return std::isnan(x(a)) ? false : std::isnan(x(b)) || x(a) < x(b);
    });

    MirrorPairs result;
    result.pairing.assign(s.size(), -1);
    result.secondSide.Reset(n);
    const auto pairing = [&](std::int32_t v) -> std::int32_t& {
        return result.pairing[static_cast<std::size_t>(v)];
    };
    std::int32_t high = n - 1;
    std::int32_t firstAbove = n;
    for (std::int32_t i = 0; i < n; ++i) {
        const std::int32_t v = s[static_cast<std::size_t>(i)];
        if (x(v) > c) {
            if (firstAbove == n) firstAbove = i;
            if (pairing(v) != -1) continue;
            if (x(v) > c + t) break;
            pairing(v) = v;
            result.pairedCount += 1;
            continue;
        }
        if (pairing(v) != -1) continue;
        const float target = 2.0F * c - x(v);
        float bestDistance = t * t;
        std::int32_t best = -1;
        std::int32_t firstHit = -1;
        for (std::int32_t j = high; j >= 0; --j) {
            const std::int32_t w = s[static_cast<std::size_t>(j)];
            if (pairing(w) != -1 || x(w) > target + t) continue;
            if (target - t > x(w)) break;
            if (firstHit == -1) firstHit = j;
            FloatVec3 m = mesh.vertices[static_cast<std::size_t>(w)].position();
            setComponent(m, axis, 2.0F * c - x(w));
            const FloatVec3 off = mesh.vertices[static_cast<std::size_t>(v)].position() - m;
            const float d = dot(off, off);
            if ((t / 200.0F) * (t / 200.0F) > d) {
                best = w;
                break;
            }
            if (bestDistance > d) {
                bestDistance = d;
                best = w;
            }
        }
        if (best != -1) {
            pairing(v) = best;
            pairing(best) = v;
            result.pairedCount += best == v ? 1 : 2;
        }
        if (firstHit != -1) high = firstHit;
    }
    for (std::int32_t k = firstAbove; k < n; ++k) {
        result.secondSide.Set(s[static_cast<std::size_t>(k)]);
    }
    return result;
}

TEST(PairVertices, ReturnsFalseWithoutVertices) {
    MirrorPairs pairs;
    EXPECT_FALSE(pairVertices(pairs, DMesh{}, 0, {0, 0, 0}, kTolerance));
}

TEST(PairVertices, TheUpperOfTwoMirroredVerticesIsOnTheSecondSide) {
    const MirrorPairs pairs = pairAcrossX({{1, 2, 3}, {-1, 2, 3}});
    EXPECT_EQ(pairs.pairing, (Indices{1, 0}));
    EXPECT_EQ(pairs.pairedCount, 2);
    EXPECT_EQ(secondSideOf(pairs), (Indices{0}));
}

TEST(PairVertices, EveryAxisUsesItsOwnCoordinateAndCentre) {
    const DMesh mesh = cloud({{5, 1, 3}, {5, 1, 7}, {5, 6, 3}, {9, 1, 3}});
    const std::array<Indices, 3> expected{Indices{3, -1, -1, 0}, Indices{2, -1, 0, -1},
                                          Indices{1, 0, -1, -1}};
    for (int axis = 0; axis < 3; ++axis) {
        MirrorPairs pairs;
        ASSERT_TRUE(pairVertices(pairs, mesh, axis, {7, 3.5F, 5}, kTolerance));
        EXPECT_EQ(pairs.pairing, expected[static_cast<std::size_t>(axis)]) << "axis " << axis;
    }
}

TEST(PairVertices, UnmatchedVertexJustAboveThePlanePairsWithItself) {
    const MirrorPairs pairs = pairAcrossX({{kTolerance / 2, 0, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{0}));
    EXPECT_EQ(pairs.pairedCount, 1);
    EXPECT_EQ(secondSideOf(pairs), (Indices{0}));
}

TEST(PairVertices, VertexOnOrJustBelowThePlanePairsWithItself) {
    const MirrorPairs pairs = pairAcrossX({{0, 0, 0}, {-kTolerance / 3, 5, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{0, 1}));
    EXPECT_EQ(pairs.pairedCount, 2);
    EXPECT_TRUE(secondSideOf(pairs).empty());
}

TEST(PairVertices, VertexBeyondTheBandEndsTheWalk) {
    const MirrorPairs pairs = pairAcrossX(
        {{-3, 0, 0}, {kTolerance / 2, 9, 0}, {2 * kTolerance, 0, 0}, {1, 0, 0}, {3, 0, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{4, 1, -1, -1, 0}));
    EXPECT_EQ(pairs.pairedCount, 3);
    EXPECT_EQ(secondSideOf(pairs), (Indices{1, 2, 3, 4}));
}

TEST(PairVertices, NearestWithinToleranceWinsIfNoneIsNearExact) {
    const float t = kTolerance;
    const MirrorPairs pairs =
        pairAcrossX({{-1, 0, 0}, {1, 0.8F * t, 0}, {1, 0.5F * t, 0}, {1, 0.9F * t, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{2, -1, 0, -1}));
}

TEST(PairVertices, FirstNearExactImageWinsOverALaterExactOne) {
    const float nearExact = kTolerance / 400.0F;
    // The walk runs downwards, so the highest index of equal coordinates comes first.
    const MirrorPairs pairs = pairAcrossX({{-1, 0, 0}, {1, 0, 0}, {1, nearExact, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{2, -1, 0}));
}

TEST(PairVertices, DistanceOfExactlyTheToleranceDoesNotMatch) {
    const MirrorPairs pairs = pairAcrossX({{-1, 0, 0}, {1, 0.25F, 0}}, 0.25F);
    EXPECT_EQ(pairs.pairing, (Indices{-1, -1}));
}

TEST(PairVertices, EqualCoordinatesAreOrderedByIndex) {
    const MirrorPairs pairs =
        pairAcrossX({{1, 0, 0}, {-1, 0, 0}, {1, 0, 0}, {-1, 0, 0}, {1, 0, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{-1, 4, 3, 2, 1}));
}

TEST(PairVertices, ZerosOfEitherSignAreEqual) {
    const MirrorPairs pairs = pairAcrossX({{0.0F, 0, 0}, {-0.0F, 0, 0}, {0.0F, 0, 0}});
    EXPECT_EQ(pairs.pairing, (Indices{2, 1, 0}));
}

TEST(PairVertices, VerticesInOnePointPairWithTheMiddleLeftToItself) {
    const std::size_t n = 200001;
    MirrorPairs pairs;
    ASSERT_TRUE(
        pairVertices(pairs, cloud(std::vector<FloatVec3>(n, {1, 2, 3})), 1, {1, 2, 3}, 1e-19F));
    EXPECT_EQ(pairs.pairedCount, 200001);
    EXPECT_EQ(pairs.pairing[0], 200000);
    EXPECT_EQ(pairs.pairing[100000], 100000);
    expectSymmetric(pairs);
}

// Coordinates come from a coarse grid, some with noise, so that ties, several candidates within
// tolerance, and bands with more candidates than are walked one by one are all frequent.
TEST(PairVertices, MatchesAWalkOverAllCandidates) {
    std::mt19937 random(11);
    std::int32_t pairedInAll = 0;
    for (int round = 0; round < 400; ++round) {
        const int steps = 1 << (round % 6);
        const float noise = round % 3 == 0 ? 0.0F : 0.02F;
        std::uniform_int_distribution<int> step(-steps, steps);
        std::uniform_real_distribution<float> jitter(-noise, noise + 1e-9F);
        std::vector<FloatVec3> points;
        for (int i = 0; i < 50 + 2 * round; ++i) {
            const auto draw = [&] {
                return static_cast<float>(step(random)) / static_cast<float>(steps) +
                       jitter(random);
            };
            points.push_back({draw(), draw(), draw()});
            if (i % 2 == 0) points.push_back({-points.back().x, points.back().y, draw()});
        }
        const float tolerance = std::array{0.005F, 0.03F, 0.2F, 3.0F}[random() % 4];
        const DMesh mesh = cloud(points);
        const int axis = round % 3;
        const FloatVec3 centre{0.01F, 0, 0};
        MirrorPairs pairs;
        ASSERT_TRUE(pairVertices(pairs, mesh, axis, centre, tolerance));
        const MirrorPairs expected = pairByWalking(mesh, axis, centre, tolerance);
        ASSERT_EQ(pairs.pairing, expected.pairing) << "round " << round;
        ASSERT_EQ(pairs.pairedCount, expected.pairedCount);
        ASSERT_EQ(secondSideOf(pairs), secondSideOf(expected));
        expectSymmetric(pairs);
        pairedInAll += pairs.pairedCount;
    }
    EXPECT_GT(pairedInAll, 25000);
}

// Meshes in which a tolerance can span anything from a single vertex to all of them.
enum class Shape { TwoPoints, Lattice, Patches, BallAndStray, PointAgainstDisc, Kinds };

std::vector<FloatVec3> pointsOf(Shape shape, int count, std::mt19937& random) {
    std::uniform_real_distribution<float> unit(-1.0F, 1.0F);
    const auto whole = [&](int most) {
        return static_cast<float>(static_cast<int>(random() % static_cast<unsigned>(2 * most + 1)) -
                                  most);
    };
    std::vector<FloatVec3> points;
    for (int i = 0; i < count; ++i) {
        const float side = i % 2 == 0 ? -1.0F : 1.0F;
        switch (shape) {
        case Shape::TwoPoints: points.push_back({side, i % 2 == 0 ? 0.0F : 0.1F, 0}); break;
        case Shape::Lattice: points.push_back({whole(4), whole(2), whole(2)}); break;
        case Shape::Patches:
            points.push_back({side + 0.01F * unit(random), 0.01F * unit(random), 0});
            break;
        case Shape::BallAndStray: {
            const FloatVec3 p{unit(random), unit(random), unit(random)};
            const float length = std::sqrt(dot(p, p));
            points.push_back({p.x / length, p.y / length, p.z / length});
            if (i == 0) points.back() = {0, 1000, 0};
            break;
        }
        case Shape::PointAgainstDisc:
            points.push_back(i % 2 == 0 ? FloatVec3{-1, 0, 0}
                                        : FloatVec3{1, unit(random), unit(random)});
            break;
        case Shape::Kinds: break;
        }
    }
    return points;
}

// Coordinates to which no distance can be measured.
void spoilSome(std::vector<FloatVec3>& points, std::mt19937& random) {
    constexpr std::array kOdd{kNaN, kInfinity, -kInfinity, 3e38F, -3e38F, -0.0F, 1e-45F};
    for (int i = 0; i < 20; ++i) {
        FloatVec3& p = points[random() % points.size()];
        setComponent(p, static_cast<int>(random() % 3), kOdd[random() % kOdd.size()]);
    }
}

TEST(PairVertices, FindsTheSameForAnyRatioOfToleranceToSpacing) {
    constexpr std::array kTolerances{1e-30F, 1e-19F,  1e-6F, 1e-4F,    1e-3F, 0.01F,
                                     0.03F,  0.1F,    0.3F,  1.0F,     2.0F,  7.0F,
                                     30.0F,  2000.0F, 1e20F, kInfinity};
    std::mt19937 random(23);
    for (int kind = 0; kind < static_cast<int>(Shape::Kinds); ++kind) {
        for (std::size_t round = 0; round < 4 * kTolerances.size(); ++round) {
            std::vector<FloatVec3> points =
                pointsOf(static_cast<Shape>(kind), 150 + static_cast<int>(random() % 500), random);
            if (round % 2 == 1) spoilSome(points, random);
            const DMesh mesh = cloud(points);
            const float tolerance = kTolerances[round / 4];
            const FloatVec3 centre{round % 4 < 2 ? 0.0F : 0.002F, 0, 0};
            const int axis = static_cast<int>(random() % 8) % 5 % 3;
            MirrorPairs pairs;
            ASSERT_TRUE(pairVertices(pairs, mesh, axis, centre, tolerance));
            const MirrorPairs expected = pairByWalking(mesh, axis, centre, tolerance);
            ASSERT_EQ(pairs.pairing, expected.pairing)
                << "shape " << kind << ", tolerance " << tolerance << ", axis " << axis;
            ASSERT_EQ(pairs.pairedCount, expected.pairedCount);
            ASSERT_EQ(secondSideOf(pairs), secondSideOf(expected));
        }
    }
}

// The candidates are where the spacing of floats doubles, so that the window along the axis
// excludes some that are within the tolerance. Each vertex has a single candidate, among many that
// are far away.
TEST(PairVertices, FindsTheSameWhereRoundingDecidesTheWindow) {
    std::mt19937 random(37);
    std::uniform_real_distribution<float> around(-1.0F, 1.0F);
    int leftOut = 0;
    for (int round = 0; round < 200; ++round) {
        const float tolerance = 1e-4F + 3e-4F * std::abs(around(random));
        std::vector<FloatVec3> points;
        for (int i = 0; i < 40; ++i) {
            const float x = 3e-4F * around(random);
            const auto z = static_cast<float>(i);
            const float image = 1024.0F - x + 1.2F * tolerance * around(random);
            points.push_back({x, 0, z});
            points.push_back({image, 0, z});
            leftOut += std::abs((1024.0F - image) - x) < tolerance ? 1 : 0;
        }
        for (int i = 0; i < 200; ++i)
            points.push_back({1024.0F + 2e-4F * around(random), 9, 0});
        const DMesh mesh = cloud(points);
        MirrorPairs pairs;
        ASSERT_TRUE(pairVertices(pairs, mesh, 0, {512, 0, 0}, tolerance));
        ASSERT_EQ(pairs.pairing, pairByWalking(mesh, 0, {512, 0, 0}, tolerance).pairing) << round;
        leftOut -= pairs.pairedCount / 2;
    }
    EXPECT_GT(leftOut, 5);
}

TEST(PairVertices, MirroredCloudPairsCompletely) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> coordinate(0.1F, 1.0F);
    std::vector<FloatVec3> points;
    for (int i = 0; i < 20000; ++i) {
        const FloatVec3 p{coordinate(random), coordinate(random), coordinate(random)};
        points.push_back(p);
        points.push_back({-p.x, p.y, p.z});
    }
    std::shuffle(points.begin(), points.end(), random);
    const MirrorPairs pairs = pairAcrossX(points, 1e-5F);
    EXPECT_EQ(pairs.pairedCount, 40000);
    expectSymmetric(pairs);
    for (std::size_t v = 0; v < points.size(); ++v) {
        const FloatVec3& mirror = points[static_cast<std::size_t>(pairs.pairing[v])];
        ASSERT_NEAR(mirror.x, -points[v].x, 1e-5F);
        ASSERT_NEAR(mirror.y, points[v].y, 1e-5F);
        ASSERT_EQ(pairs.secondSide.Test(static_cast<std::int32_t>(v)), points[v].x > 0);
    }
}

// Walking all candidates of each vertex would visit about 10^8 in each of these meshes.
TEST(PairVertices, AWideToleranceTakesLessThanQuadraticTime) {
    std::mt19937 random(29);
    for (const Shape shape : {Shape::TwoPoints, Shape::Lattice, Shape::Patches, Shape::BallAndStray,
                              Shape::PointAgainstDisc}) {
        const std::vector<FloatVec3> points = pointsOf(shape, 30000, random);
        for (const float tolerance : {0.02F, 0.3F, 4.0F}) {
            const MirrorPairs pairs = pairAcrossX(points, tolerance);
            EXPECT_LT(pairs.lookCount, 500 * points.size())
                << "shape " << static_cast<int>(shape) << ", tolerance " << tolerance;
        }
    }
}

// A box with flat sides, so that the vertices of each side share one coordinate. Walking all of
// them for each would take 10^10 steps.
TEST(PairVertices, FlatSidesTakeLessThanQuadraticTime) {
    std::vector<FloatVec3> points;
    for (const float x : {-1.0F, 1.0F}) {
        for (int i = 0; i < 400; ++i) {
            for (int j = 0; j < 400; ++j) {
                points.push_back({x, static_cast<float>(i), static_cast<float>(j)});
            }
        }
    }
    const MirrorPairs pairs = pairAcrossX(points, 0.05F);
    EXPECT_EQ(pairs.pairedCount, 320000);
    EXPECT_EQ(pairs.pairing[0], 160000);
    EXPECT_EQ(pairs.pairing[12345], 160000 + 12345);
}

// Unpaired vertices at the top of the band keep every search from starting below the paired ones.
TEST(PairVertices, PiledUpVerticesBelowUnpairedOnesTakeLessThanQuadraticTime) {
    std::vector<FloatVec3> points(300000, FloatVec3{0, 0, 0});
    for (int i = 0; i < 200; ++i)
        points.push_back({0.001F, 1.0F + static_cast<float>(i), 0});
    const MirrorPairs pairs = pairAcrossX(points, 0.01F);
    EXPECT_EQ(pairs.pairedCount, 300200);
    expectSymmetric(pairs);
}

TEST(PairVertices, VerticesThatAreNotFiniteStayUnpaired) {
    const MirrorPairs pairs = pairAcrossX({{kNaN, 0, 0},
                                           {-1, 0, 0},
                                           {kInfinity, 0, 0},
                                           {-kInfinity, 0, 0},
                                           {1, 0, 0},
                                           {-2, kNaN, 0},
                                           {2, kNaN, 0},
                                           {-3, 0, kInfinity},
                                           {3, 0, kInfinity},
                                           {kNaN, kNaN, kNaN}});
    EXPECT_EQ(pairs.pairing, (Indices{-1, 4, -1, -1, 1, -1, -1, -1, -1, -1}));
}

TEST(PairVertices, AnyFloatsGiveASymmetricPairing) {
    constexpr std::array kOdd{kNaN, kInfinity, -kInfinity, 3e38F, -3e38F, 1e30F, 1e-45F, -0.0F,
                              0.0F, 1.0F,      -1.0F,      1e19F, -1e19F, 0.5F,  -0.5F,  2e38F};
    constexpr std::array kTolerances{kNaN,   kInfinity, 0.0F,  -1.0F, 1e-19F,
                                     1e-45F, 0.1F,      1e20F, 3e38F};
    std::mt19937 random(17);
    const auto draw = [&] { return kOdd[random() % kOdd.size()]; };
    for (int round = 0; round < 3000; ++round) {
        std::vector<FloatVec3> points(1 + random() % 400);
        for (FloatVec3& p : points)
            p = {draw(), draw(), draw()};
        MirrorPairs pairs;
        ASSERT_TRUE(pairVertices(pairs, cloud(points), round % 3, {draw(), draw(), draw()},
                                 kTolerances[random() % kTolerances.size()]));
        ASSERT_EQ(pairs.pairing.size(), points.size());
        expectSymmetric(pairs);
    }
}

TEST(PairVertices, ManyNaNsTakeLessThanQuadraticTime) {
    std::vector<FloatVec3> points(200000, FloatVec3{kNaN, 0, 0});
    for (int i = 0; i < 200000; ++i)
        points.push_back({static_cast<float>(i), 0, 0});
    MirrorPairs pairs;
    ASSERT_TRUE(pairVertices(pairs, cloud(points), 0, {99999.5F, 0, 0}, 0.01F));
    EXPECT_EQ(pairs.pairedCount, 200000);
    ASSERT_TRUE(pairVertices(pairs, cloud(points), 0, {kNaN, 0, 0}, kNaN));
    EXPECT_EQ(pairs.pairedCount, 0);
}

}  // namespace
}  // namespace korvalite::core
