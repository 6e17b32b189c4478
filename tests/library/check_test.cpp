// SPDX-License-Identifier: MIT
#include "library/mesh_check.h"
#include "library/small_meshes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace korvalite {
namespace {

using test::append;
using test::cube;
using test::cylinder;
using test::expectEqual;
using test::grid;
using test::gridOf;
using test::meshOf;

using Indices = std::vector<std::uint32_t>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

MeshCheck checked(const Mesh& mesh) {
    return check(mesh.view());
}

TEST(Check, AClosedCubeHasNoFaults) {
    MeshCheck expected;
    expected.vertices = 8;
    expected.triangles = 12;
    expected.components = 1;
    const MeshCheck check = checked(cube());
    expectEqual(check, expected);
    EXPECT_TRUE(check.isUsable());
    EXPECT_TRUE(check.isClosed());
}

TEST(Check, AnEmptyMeshHasNothing) {
    expectEqual(check({}), {});
}

TEST(Check, AGridHasOneBorder) {
    MeshCheck expected;
    expected.vertices = 12;
    expected.triangles = 12;
    expected.components = 1;
    expected.borderEdges = 10;
    expected.borderLoops = 1;
    expected.places.borderEdges = {0, 1, 2, 4, 7, 9, 10, 11};  // 4 and 7 have a corner of the grid
    const MeshCheck check = checked(grid(3, 2));
    expectEqual(check, expected);
    EXPECT_FALSE(check.isClosed());
}

TEST(Check, ATriangleWithSeveralFaultyEdgesIsListedOnce) {
    EXPECT_EQ(checked(meshOf(3, {0, 1, 2})).places.borderEdges, Indices{0});
}

TEST(Check, AnAnnulusHasTwoBorders) {
    const MeshCheck check = checked(gridOf(3, 3, [](auto c, auto r) { return c != 1 || r != 1; }));
    EXPECT_EQ(check.borderEdges, 16U);
    EXPECT_EQ(check.borderLoops, 2U);
    EXPECT_EQ(check.components, 1U);
    EXPECT_EQ(check.nonManifoldVertices, 0U);
}

TEST(Check, BordersThatTouchAreOneLoop) {
    // Two holes that have only a vertex in common.
    const auto hasSquare = [](auto c, auto r) { return !(c == r && (c == 1 || c == 2)); };
    const MeshCheck check = checked(gridOf(4, 4, hasSquare));
    EXPECT_EQ(check.borderEdges, 16U + 8U);
    EXPECT_EQ(check.borderLoops, 2U);
    EXPECT_EQ(check.places.nonManifoldVertices, Indices{12});
}

TEST(Check, TwoCubesAreTwoComponents) {
    Mesh mesh = cube();
    append(mesh, cube());
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.components, 2U);
    EXPECT_EQ(check.repeatedPositions, 8U);
    EXPECT_EQ(check.places.repeatedPositions, (Indices{8, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_TRUE(check.isClosed());
}

TEST(Check, ABowTieHasANonManifoldVertexButOneComponent) {
    const MeshCheck check = checked(meshOf(5, {0, 1, 2, 2, 3, 4}));
    EXPECT_EQ(check.nonManifoldVertices, 1U);
    EXPECT_EQ(check.places.nonManifoldVertices, Indices{2});
    EXPECT_EQ(check.nonManifoldEdges, 0U);
    EXPECT_EQ(check.components, 1U);
    EXPECT_EQ(check.borderLoops, 1U);
}

TEST(Check, ThreeFansAreOneNonManifoldVertex) {
    EXPECT_EQ(checked(meshOf(7, {0, 1, 2, 0, 3, 4, 0, 5, 6})).nonManifoldVertices, 1U);
}

TEST(Check, ThreeTrianglesOnAnEdgeAreNonManifold) {
    const MeshCheck check = checked(meshOf(6, {0, 5, 1, 2, 3, 4, 1, 0, 3, 0, 1, 4}));
    EXPECT_EQ(check.nonManifoldEdges, 1U);
    EXPECT_EQ(check.places.nonManifoldEdges, Indices{0});
    EXPECT_EQ(check.flippedEdges, 0U);
}

TEST(Check, BothEndsOfANonManifoldEdgeAreNonManifold) {
    const MeshCheck check = checked(meshOf(5, {0, 1, 2, 1, 0, 3, 0, 1, 4}));
    EXPECT_EQ(check.nonManifoldVertices, 2U);
    EXPECT_EQ(check.places.nonManifoldVertices, (Indices{0, 1}));
}

TEST(Check, AFlippedTriangleHasFlippedEdges) {
    Mesh mesh = cube();
    std::swap(mesh.triangles[3 * 5 + 1], mesh.triangles[3 * 5 + 2]);
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.flippedEdges, 3U);
    // Triangle 5 is (0, 4, 5): its neighbours are 4 along 0-5, 8 along 0-4 and 2 along 4-5.
    EXPECT_EQ(check.places.flippedEdges, (Indices{2, 4, 5}));
    EXPECT_EQ(check.nonManifoldEdges, 0U);
    EXPECT_EQ(check.nonManifoldVertices, 0U);
}

TEST(Check, ATriangleWithAVertexTwiceCountsOnlyAsDegenerate) {
    Mesh mesh = cube();
    mesh.triangles.insert(mesh.triangles.end(), {0, 0, 1, 2, 3, 2, 5, 4, 4, 6, 6, 6, 6, 6, 6});
    MeshCheck expected;
    expected.vertices = 8;
    expected.triangles = 17;
    expected.components = 1;
    expected.degenerateTriangles = 5;
    expected.places.degenerateTriangles = {12, 13, 14, 15, 16};
    expectEqual(checked(mesh), expected);
}

TEST(Check, ATriangleWithAVertexTwiceUsesItsVertices) {
    const MeshCheck check = checked(meshOf(3, {2, 0, 2}));
    EXPECT_EQ(check.unusedVertices, 1U);
    EXPECT_EQ(check.places.unusedVertices, Indices{1});
    EXPECT_EQ(check.components, 0U);
}

TEST(Check, ATriangleWithoutAreaIsDegenerateAndHasEdges) {
    Mesh mesh = meshOf(3, {0, 1, 2});
    mesh.positions = {0, 0, 0, 1, 2, 3, 2, 4, 6};
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.degenerateTriangles, 1U);
    EXPECT_EQ(check.borderEdges, 3U);
    EXPECT_EQ(check.components, 1U);
}

TEST(Check, ASmallAreaIsAnArea) {
    // The products are below the smallest float.
    Mesh mesh = meshOf(3, {0, 1, 2});
    mesh.positions = {0, 0, 0, 1e-30F, 0, 0, 0, 1e-30F, 0};
    EXPECT_EQ(checked(mesh).degenerateTriangles, 0U);
}

TEST(Check, AnAreaInEachPlaneCounts) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Mesh mesh = meshOf(3, {0, 1, 2});
        mesh.positions.assign(9, 1);
        mesh.positions[3 + axis] = 2;
        mesh.positions[6 + (axis + 1) % 3] = 2;
        EXPECT_EQ(checked(mesh).degenerateTriangles, 0U) << axis;
    }
}

