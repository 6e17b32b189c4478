// SPDX-License-Identifier: MIT
#include "library/small_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvalite {
namespace {

using test::cube;
using test::cylinder;
using test::meshOf;

using Indices = std::vector<std::uint32_t>;

MeshCheck checked(const Mesh& mesh) {
    return check(mesh.view());
}

TEST(CheckUVs, ACylinderHasOneSeam) {
    const MeshCheck check = checked(cylinder(5));
    EXPECT_EQ(check.seamEdges, 1U);
    EXPECT_EQ(check.borderLoops, 2U);
}

TEST(CheckUVs, UVsThatDifferAtOneEndMakeASeam) {
    const auto join = [](Mesh& mesh, std::uint32_t from, std::uint32_t to) {
        std::replace(mesh.triangleUVs.begin(), mesh.triangleUVs.end(), from, to);
    };
    Mesh joinedBelow = cylinder(5);
    join(joinedBelow, 10, 0);
    EXPECT_EQ(checked(joinedBelow).seamEdges, 1U);
    Mesh joinedAbove = cylinder(5);
    join(joinedAbove, 11, 1);
    EXPECT_EQ(checked(joinedAbove).seamEdges, 1U);
    join(joinedAbove, 10, 0);
    EXPECT_EQ(checked(joinedAbove).seamEdges, 0U);
}

TEST(CheckUVs, EqualUVValuesAreNoSeam) {
    Mesh mesh = cylinder(5);
    // The points at the far side of the last square get the values of the first two.
    mesh.uvs[20] = -0.0F;
    mesh.uvs[22] = 0;
    EXPECT_EQ(checked(mesh).seamEdges, 0U);
    mesh.uvs[21] = 0.5F;  // v differs below
    EXPECT_EQ(checked(mesh).seamEdges, 1U);
}

TEST(CheckUVs, AUVPointThatIsNotANumberEqualsItself) {
    Mesh mesh = cylinder(5);
    mesh.uvs[2 * 4] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(checked(mesh).seamEdges, 1U);
}

TEST(CheckUVs, WithoutFaceUVsThereAreNoSeams) {
    Mesh mesh = cylinder(5);
    mesh.triangleUVs.clear();
    EXPECT_EQ(checked(mesh).seamEdges, 0U);
}

TEST(CheckUVs, EdgesOfThreeTrianglesAreNoSeams) {
    Mesh mesh = meshOf(5, {0, 1, 2, 1, 0, 3, 0, 1, 4});
    mesh.uvs = {0, 0, 1, 1, 2, 2};
    mesh.triangleUVs = {0, 0, 0, 1, 1, 1, 2, 2, 2};
    EXPECT_EQ(checked(mesh).seamEdges, 0U);
}

TEST(CheckUVs, AUVIndexOutOfRangeIsBadButLeavesTheTopology) {
    Mesh mesh = cube();
    mesh.uvs = {0, 0};
    mesh.triangleUVs.assign(mesh.triangles.size(), 0);
    mesh.triangleUVs[3 * 7 + 1] = 1;
    mesh.triangleUVs[3 * 9 + 2] = kNoVertex;
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.badTriangles, 2U);
    EXPECT_EQ(check.places.badTriangles, (Indices{7, 9}));
    EXPECT_EQ(check.seamEdges, 0U);
    EXPECT_TRUE(check.isClosed());
    EXPECT_FALSE(check.isUsable());
}

TEST(CheckUVs, ATriangleWithTwoKindsOfBadIndicesCountsOnce) {
    Mesh mesh = meshOf(3, {0, 1, 3});
    mesh.triangleUVs = {0, 0, 0};
    EXPECT_EQ(checked(mesh).badTriangles, 1U);
}

}  // namespace
}  // namespace korvalite
