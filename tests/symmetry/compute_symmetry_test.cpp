// SPDX-License-Identifier: MIT
#include "symmetry/compute_symmetry.h"

#include "mesh/dmesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>

namespace korvalite::core {
namespace {

/// Pairs of vertices at (+-x, y, z) around a centre that is not the origin, in a box of diagonal 3.
DMesh mirroredMesh(std::size_t vertexCount) {
    DMesh mesh;
    mesh.vertices.resize(vertexCount);
    for (std::size_t v = 0; v < vertexCount; ++v) {
        const float along = static_cast<float>(v / 2) / static_cast<float>(vertexCount);
        const float side = v % 2 == 0 ? -1.0F : 1.0F;
        mesh.vertices[v].setPosition({5.0F + side * 0.5F, 1.0F + 4.0F * along, 2.0F * along});
    }
    mesh.boundingBox.min = {4.5F, 1, 0};
    mesh.boundingBox.max = {5.5F, 3, 2};
    return mesh;
}

TEST(ComputeSymmetry, MeshOf10000VerticesUsesOneHundredth) {
    DMesh mesh = mirroredMesh(10000);
    computeSymmetry(mesh);
    EXPECT_EQ(mesh.symmetryCache.tolerance, 3.0F * 0.01F);
}

TEST(ComputeSymmetry, MeshOf10001VerticesUses100OverItsCount) {
    DMesh mesh = mirroredMesh(10001);
    computeSymmetry(mesh);
    EXPECT_EQ(mesh.symmetryCache.tolerance, 3.0F * (100.0F / 10001.0F));
    EXPECT_NE(mesh.symmetryCache.tolerance, 3.0F * 0.01F);
}

TEST(ComputeSymmetry, ModeOffForgetsTheOldResult) {
    DMesh mesh = mirroredMesh(100);
    computeSymmetry(mesh);
    ASSERT_TRUE(mesh.symmetryCache.isValidFor());
    mesh.symmetryMode = 0;
    computeSymmetry(mesh);
    EXPECT_FALSE(mesh.symmetryCache.isValidFor());
    EXPECT_TRUE(mesh.symmetryCache.pairing.empty());
    EXPECT_EQ(mesh.symmetryCache.planeNormal.x, 0.0F);
}

TEST(ComputeSymmetry, ModeOffWithAnAxisComputesNothing) {
    DMesh mesh = mirroredMesh(100);
    mesh.symmetryMode = 0;
    mesh.symmetryAxis = 0;
    computeSymmetry(mesh);
    EXPECT_FALSE(mesh.symmetryCache.isValidFor());
    EXPECT_TRUE(mesh.symmetryCache.pairing.empty());
}

TEST(ComputeSymmetry, AutoFindsTheAxisItself) {
    DMesh mesh = mirroredMesh(100);
    mesh.symmetryMode = -1;
    computeSymmetry(mesh);
    EXPECT_TRUE(mesh.symmetryCache.autoDetected);
    EXPECT_EQ(mesh.symmetryCache.planeNormal.x, 1.0F);
    EXPECT_EQ(mesh.symmetryCache.planePoint.x, 5.0F);
    EXPECT_EQ(mesh.symmetryCache.pairedRatio, 1.0F);
}

TEST(ComputeSymmetry, FixedAxisPairsAroundTheCentreOfTheBox) {
    DMesh mesh = mirroredMesh(100);
    mesh.symmetryMode = 1;
    mesh.symmetryAxis = 0;
    computeSymmetry(mesh);
    EXPECT_FALSE(mesh.symmetryCache.autoDetected);
    EXPECT_EQ(mesh.symmetryCache.pairedRatio, 1.0F);
    for (std::int32_t v = 0; v < 100; ++v) {
        ASSERT_EQ(mesh.symmetryCache.pairing[static_cast<std::size_t>(v)], v ^ 1);
        ASSERT_EQ(mesh.symmetryCache.secondSide.Test(v), v % 2 == 1);
    }
}

TEST(ComputeSymmetry, FixedModeWithoutAnAxisComputesNothing) {
    DMesh mesh = mirroredMesh(100);
    mesh.symmetryMode = 1;
    mesh.symmetryAxis = -1;
    computeSymmetry(mesh);
    EXPECT_FALSE(mesh.symmetryCache.isValidFor());
}

TEST(ComputeSymmetry, VerticesInOnePointPairWithThemselvesOrEachOther) {
    DMesh mesh;
    mesh.vertices.resize(7);
    for (VertexRecord& v : mesh.vertices)
        v.setPosition({3, 4, 5});
    mesh.boundingBox.min = mesh.boundingBox.max = {3, 4, 5};
    computeSymmetry(mesh);
    EXPECT_EQ(mesh.symmetryCache.tolerance, 1e-19F);
    EXPECT_EQ(mesh.symmetryCache.pairing, (std::vector<std::int32_t>{6, 5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(mesh.symmetryCache.pairedRatio, 1.0F);
    EXPECT_EQ(mesh.symmetryCache.secondSide.CountSet(), 0);
}

TEST(ComputeSymmetry, EmptyMeshIsHarmlessInEveryMode) {
    for (const std::int32_t mode : {-1, 0, 1}) {
        DMesh mesh;
        mesh.symmetryMode = mode;
        mesh.symmetryAxis = 2;
        computeSymmetry(mesh);
        EXPECT_TRUE(mesh.symmetryCache.pairing.empty());
    }
}

TEST(ComputeSymmetry, BoxOfNaNOrInfinityIsHarmless) {
    for (const float odd :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        DMesh mesh = mirroredMesh(50000);
        mesh.vertices[7].y = odd;
        mesh.boundingBox.max.y = odd;
        computeSymmetry(mesh);
        mesh.symmetryMode = 1;
        mesh.symmetryAxis = 1;
        computeSymmetry(mesh);
        EXPECT_EQ(mesh.symmetryCache.pairing.size(), mesh.vertices.size());
    }
}

}  // namespace
}  // namespace korvalite::core