TEST(Check, DuplicatesAreFoundInAnyRotationAndWinding) {
    const Indices orders{3, 1, 2, 1, 2, 3, 2, 3, 1, 1, 3, 2, 3, 2, 1, 2, 1, 3};
    const MeshCheck check = checked(meshOf(4, orders));
    EXPECT_EQ(check.duplicateTriangles, 5U);
    EXPECT_EQ(check.places.duplicateTriangles, (Indices{1, 2, 3, 4, 5}));
}

TEST(Check, TrianglesThatShareTwoVerticesAreNoDuplicates) {
    EXPECT_EQ(checked(cube()).duplicateTriangles, 0U);
    EXPECT_EQ(checked(meshOf(5, {0, 1, 2, 0, 1, 3, 0, 2, 3, 1, 2, 3})).duplicateTriangles, 0U);
}

TEST(Check, UnusedVerticesAreListed) {
    const MeshCheck check = checked(meshOf(6, {1, 4, 2}));
    EXPECT_EQ(check.unusedVertices, 3U);
    EXPECT_EQ(check.places.unusedVertices, (Indices{0, 3, 5}));
}

TEST(Check, AnUnweldedCubeHasRepeatedPositionsAndBorders) {
    Mesh mesh;
    const Mesh welded = cube();
    for (std::size_t side = 0; side < 6; ++side) {
        const std::uint32_t* corners = &welded.triangles[6 * side];
        const auto first = static_cast<std::uint32_t>(mesh.vertexCount());
        for (const std::uint32_t v : {corners[0], corners[1], corners[2], corners[5]}) {
            for (std::size_t axis = 0; axis < 3; ++axis)
                mesh.positions.push_back(welded.positions[3 * v + axis]);
        }
        mesh.triangles.insert(mesh.triangles.end(),
                              {first, first + 1, first + 2, first, first + 2, first + 3});
    }
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.vertices, 24U);
    EXPECT_EQ(check.repeatedPositions, 16U);
    EXPECT_EQ(check.components, 6U);
    EXPECT_EQ(check.borderEdges, 24U);
    EXPECT_EQ(check.borderLoops, 6U);
}

