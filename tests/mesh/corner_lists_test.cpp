// SPDX-License-Identifier: MIT
#include "mesh/corner_lists.h"

#include "support/allocation_counter.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/random.h"
#include "support/vertex_corners.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

IndexList cornersOf(const DMesh& mesh, std::int32_t vertex) {
    IndexList corners{77};
    GetVertexCorners(mesh, vertex, corners);
    return corners;
}

IndexList neighboursOf(const DMesh& mesh, std::int32_t vertex) {
    IndexList neighbours{77};
    GetVertexNeighbours(mesh, vertex, neighbours);
    return neighbours;
}

DMesh listed(DMesh mesh) {
    BuildVertexCorners(mesh);
    return mesh;
}

// The reference: visits all corners from the highest down and lists each item when first seen.
IndexList slowNeighbours(const std::vector<std::uint32_t>& items, std::uint32_t item) {
    IndexList neighbours;
    for (std::size_t c = items.size(); c-- > 0;) {
        if (items[c] != item) continue;
        const std::size_t first = c - c % 3;
        for (const std::size_t step : {1U, 2U}) {
            const auto other = static_cast<std::int32_t>(items[first + (c - first + step) % 3]);
            bool seen = false;
            for (const std::int32_t x : neighbours)
                seen = seen || x == other;
            if (!seen) neighbours.push_back(other);
        }
    }
    return neighbours;
}

TEST(CornerLists, NextAndPreviousCornerStayInTheTriangle) {
    EXPECT_EQ(nextCorner(3), 4);
    EXPECT_EQ(nextCorner(4), 5);
    EXPECT_EQ(nextCorner(5), 3);
    EXPECT_EQ(previousCorner(3), 5);
    EXPECT_EQ(previousCorner(4), 3);
    EXPECT_EQ(previousCorner(5), 4);
}

TEST(CornerLists, EachVertexOfASingleTriangleHasOneCornerAndTwoNeighbours) {
    const DMesh mesh = listed(test::oneTriangle());
    EXPECT_EQ(cornersOf(mesh, 0), (IndexList{0}));
    EXPECT_EQ(cornersOf(mesh, 1), (IndexList{1}));
    EXPECT_EQ(cornersOf(mesh, 2), (IndexList{2}));
    EXPECT_EQ(neighboursOf(mesh, 0), (IndexList{1, 2}));
    EXPECT_EQ(neighboursOf(mesh, 1), (IndexList{2, 0}));
    EXPECT_EQ(neighboursOf(mesh, 2), (IndexList{0, 1}));
}

TEST(CornerLists, AVertexWithoutTrianglesHasEmptyLists) {
    const DMesh mesh =
        listed(test::buildMesh({{0, 0, 0}, {9, 9, 9}, {1, 0, 0}, {0, 1, 0}}, {{0, 2, 3}}));
    EXPECT_TRUE(mesh.vertexCorners.isEmpty(1));
    EXPECT_TRUE(cornersOf(mesh, 1).empty());
    EXPECT_TRUE(neighboursOf(mesh, 1).empty());
}

//   3---2   triangles 0, 1, 2 and 0, 2, 3
//   | / |
//   0---1
TEST(CornerLists, RunFromTheHighestCornerToTheLowest) {
    const DMesh mesh = listed(test::twoTriangles());
    EXPECT_EQ(cornersOf(mesh, 0), (IndexList{3, 0}));
    EXPECT_EQ(cornersOf(mesh, 2), (IndexList{4, 2}));
    EXPECT_EQ(test::vertexCornersOf(mesh), (test::Lists{{3, 0}, {1}, {4, 2}, {5}}));
}

// Two triangles, the first already removed by an earlier run, with UVs in vertex order.
DMesh oneOfTwoTrianglesLeft() {
    DMesh mesh = test::twoTriangles();
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV.resize(mesh.vertices.size());
    mesh.triangleActive.Clear(0);
    mesh.numActiveTriangles = 1;
    return mesh;
}

TEST(CornerLists, IncludeTheCornersOfDeadTriangles) {
    DMesh mesh = oneOfTwoTrianglesLeft();
    BuildVertexCorners(mesh);
    BuildUVCorners(mesh);
    EXPECT_EQ(test::vertexCornersOf(mesh), (test::Lists{{3, 0}, {1}, {4, 2}, {5}}));
    EXPECT_EQ(mesh.uvCornerHead, (IndexList{3, 1, 4, 5}));
    EXPECT_EQ(mesh.uvCornerNext, (IndexList{-1, -1, -1, 0, 2, -1}));
}

