// SPDX-License-Identifier: MIT
#include "mesh/dmesh.h"

#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

BoundingBox boxAround(const test::Points& points) {
    BoundingBox box;
    for (const FloatVec3& point : points)
        extendBoundingBox(box, point);
    return box;
}

TEST(DMesh, StartsEmptyWithTheDefaultsOfTheFormat) {
    const DMesh mesh;
    EXPECT_EQ(mesh.vertexCount(), 0);
    EXPECT_EQ(mesh.triangleCount(), 0);
    EXPECT_EQ(mesh.symmetryAxis, -1);
    EXPECT_EQ(mesh.symmetryMode, -1);
    EXPECT_EQ(mesh.uvSeamAngle, 0.02F);
    EXPECT_EQ(mesh.headerFloats, (std::array<float, 6>{0, 0, 0, 1, 1, 1}));
    EXPECT_TRUE(mesh.boundingBox.isEmpty());
}

TEST(DMesh, UsesMaskAndColoursOnlyWithOneEntryPerVertex) {
    DMesh mesh = test::oneTriangle();
    EXPECT_FALSE(mesh.hasMask());
    EXPECT_FALSE(mesh.hasColors());
    mesh.maskValues.assign(2, 0);
    mesh.vertexColors.assign(4, 0);
    EXPECT_FALSE(mesh.hasMask());
    EXPECT_FALSE(mesh.hasColors());
    mesh.maskValues.assign(3, 0);
    mesh.vertexColors.assign(3, 0);
    EXPECT_TRUE(mesh.hasMask());
    EXPECT_TRUE(mesh.hasColors());
}

TEST(BoundingBox, IsEmptyUntilAPointIsAdded) {
    BoundingBox box;
    EXPECT_TRUE(box.isEmpty());
    extendBoundingBox(box, {3, -2, 7});
    EXPECT_FALSE(box.isEmpty());
    EXPECT_EQ(box.min.x, 3.0F);
    EXPECT_EQ(box.max.x, 3.0F);
    EXPECT_EQ(box.min.y, -2.0F);
    EXPECT_EQ(box.max.z, 7.0F);
    EXPECT_EQ(box.diagonal(), 0.0F);
}

TEST(BoundingBox, ContainsAllPoints) {
    const BoundingBox box = boxAround({{1, 2, 3}, {-1, 5, 3}, {0, -4, 9}});
    EXPECT_EQ(box.min.x, -1.0F);
    EXPECT_EQ(box.min.y, -4.0F);
    EXPECT_EQ(box.min.z, 3.0F);
    EXPECT_EQ(box.max.x, 1.0F);
    EXPECT_EQ(box.max.y, 5.0F);
    EXPECT_EQ(box.max.z, 9.0F);
}

TEST(BoundingBox, SumsTheDiagonalInTheOrderYXZ) {
    EXPECT_EQ(boxAround({{0, 0, 0}, {2, 3, 6}}).diagonal(), 7.0F);
    // Added one at a time to the square of 4097, both ones are lost; summed first, they are not.
    const float big = 4096.0F * 4096.0F;
    const float x = 4096.0F;
    EXPECT_EQ(boxAround({{0, 0, 0}, {1, x, 1}}).diagonal(), std::sqrt((big + 1.0F) + 1.0F));
    EXPECT_EQ(boxAround({{0, 0, 0}, {x, 1, 1}}).diagonal(), std::sqrt((1.0F + big) + 1.0F));
    EXPECT_EQ(boxAround({{0, 0, 0}, {1, 1, x}}).diagonal(), std::sqrt((1.0F + 1.0F) + big));
}

TEST(BoundingBox, IsNeverWidenedByNaN) {
    const BoundingBox box = boxAround({{0, 0, 0}, {kNaN, kNaN, 4}, {1, 2, kNaN}});
    EXPECT_EQ(box.max.x, 1.0F);
    EXPECT_EQ(box.max.y, 2.0F);
    EXPECT_EQ(box.max.z, 4.0F);
    EXPECT_EQ(boxAround({{kNaN, 0, 0}, {5, 5, 5}}).min.y, 5.0F);
}

TEST(BoundingBox, AcceptsInfiniteCoordinates) {
    const BoundingBox box = boxAround({{0, 0, 0}, {kInfinity, -kInfinity, 1}});
    EXPECT_EQ(box.max.x, kInfinity);
    EXPECT_EQ(box.min.y, -kInfinity);
    EXPECT_EQ(box.diagonal(), kInfinity);
}

TEST(BoundingBox, OfAMeshCoversInactiveVerticesToo) {
    DMesh mesh = test::oneTriangle();
    mesh.vertexActive.Clear(1);
    mesh.vertices[1].x = 9;
    recomputeBoundingBox(mesh);
    EXPECT_EQ(mesh.boundingBox.max.x, 9.0F);
    mesh.vertices.clear();
    recomputeBoundingBox(mesh);
    EXPECT_TRUE(mesh.boundingBox.isEmpty());
}

}  // namespace
}  // namespace korvalite::core