TEST(Check, PositionsRepeatByValue) {
    Mesh mesh;
    mesh.positions = {0, 1, 2, -0.0F,     1, 2, kNaN,      1, 2, kNaN, 1, 2, 0, 1, 3,
                      0, 1, 2, kInfinity, 1, 2, kInfinity, 1, 2, kNaN, 0, 0, 0, 1, 3};
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.repeatedPositions, 4U);
    EXPECT_EQ(check.places.repeatedPositions, (Indices{1, 5, 7, 9}));
}

TEST(Check, TheFirstOfManyVerticesAtAPlaceIsNoRepetition) {
    Mesh mesh;
    mesh.positions.assign(3 * 1000, 1);
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.repeatedPositions, 999U);
    EXPECT_EQ(check.places.repeatedPositions, (Indices{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST(Check, VerticesThatAreNotFiniteAreNotUsable) {
    for (const float value : {kNaN, kInfinity, -kInfinity}) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            Mesh mesh = cube();
            mesh.positions[3 * 5 + axis] = value;
            const MeshCheck check = checked(mesh);
            EXPECT_EQ(check.nonFiniteVertices, 1U);
            EXPECT_EQ(check.places.nonFiniteVertices, Indices{5});
            EXPECT_EQ(check.degenerateTriangles, 0U);
            EXPECT_TRUE(check.isClosed());
            EXPECT_FALSE(check.isUsable());
        }
    }
}

TEST(Check, ATriangleWithAnIndexOutOfRangeCountsOnlyAsBad) {
    for (const std::uint32_t index : {8U, 0x7FFFFFFFU, kNoVertex}) {
        for (std::size_t corner = 0; corner < 3; ++corner) {
            Mesh mesh = cube();
            mesh.triangles.insert(mesh.triangles.begin(), {0, 1, 1});
            mesh.triangles[corner] = index;
            MeshCheck expected;
            expected.vertices = 8;
            expected.triangles = 13;
            expected.components = 1;
            expected.badTriangles = 1;
            expected.places.badTriangles = {0};
            const MeshCheck check = checked(mesh);
            expectEqual(check, expected);
            EXPECT_FALSE(check.isUsable());
        }
    }
}

TEST(Check, ABadTriangleUsesNoVertices) {
    EXPECT_EQ(checked(meshOf(2, {0, 1, 2})).unusedVertices, 2U);
}

TEST(Check, QuadsAreLikeTheTrianglesTheyAreSplitInto) {
    Mesh mesh = cylinder(5);
    mesh.triangles.insert(mesh.triangles.end(), {0, 1, 4});
    mesh.triangleUVs.insert(mesh.triangleUVs.end(), {0, 1, 4});
    mesh.triangles.insert(mesh.triangles.end(), {1, 0, 2, 1, 2, 99});
    mesh.triangleUVs.insert(mesh.triangleUVs.end(), {1, 0, 2, 1, 2, 77});
    Indices quads;
    Indices quadUVs;
    for (std::uint32_t i = 0; i < 5; ++i) {
        for (const std::uint32_t uv : {2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1}) {
            quads.push_back(uv % 10);
            quadUVs.push_back(uv);
        }
    }
    quads.insert(quads.end(), {0, 1, 4, kNoVertex, 1, 0, 2, 99});
    quadUVs.insert(quadUVs.end(), {0, 1, 4, 55, 1, 0, 2, 77});
    const MeshCheck ofTriangles = checked(mesh);
    const MeshCheck ofQuads = check({mesh.positions, quads, 4, {}, {}, mesh.uvs, quadUVs});
    EXPECT_EQ(ofQuads.triangles, 13U);
    EXPECT_EQ(ofQuads.places.badTriangles, Indices{12});
    expectEqual(ofQuads, ofTriangles);
    EXPECT_EQ(ofQuads.memoryBytes, ofTriangles.memoryBytes);
}

TEST(Check, PlacesAreTheFirstTen) {
    // Many triangles apart from each other, whose vertices descend while triangles ascend.
    constexpr std::uint32_t kTriangles = 30;
    Mesh mesh = meshOf(3 * kTriangles, {});
    for (std::uint32_t vertex = 3 * kTriangles; vertex-- > 0;)
        mesh.triangles.push_back(vertex);
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.borderEdges, 90U);
    EXPECT_EQ(check.places.borderEdges, (Indices{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    mesh.triangles.clear();
    EXPECT_EQ(checked(mesh).unusedVertices, 90U);
    EXPECT_EQ(checked(mesh).places.unusedVertices, (Indices{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(Check, ALargeGridIsCounted) {
    const MeshCheck check = checked(grid(700, 700));
    EXPECT_EQ(check.triangles, 980'000U);
    EXPECT_EQ(check.borderEdges, 2800U);
    EXPECT_EQ(check.borderLoops, 1U);
    EXPECT_EQ(check.components, 1U);
    EXPECT_EQ(check.nonManifoldVertices, 0U);
    EXPECT_EQ(check.flippedEdges, 0U);
}

TEST(Check, AVertexWithManyTrianglesIsCounted) {
    constexpr std::uint32_t kTriangles = 200'000;
    Mesh mesh = meshOf(kTriangles + 1, {});
    for (std::uint32_t i = 0; i < kTriangles; ++i)
        mesh.triangles.insert(mesh.triangles.end(), {0, i + 1, (i + 1) % kTriangles + 1});
    const MeshCheck check = checked(mesh);
    EXPECT_EQ(check.borderEdges, kTriangles);
    EXPECT_EQ(check.borderLoops, 1U);
    EXPECT_EQ(check.nonManifoldVertices, 0U);
}

TEST(Check, MemoryGrowsWithWhatTheMeshHas) {
    Mesh mesh = grid(100, 100);
    const std::uint64_t plain = checked(mesh).memoryBytes;
    const std::uint64_t vertices = mesh.vertexCount();
    // What simplifying takes is documented; the output and some reserve come on top.
    EXPECT_GE(plain, 130 * vertices);
    EXPECT_LE(plain, 170 * vertices + 1'000'000);
    mesh.mask.assign(vertices, 255);
    const std::uint64_t withMask = checked(mesh).memoryBytes;
    EXPECT_EQ(withMask, plain + 2 * vertices);
    mesh.colors.assign(4 * vertices, 0);
    const std::uint64_t withColors = checked(mesh).memoryBytes;
    EXPECT_GE(withColors, withMask + 112 * vertices);
    mesh.triangleUVs = mesh.triangles;
    const std::uint64_t withUVs = checked(mesh).memoryBytes;
    EXPECT_GE(withUVs, withColors + 20 * mesh.triangles.size());
    mesh.uvs.assign(2 * vertices, 0);
    EXPECT_EQ(checked(mesh).memoryBytes, withUVs + 8 * vertices);
}

TEST(Check, ArraysThatDoNotFitThrow) {
    Mesh mesh = cube();
    mesh.colors.assign(3, 0);
    try {
        static_cast<void>(checked(mesh));
        FAIL() << "accepted";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), ErrorCode::BadMesh);
    }
}

}  // namespace
}  // namespace korvalite