TEST(CornerLists, OmitTheCornersOfDeadTrianglesOnRequest) {
    DMesh mesh = oneOfTwoTrianglesLeft();
    EXPECT_TRUE(hasDeadTriangles(mesh));
    BuildVertexCorners(mesh);
    BuildUVCorners(mesh);
    dropDeadVertexCorners(mesh);
    dropDeadUVCorners(mesh);
    EXPECT_TRUE(test::cornerListsAreSound(mesh));
    EXPECT_EQ(test::vertexCornersOf(mesh), (test::Lists{{3}, {}, {4}, {5}}));
    EXPECT_EQ(mesh.uvCornerHead, (IndexList{3, -1, 4, 5}));
}

TEST(CornerLists, AreUnchangedOnRequestWithoutDeadTriangles) {
    DMesh mesh = listed(test::torus(5, 4));
    EXPECT_FALSE(hasDeadTriangles(mesh));
    const test::Lists lists = test::vertexCornersOf(mesh);
    dropDeadVertexCorners(mesh);
    EXPECT_EQ(test::vertexCornersOf(mesh), lists);
}

TEST(CornerLists, ListNeighboursInOrderOfFirstAppearance) {
    const DMesh mesh = listed(test::twoTriangles());
    EXPECT_EQ(neighboursOf(mesh, 0), (IndexList{2, 3, 1}));
    EXPECT_EQ(neighboursOf(mesh, 2), (IndexList{3, 0, 1}));
}

TEST(CornerLists, GiveTheSameCornersAndNeighboursInOneCall) {
    const DMesh mesh = listed(test::torus(5, 4));
    IndexList neighbours{77};
    IndexList corners{77};
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        GetVertexCornersAndNeighbours(mesh, v, neighbours, corners);
        EXPECT_EQ(corners, cornersOf(mesh, v));
        EXPECT_EQ(neighbours, neighboursOf(mesh, v));
    }
}

TEST(CornerLists, AVertexRepeatedInATriangleIsItsOwnNeighbour) {
    const DMesh mesh = listed(test::buildMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}}));
    EXPECT_EQ(cornersOf(mesh, 0), (IndexList{1, 0}));
    EXPECT_EQ(neighboursOf(mesh, 0), (IndexList{1, 0}));
    EXPECT_EQ(neighboursOf(mesh, 1), (IndexList{0}));
}

TEST(CornerLists, AHubsNeighboursKeepTheOrderOfFirstAppearance) {
    // Closed and open fans, with spokes in any order and some of them repeated.
    test::Random random(3);
    for (const std::uint32_t rim : {30U, 63U, 64U, 65U, 66U, 130U, 700U}) {
        test::Points points(rim + 1);
        test::Faces faces;
        for (std::uint32_t i = 0; i < rim; ++i) {
            faces.push_back({0, 1 + i, 1 + (i + 1) % rim});
            if (random.onceIn(4))
                faces.push_back({1 + random.below(rim), 0, 1 + random.below(rim)});
        }
        for (std::size_t i = faces.size(); i > 1; --i)
            std::swap(faces[i - 1], faces[random.below(static_cast<std::uint32_t>(i))]);
        const DMesh mesh = listed(test::buildMesh(points, faces));
        for (std::uint32_t v = 0; v <= rim; ++v) {
            ASSERT_EQ(neighboursOf(mesh, static_cast<std::int32_t>(v)),
                      slowNeighbours(mesh.triangles, v))
                << rim << ' ' << v;
        }
    }
}

TEST(CornerLists, AnOpenFanListsEachNeighbourOnce) {
    for (std::uint32_t triangles = 60; triangles < 70; ++triangles) {
        test::Faces faces;
        for (std::uint32_t i = 0; i < triangles; ++i)
            faces.push_back({0, 1 + i, 2 + i});
        const DMesh mesh = listed(test::buildMesh(test::Points(triangles + 2), faces));
        EXPECT_EQ(neighboursOf(mesh, 0).size(), triangles + 1);
    }
}

TEST(CornerLists, ALongRingIsGatheredWithoutAllocating) {
    constexpr std::uint32_t kRim = 700;
    test::Faces faces;
    for (std::uint32_t i = 0; i < kRim; ++i)
        faces.push_back({0, 1 + i, 1 + (i + 1) % kRim});
    const DMesh mesh = listed(test::buildMesh(test::Points(kRim + 1), faces));
    IndexList neighbours;
    GetVertexNeighbours(mesh, 0, neighbours);
    const test::AllocationCounter counter;
    GetVertexNeighbours(mesh, 0, neighbours);
    EXPECT_EQ(counter.count(), 0U);
    EXPECT_EQ(neighbours.size(), kRim);
}

