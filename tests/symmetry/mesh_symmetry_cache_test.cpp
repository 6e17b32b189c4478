// SPDX-License-Identifier: MIT
#include "symmetry/compute_symmetry.h"

#include "geometry/linear_algebra.h"
#include "mesh/dmesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>

namespace korvalite::core {
namespace {

void expectEqual(const FloatVec3& actual, const FloatVec3& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

void addVertex(DMesh& mesh, const FloatVec3& p) {
    VertexRecord record;
    record.setPosition(p);
    mesh.vertices.push_back(record);
}

/// Fills a mesh of `count` vertices in the box from -8 to 8 with exactly the given number of pairs
/// on each axis: x, y and z pairs at separate places, and the rest where nothing mirrors them.
DMesh meshWithPairs(const std::array<int, 3>& pairsOnAxis, int loners) {
    DMesh mesh;
    float place = 1.0F;
    for (int axis = 0; axis < 3; ++axis) {
        for (int i = 0; i < pairsOnAxis[static_cast<std::size_t>(axis)]; ++i) {
            FloatVec3 p{place, place + 0.25F, place + 0.5F};
            addVertex(mesh, p);
            setComponent(p, axis, -component(p, axis));
            addVertex(mesh, p);
            place += 0.0625F;
        }
    }
    for (int i = 0; i < loners; ++i) {
        addVertex(mesh, {place, place + 0.25F, place + 0.5F});
        place += 0.0625F;
    }
    mesh.boundingBox.min = {-8, -8, -8};
    mesh.boundingBox.max = {8, 8, 8};
    mesh.symmetryCache.tolerance = 0.01F;
    return mesh;
}

TEST(KRDMeshSymmetryCache, StartsInTheStateThatResetLeaves) {
    KRDMeshSymmetryCache cache;
    EXPECT_EQ(cache.tolerance, 0.005F);
    EXPECT_TRUE(cache.pairing.empty());
    EXPECT_EQ(cache.pairedRatio, 0.0F);
    expectEqual(cache.axisRatios, {-1, -1, -1});
    EXPECT_FALSE(cache.autoDetected);
    EXPECT_FALSE(cache.isValidFor());
}

TEST(KRDMeshSymmetryCache, ResetForgetsThePairsAndMakesItInvalid) {
    DMesh mesh = meshWithPairs({5, 0, 0}, 0);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    detectSymmetry(cache, mesh);
    ASSERT_TRUE(cache.isValidFor());
    ASSERT_GT(cache.secondSide.CountSet(), 0);
    cache.reset();
    EXPECT_TRUE(cache.pairing.empty());
    EXPECT_EQ(cache.secondSide.CountSet(), 0);
    EXPECT_EQ(cache.pairedRatio, 0.0F);
    expectEqual(cache.axisRatios, {-1, -1, -1});
    EXPECT_FALSE(cache.autoDetected);
    EXPECT_FALSE(cache.isValidFor());
}

TEST(KRDMeshSymmetryCache, IsInvalidAfterVerticesWereAdded) {
    DMesh mesh = meshWithPairs({5, 0, 0}, 0);
    computeForAxis(mesh.symmetryCache, 0, {0, 0, 0}, mesh);
    ASSERT_TRUE(mesh.symmetryCache.isValidFor());
    addVertex(mesh, {0, 0, 0});
    EXPECT_FALSE(mesh.symmetryCache.isValidFor());
}

TEST(KRDMeshSymmetryCache, EmptyMeshFailsOnAnAxisAndIsValidOnceTheMeshIsSet) {
    DMesh mesh;
    EXPECT_FALSE(mesh.symmetryCache.isValidFor());
    mesh.symmetryCache.planeNormal = {1, 0, 0};
    EXPECT_FALSE(computeForAxis(mesh.symmetryCache, 0, {0, 0, 0}, mesh));
    expectEqual(mesh.symmetryCache.planeNormal, {0, 0, 0});
    EXPECT_TRUE(mesh.symmetryCache.isValidFor());
}

TEST(KRDMeshSymmetryCache, ToleranceIsAFractionOfTheDiagonal) {
    DMesh mesh;
    mesh.boundingBox.min = {1, 1, 1};
    mesh.boundingBox.max = {3, 4, 7};
    computeTolerance(mesh.symmetryCache, mesh, 0.5F);
    EXPECT_EQ(mesh.symmetryCache.tolerance, 3.5F);
}

TEST(KRDMeshSymmetryCache, ToleranceForASinglePointIs1e19th) {
    DMesh mesh;
    mesh.boundingBox.min = {1, 1, 1};
    mesh.boundingBox.max = {1, 1, 1};
    computeTolerance(mesh.symmetryCache, mesh, 0.01F);
    EXPECT_EQ(mesh.symmetryCache.tolerance, 1e-19F);
}

TEST(DetectSymmetry, RatioAbove95PercentOnXSkipsTheOtherAxes) {
    DMesh mesh = meshWithPairs({48, 0, 0}, 4);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    EXPECT_TRUE(detectSymmetry(cache, mesh));
    expectEqual(cache.axisRatios, {0.96F, -1, -1});
    expectEqual(cache.planeNormal, {1, 0, 0});
    EXPECT_EQ(cache.pairedRatio, 0.96F);
    EXPECT_EQ(cache.secondSide.CountSet(), 52);
    EXPECT_TRUE(cache.autoDetected);
    EXPECT_TRUE(cache.isValidFor());
}

TEST(DetectSymmetry, RatioOfExactly95PercentIsNotAcceptedAtOnce) {
    DMesh mesh = meshWithPairs({19, 0, 0}, 2);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    detectSymmetry(cache, mesh);
    expectEqual(cache.axisRatios, {0.95F, 0, 0});
    expectEqual(cache.planeNormal, {1, 0, 0});
}

TEST(DetectSymmetry, RatioOfExactly40PercentIsNotASymmetry) {
    DMesh mesh = meshWithPairs({0, 2, 0}, 6);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    EXPECT_TRUE(detectSymmetry(cache, mesh));
    expectEqual(cache.axisRatios, {0, 0.4F, 0});
    EXPECT_TRUE(cache.pairing.empty());
}

TEST(DetectSymmetry, RatioJustAbove40PercentIsASymmetry) {
    DMesh mesh = meshWithPairs({0, 21, 0}, 58);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    detectSymmetry(cache, mesh);
    expectEqual(cache.axisRatios, {0, 0.42F, 0});
    expectEqual(cache.planeNormal, {0, 1, 0});
}

TEST(DetectSymmetry, BestAxisAbove40PercentWins) {
    // Each call adds vertices with all their mirror images across the axes in the mask.
    DMesh mesh;
    float place = 1.0F;
    const auto add = [&](int axesMask, int times) {
        for (int i = 0; i < times; ++i, place += 0.0625F) {
            for (int corner = 0; corner < 8; ++corner) {
                if ((corner & ~axesMask) != 0) continue;
                const FloatVec3 p{place, place + 0.25F, place + 0.5F};
                addVertex(mesh, {(corner & 1) != 0 ? -p.x : p.x, (corner & 2) != 0 ? -p.y : p.y,
                                 (corner & 4) != 0 ? -p.z : p.z});
            }
        }
    };
    add(0b011, 9);  // 36 on x and y
    add(0b111, 2);  // 16 on all
    add(0b110, 4);  // 16 on y and z
    add(0b101, 2);  // 8 on x and z
    add(0b010, 1);  // 2 on y
    add(0b100, 5);  // 10 on z
    add(0b000, 12);
    ASSERT_EQ(mesh.vertices.size(), 100U);
    mesh.boundingBox.min = {-8, -8, -8};
    mesh.boundingBox.max = {8, 8, 8};
    mesh.symmetryCache.tolerance = 0.01F;

    detectSymmetry(mesh.symmetryCache, mesh);
    expectEqual(mesh.symmetryCache.axisRatios, {0.6F, 0.7F, 0.5F});
    expectEqual(mesh.symmetryCache.planeNormal, {0, 1, 0});
    EXPECT_EQ(mesh.symmetryCache.pairedRatio, 0.7F);
    EXPECT_TRUE(mesh.symmetryCache.isValidFor());
}

TEST(DetectSymmetry, AnEqualLaterAxisDoesNotWin) {
    DMesh mesh = meshWithPairs({9, 9, 0}, 0);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    detectSymmetry(cache, mesh);
    expectEqual(cache.axisRatios, {0.5F, 0.5F, 0});
    expectEqual(cache.planeNormal, {1, 0, 0});
}

TEST(DetectSymmetry, NoPlaneLeavesThePairingEmptyAndStillReturnsTrue) {
    DMesh mesh = meshWithPairs({1, 1, 1}, 20);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    cache.planeNormal = {0, 1, 0};
    cache.planePoint = {1, 2, 3};
    EXPECT_TRUE(detectSymmetry(cache, mesh));
    EXPECT_TRUE(cache.pairing.empty());
    EXPECT_EQ(cache.secondSide.count(), 0);
    expectEqual(cache.planeNormal, {0, 0, 0});
    expectEqual(cache.planePoint, {0, 0, 0});
    EXPECT_FALSE(cache.autoDetected);
    EXPECT_FALSE(cache.isValidFor());
}

TEST(DetectSymmetry, AxesNotTriedLoseTheirEarlierRatio) {
    DMesh mesh = meshWithPairs({48, 0, 0}, 4);
    mesh.symmetryCache.axisRatios = {0.1F, 0.2F, 0.3F};
    detectSymmetry(mesh.symmetryCache, mesh);
    expectEqual(mesh.symmetryCache.axisRatios, {0.96F, -1, -1});
}

TEST(DetectSymmetry, NoPlaneForgetsEarlierPairs) {
    DMesh mesh = meshWithPairs({1, 1, 1}, 20);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    computeForAxis(cache, 0, {0, 0, 0}, mesh);
    ASSERT_EQ(cache.pairing.size(), mesh.vertices.size());
    detectSymmetry(cache, mesh);
    EXPECT_TRUE(cache.pairing.empty());
    EXPECT_FALSE(cache.isValidFor());
}

TEST(ComputeForAxis, AsymmetricMeshKeepsTheRequestedPlane) {
    DMesh mesh = meshWithPairs({0, 1, 0}, 98);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    EXPECT_TRUE(computeForAxis(cache, 1, {0, 0, 0}, mesh));
    EXPECT_EQ(cache.pairedRatio, 0.02F);
    EXPECT_EQ(std::count(cache.pairing.begin(), cache.pairing.end(), -1), 98);
    expectEqual(cache.planeNormal, {0, 1, 0});
    EXPECT_FALSE(cache.autoDetected);
    EXPECT_TRUE(cache.isValidFor());
}

TEST(ComputeForAxis, PlanePassesThroughTheCentre) {
    DMesh mesh = meshWithPairs({4, 0, 0}, 0);
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    computeForAxis(cache, 2, {1, 2, 3}, mesh);
    expectEqual(cache.planeNormal, {0, 0, 1});
    expectEqual(cache.unitNormal, {0, 0, 1});
    expectEqual(cache.planePoint, {1, 2, 3});
    EXPECT_EQ(cache.planeOffset, -3.0F);
    FloatVec3 p;
    transformPoint(p, cache.planeProjection, {7, 8, 9});
    expectEqual(p, {7, 8, 3});
    transformPoint(p, cache.mirrorTransform, {7, 8, 9});
    expectEqual(p, {7, 8, -3});
}

TEST(BuildTransforms, UnitAxesGiveExactAffineMaps) {
    for (int axis = 0; axis < 3; ++axis) {
        FloatVec3 normal;
        setComponent(normal, axis, 1.0F);
        Transform projection;
        Transform mirror;
        buildTransforms(projection, mirror, normal, {1, 2, 3});
        EXPECT_EQ(projection.kind, TRANSFORM_AFFINE);
        EXPECT_EQ(mirror.kind, TRANSFORM_AFFINE);
        FloatVec3 expected{10, 20, 30};
        FloatVec3 p;
        transformPoint(p, projection, expected);
        setComponent(expected, axis, static_cast<float>(axis + 1));
        expectEqual(p, expected);
        transformPoint(p, mirror, {10, 20, 30});
        setComponent(expected, axis, static_cast<float>(2 * (axis + 1) - 10 * (axis + 1)));
        expectEqual(p, expected);
    }
}

TEST(BuildTransforms, AnyNormalProjectsOntoItsPlaneAndReflectsAcrossIt) {
    std::mt19937 random(23);
    std::uniform_real_distribution<float> coordinate(-1.0F, 1.0F);
    const auto draw = [&] {
        return FloatVec3{coordinate(random), coordinate(random), coordinate(random)};
    };
    for (int round = 0; round < 200; ++round) {
        FloatVec3 normal;
        normalize3f(normal, draw());
        const FloatVec3 point = draw();
        const FloatVec3 p = draw();
        Transform projection;
        Transform mirror;
        buildTransforms(projection, mirror, normal, point);
        EXPECT_EQ(projection.kind, TRANSFORM_GENERAL);
        EXPECT_EQ(mirror.kind, TRANSFORM_GENERAL);

        const float height = dot(p - point, normal);
        FloatVec3 projected;
        FloatVec3 mirrored;
        transformPoint(projected, projection, p);
        transformPoint(mirrored, mirror, p);
        for (int axis = 0; axis < 3; ++axis) {
            const float along = height * component(normal, axis);
            ASSERT_NEAR(component(projected, axis), component(p, axis) - along, 1e-4F);
            ASSERT_NEAR(component(mirrored, axis), component(p, axis) - 2.0F * along, 2e-4F);
        }
    }
}

}  // namespace
}  // namespace korvalite::core
