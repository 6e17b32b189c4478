// SPDX-License-Identifier: MIT
#include "mesh/borders_and_seams.h"

#include "mesh/corner_lists.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvalite::core {
namespace {

using Vertices = std::vector<std::int32_t>;

Vertices bordersOf(DMesh mesh) {
    BuildVertexCorners(mesh);
    ComputeBorderVertices(mesh);
    EXPECT_EQ(mesh.borderVertices.count(), mesh.vertexCount());
    Vertices borders;
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        if (mesh.borderVertices.Test(v)) borders.push_back(v);
    }
    return borders;
}

TEST(Borders, AllThreeVerticesOfASingleTriangleAreBorder) {
    EXPECT_EQ(bordersOf(test::oneTriangle()), (Vertices{0, 1, 2}));
}

TEST(Borders, AVertexWithoutTrianglesIsNotBorder) {
    EXPECT_EQ(bordersOf(test::buildMesh({{0, 0, 0}, {9, 9, 9}, {1, 0, 0}, {0, 1, 0}}, {{0, 2, 3}})),
              (Vertices{0, 2, 3}));
}

TEST(Borders, AnEmptyMeshHasNone) {
    EXPECT_EQ(bordersOf(DMesh()), Vertices());
}

TEST(Borders, AClosedMeshHasNone) {
    EXPECT_EQ(bordersOf(test::tetrahedron()), Vertices());
    EXPECT_EQ(bordersOf(test::torus(6, 5)), Vertices());
    EXPECT_EQ(bordersOf(test::sphere(2)), Vertices());
}

//   6---7---8
//   | / | / |
//   3---4---5
//   | / | / |
//   0---1---2
TEST(Borders, OfAGridAreItsRim) {
    EXPECT_EQ(bordersOf(test::grid(2, 2)), (Vertices{0, 1, 2, 3, 5, 6, 7, 8}));
}

// Three triangles share the edge 0-1, so its ends have 3 corners and 4 neighbours each.
TEST(Borders, TheEndsOfAnEdgeOfThreeTrianglesAreBorder) {
    const DMesh mesh = test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}},
                                       {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}});
    EXPECT_EQ(bordersOf(mesh), (Vertices{0, 1, 2, 3, 4}));
}

TEST(Borders, MoreCornersThanNeighboursCountAsBorderToo) {
    // Each vertex has 3 corners and 2 neighbours.
    EXPECT_EQ(bordersOf(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                                        {{0, 1, 2}, {0, 1, 2}, {0, 1, 2}})),
              (Vertices{0, 1, 2}));
}

TEST(Borders, ADuplicateTriangleLooksClosed) {
    EXPECT_EQ(bordersOf(test::buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 1}})),
              Vertices());
}

TEST(Borders, TwoClosedFansAtOneVertexLookClosed) {
    // Two tetrahedra that touch at vertex 0.
    const DMesh mesh = test::buildMesh(
        {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-1, 0, 0}, {0, -1, 0}, {0, 0, -1}},
        {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}, {0, 4, 5}, {0, 6, 4}, {0, 5, 6}, {4, 6, 5}});
    EXPECT_EQ(bordersOf(mesh), Vertices());
}

TEST(Borders, AreRecomputedFromTheCurrentLists) {
    DMesh mesh = test::oneTriangle();
    BuildVertexCorners(mesh);
    mesh.borderVertices.Resize(100, true);
    ComputeBorderVertices(mesh);
    EXPECT_EQ(mesh.borderVertices.count(), 3);
    // An inactive vertex is treated like any other.
    mesh.vertexActive.Clear(1);
    mesh.vertexCorners.assign(0, {});
    ComputeBorderVertices(mesh);
    EXPECT_FALSE(mesh.borderVertices.Test(0));
    EXPECT_TRUE(mesh.borderVertices.Test(1));
}

}  // namespace
}  // namespace korvalite::core