TEST(CornerLists, AreSoundForAllKindsOfMeshes) {
    for (const DMesh& mesh :
         {DMesh(), test::oneTriangle(), test::tetrahedron(), test::grid(4, 3), test::torus(7, 4),
          test::sphere(2), test::buildMesh({{0, 0, 0}}, {{0, 0, 0}, {0, 0, 0}})}) {
        EXPECT_TRUE(test::cornerListsAreSound(listed(mesh)));
    }
}

TEST(CornerLists, AreBuiltFromScratchAndReleased) {
    DMesh mesh = listed(test::torus(4, 4));
    mesh.triangles.resize(6);
    mesh.vertices.resize(7);
    mesh.triangles = {0, 1, 2, 6, 5, 4};
    BuildVertexCorners(mesh);
    EXPECT_EQ(test::vertexCornersOf(mesh), (test::Lists{{0}, {1}, {2}, {}, {5}, {4}, {3}}));
    EXPECT_TRUE(mesh.vertexCorners.areBuiltFor(7, 6));
    ReleaseVertexCorners(mesh);
    EXPECT_TRUE(mesh.vertexCorners.areBuiltFor(0, 0));
}

// UV records 0..4 on the two triangles: the lower end of the diagonal has one record on each side.
TEST(CornerLists, OfUVsFollowIndicesUVInsteadOfTriangles) {
    DMesh mesh = test::twoTriangles();
    mesh.coordsUV.resize(6);
    mesh.indicesUV = {0, 1, 2, 3, 2, 4};
    BuildUVCorners(mesh);
    EXPECT_EQ(mesh.uvCornerHead, (IndexList{0, 1, 4, 3, 5, -1}));
    EXPECT_EQ(mesh.uvCornerNext, (IndexList{-1, -1, -1, -1, 2, -1}));
    IndexList corners{77};
    IndexList neighbours{77};
    GetUVCorners(mesh, 2, corners);
    EXPECT_EQ(corners, (IndexList{4, 2}));
    GetUVCornersAndNeighbours(mesh, 2, neighbours, corners);
    EXPECT_EQ(corners, (IndexList{4, 2}));
    EXPECT_EQ(neighbours, (IndexList{4, 3, 0, 1}));
    GetUVCornersAndNeighbours(mesh, 5, neighbours, corners);
    EXPECT_TRUE(corners.empty());
    EXPECT_TRUE(neighbours.empty());
}

TEST(CornerLists, VerticesAreAdjacentIfTheyShareATriangle) {
    const DMesh mesh = listed(test::twoTriangles());
    EXPECT_TRUE(AreVerticesAdjacent(mesh, 0, 1));
    EXPECT_TRUE(AreVerticesAdjacent(mesh, 1, 0));
    EXPECT_TRUE(AreVerticesAdjacent(mesh, 0, 2));
    EXPECT_FALSE(AreVerticesAdjacent(mesh, 1, 3));
    EXPECT_FALSE(AreVerticesAdjacent(mesh, 1, 1));
    EXPECT_FALSE(AreVerticesAdjacent(listed(test::buildMesh({{0, 0, 0}, {1, 0, 0}}, {})), 0, 1));
}

TEST(CornerLists, UnlinkingACornerKeepsTheOrderOfTheRest) {
    const auto without = [](std::int32_t corner) {
        std::int32_t head = 4;
        IndexList next{-1, -1, 0, -1, 2};  // 4, 2, 0
        unlinkCorner(head, next, corner);
        IndexList rest;
        for (std::int32_t c = head; c != -1; c = next[static_cast<std::size_t>(c)])
            rest.push_back(c);
        return rest;
    };
    EXPECT_EQ(without(4), (IndexList{2, 0}));
    EXPECT_EQ(without(2), (IndexList{4, 0}));
    EXPECT_EQ(without(0), (IndexList{4, 2}));
    EXPECT_EQ(without(3), (IndexList{4, 2, 0}));
    std::int32_t empty = -1;
    IndexList next{-1};
    unlinkCorner(empty, next, 0);
    EXPECT_EQ(empty, -1);
}

TEST(CornerLists, WarmingThemChangesNothing) {
    DMesh mesh = listed(test::grid(3, 3));
    mesh.vertices.emplace_back();
    BuildVertexCorners(mesh);
    const test::Lists lists = test::vertexCornersOf(mesh);
    warmVertexCorners(mesh, IndexList{0, 5, 16, 5, 15});
    warmVertexCorners(mesh, {});
    EXPECT_EQ(test::vertexCornersOf(mesh), lists);
}

}  // namespace
}  // namespace korvalite::core
