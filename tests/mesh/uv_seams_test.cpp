// SPDX-License-Identifier: MIT
#include "mesh/borders_and_seams.h"

#include "mesh/corner_lists.h"
#include "support/mesh_builder.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
using Indices = std::vector<std::uint32_t>;
using Bits = std::vector<std::int32_t>;

Bits setBits(const BitArray& bits) {
    Bits set;
    for (std::int32_t i = 0; i < bits.count(); ++i) {
        if (bits.Test(i)) set.push_back(i);
    }
    return set;
}

void weld(DMesh& mesh) {
    BuildVertexCorners(mesh);
    WeldCornerUVs(mesh);
}

void findSeams(DMesh& mesh) {
    BuildUVCorners(mesh);
    ComputeUVSeams(mesh);
}

//   3---2   two triangles; corners 0 1 2 and 3 4 5 at vertices 0 1 2 and 0 2 3
//   | / |
//   0---1
DMesh twoTrianglesWithUVs() {
    DMesh mesh = test::twoTriangles();
    mesh.coordsUV = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    return mesh;
}

TEST(WeldCornerUVs, SharesOneRecordAmongTheEqualCornersOfAVertex) {
    DMesh mesh = twoTrianglesWithUVs();
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{0, 1, 2, 0, 2, 3}));
    ASSERT_EQ(mesh.coordsUV.size(), 4U);
    EXPECT_EQ(mesh.coordsUV[3].u, 0.0F);
    EXPECT_EQ(mesh.coordsUV[3].v, 1.0F);
}

TEST(WeldCornerUVs, IndexesTheCornersOfDeadTrianglesToo) {
    DMesh mesh = twoTrianglesWithUVs();
    mesh.triangleActive.Clear(0);
    mesh.numActiveTriangles = 1;
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(mesh.coordsUV.size(), 4U);
}

TEST(WeldCornerUVs, KeepsTheFirstInAscendingCornerOrder) {
    DMesh mesh = twoTrianglesWithUVs();
    mesh.coordsUV[0] = {0.001F, 0};
    mesh.coordsUV[3] = {0.002F, 0};
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV[3], mesh.indicesUV[0]);
    EXPECT_EQ(mesh.coordsUV[mesh.indicesUV[3]].u, 0.001F);
}

TEST(WeldCornerUVs, WeldsOnlyBelowTheSquareRootOf1e5th) {
    for (const auto& [offset, welded] : {std::pair{0.00316F, true}, {0.00317F, false}}) {
        DMesh mesh = twoTrianglesWithUVs();
        mesh.coordsUV[3] = {0, offset};
        weld(mesh);
        EXPECT_EQ(mesh.coordsUV.size(), welded ? 4U : 5U);
        EXPECT_EQ(mesh.indicesUV,
                  welded ? (Indices{0, 1, 2, 0, 2, 3}) : (Indices{0, 1, 2, 3, 2, 4}));
    }
}

TEST(WeldCornerUVs, RecordsExactlyAtTheLimitStayApart) {
    DMesh mesh = twoTrianglesWithUVs();
    mesh.coordsUV[3] = {0, 0.00316227763F};
    ASSERT_EQ(mesh.coordsUV[3].v * mesh.coordsUV[3].v, 1e-5F);
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{0, 1, 2, 3, 2, 4}));
}

TEST(WeldCornerUVs, ComparesWithTheKeptRecordNotTheWeldedOne) {
    // Three triangles at vertex 0 with u = 0, 0.003 and 0.006: the third is close to the second
    // only.
    DMesh mesh = test::buildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {-1, 0, 0}},
                                 {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}});
    mesh.coordsUV = {{0, 0}, {5, 5},      {6, 6}, {0.003F, 0}, {6, 6},
                     {7, 7}, {0.006F, 0}, {7, 7}, {8, 8}};
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{0, 1, 2, 0, 2, 3, 4, 3, 5}));
}

TEST(WeldCornerUVs, OfTwoCloseRecordsTheFirstIsShared) {
    // Three triangles at vertex 0 with u = 0, 0.004 and 0.002: the third is close to both others.
    DMesh mesh = test::buildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {-1, 0, 0}},
                                 {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}});
    mesh.coordsUV = {{0, 0}, {5, 5},      {6, 6}, {0.004F, 0}, {6, 6},
                     {7, 7}, {0.002F, 0}, {7, 7}, {8, 8}};
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{0, 1, 2, 3, 2, 4, 0, 4, 5}));
}

TEST(WeldCornerUVs, NeverWeldsCornersOfDifferentVertices) {
    DMesh mesh = test::twoTriangles();
    mesh.coordsUV.assign(6, UVCoord{0.5F, 0.5F});
    weld(mesh);
    EXPECT_EQ(mesh.coordsUV.size(), 4U);
}

TEST(WeldCornerUVs, DropsUVsThatFitNeitherForm) {
    for (const std::size_t records : {1U, 5U, 7U}) {
        DMesh mesh = twoTrianglesWithUVs();
        mesh.coordsUV.resize(records);
        weld(mesh);
        EXPECT_TRUE(mesh.coordsUV.empty()) << records;
        EXPECT_TRUE(mesh.indicesUV.empty());
    }
    DMesh mesh = twoTrianglesWithUVs();
    mesh.indicesUV = {0, 1};
    weld(mesh);
    EXPECT_TRUE(mesh.coordsUV.empty());
    EXPECT_TRUE(mesh.indicesUV.empty());
}

TEST(WeldCornerUVs, LeavesACompleteIndexAlone) {
    DMesh mesh = twoTrianglesWithUVs();
    mesh.indicesUV = {5, 4, 3, 2, 1, 0};
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(mesh.coordsUV.size(), 6U);
}

TEST(WeldCornerUVs, KeepsEveryNaNRecord) {
    DMesh mesh = test::twoTriangles();
    mesh.coordsUV.assign(6, UVCoord{kNaN, 0});
    weld(mesh);
    EXPECT_EQ(mesh.indicesUV, (Indices{0, 1, 2, 3, 4, 5}));
    findSeams(mesh);
}

// All triangles meet at vertex 0, with their first corner.
DMesh hubOf(std::uint32_t triangles) {
    DMesh mesh;
    mesh.vertices.resize(triangles + 2);
    for (std::uint32_t i = 0; i < triangles; ++i)
        mesh.triangles.insert(mesh.triangles.end(), {0, i + 1, i + 2});
    test::completeMesh(mesh);
    return mesh;
}

// For each corner of the hub, the corner whose record it shares: the first close one among those
// that share no earlier record.
Indices weldedByComparing(const DMesh& hub) {
    Indices sharedWith(hub.triangles.size());
    for (std::uint32_t b = 0; b < hub.triangles.size(); b += 3) {
        sharedWith[b] = b;
        for (std::uint32_t a = 0; a < b && sharedWith[b] == b; a += 3) {
            const float du = hub.coordsUV[a].u - hub.coordsUV[b].u;
            const float dv = hub.coordsUV[a].v - hub.coordsUV[b].v;
            if (sharedWith[a] == a && du * du + dv * dv < 1e-5F) sharedWith[b] = a;
        }
    }
    return sharedWith;
}

TEST(WeldCornerUVs, WeldsAHubLikeAnyOtherVertex) {
    test::Random random(41);
    for (const float size : {0.0F, 0.002F, 0.01F, 0.05F, 1.0F, 1000.0F, 1e18F, 3e38F}) {
        for (const float start : {0.0F, 7.0F, -20000.0F}) {
            DMesh mesh = hubOf(1000);
            for (std::uint32_t corner = 0; corner < mesh.triangles.size(); ++corner)
                mesh.coordsUV.push_back({start + random.around(size), random.around(size)});
            for (std::uint32_t corner = 0; corner < 300; corner += 27)
                mesh.coordsUV[corner].u = random.onceIn(2) ? kNaN : kInfinity;
            const std::vector<UVCoord> before = mesh.coordsUV;
            const Indices sharedWith = weldedByComparing(mesh);
            weld(mesh);
            for (std::uint32_t corner = 0; corner < mesh.triangles.size(); corner += 3) {
                const std::uint32_t shared = sharedWith[corner];
                ASSERT_EQ(mesh.indicesUV[corner], mesh.indicesUV[shared]) << size << ' ' << start;
                if (shared != corner || std::isnan(before[corner].u)) continue;
                ASSERT_EQ(mesh.coordsUV[mesh.indicesUV[corner]].u, before[corner].u);
                ASSERT_EQ(mesh.coordsUV[mesh.indicesUV[corner]].v, before[corner].v);
            }
        }
    }
}

// Comparing every pair of corners would take 10^11 steps.
TEST(WeldCornerUVs, WeldsAHubInLessThanQuadraticTime) {
    test::Random random(43);
    DMesh mesh = hubOf(400000);
    for (std::uint32_t corner = 0; corner < mesh.triangles.size(); ++corner) {
        mesh.coordsUV.push_back({random.around(1000), random.around(1000)});
        if (random.onceIn(2)) mesh.coordsUV.back().v = kNaN;
    }
    weld(mesh);
    EXPECT_GT(mesh.coordsUV.size(), 1100000U);
}

TEST(WeldCornerUVs, AcceptsAnEmptyMeshAndATriangleOfOneVertex) {
    DMesh empty;
    weld(empty);
    EXPECT_TRUE(empty.indicesUV.empty());
    findSeams(empty);
    EXPECT_EQ(empty.uvSeamVertices.count(), 0);

    DMesh point = test::buildMesh({{0, 0, 0}}, {{0, 0, 0}});
    point.coordsUV.resize(3);
    weld(point);
    EXPECT_EQ(point.indicesUV, (Indices{0, 0, 0}));
    findSeams(point);
}

// A grid of 8 x 8 squares whose UVs are cut open along column 4 from row 2 to row 6: the records on
// the right of the cut are shifted slightly to the right. Each end of the cut has one record.
DMesh gridWithCut() {
    DMesh mesh = test::grid(8, 8);
    test::addCornerUVs(mesh);
    for (std::size_t corner = 0; corner < mesh.triangles.size(); ++corner) {
        const VertexRecord& vertex = mesh.vertices[mesh.triangles[corner]];
        const bool onCut = vertex.x == 4 && vertex.y > 2 && vertex.y < 6;
        const bool right = corner / 6 % 8 >= 4;
        if (onCut && right) mesh.coordsUV[corner].u += 0.01F;
    }
    return mesh;
}

TEST(ComputeUVSeams, OnlyTheEndsOfAStraightSeamAreCorners) {
    DMesh mesh = gridWithCut();
    weld(mesh);
    ASSERT_EQ(mesh.coordsUV.size(), 81U + 3U);
    findSeams(mesh);
    for (std::int32_t row = 1; row < 8; ++row) {
        for (std::int32_t column = 1; column < 8; ++column) {
            const std::int32_t v = 9 * row + column;
            const bool onCut = column == 4 && row >= 2 && row <= 6;
            const bool end = onCut && (row == 2 || row == 6);
            EXPECT_EQ(mesh.uvSeamVertices.Test(v), onCut) << column << ',' << row;
            EXPECT_EQ(mesh.uvSeamCorners.Test(v), end) << column << ',' << row;
        }
    }
}

TEST(ComputeUVSeams, TheRimOfAGridIsASeamToo) {
    DMesh mesh = test::grid(4, 4);
    test::addCornerUVs(mesh);
    weld(mesh);
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamVertices),
              (Bits{0, 1, 2, 3, 4, 5, 9, 10, 14, 15, 19, 20, 21, 22, 23, 24}));
}

TEST(ComputeUVSeams, AClosedSurfaceInOneChartHasNone) {
    DMesh mesh = test::tetrahedron();
    test::addCornerUVs(mesh);
    weld(mesh);
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamCoords), Bits());
    EXPECT_EQ(setBits(mesh.uvSeamVertices), Bits());
    EXPECT_EQ(setBits(mesh.uvSeamCorners), Bits());
}

//       x
//     /   \       Four triangles around m. The rim is a seam; at u, the origin, it comes from a on
//   a - m - b     the left and goes on to b.
//     \   /
//       u
bool seamBendsTowards(UVCoord b, float seamAngle) {
    DMesh mesh = test::buildMesh(test::Points(5),
                                 {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}});  // u b x a m
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV = {{0, 0}, b, {0, 5}, {-3, 0}, {0, 1}};
    mesh.uvSeamAngle = seamAngle;
    findSeams(mesh);
    EXPECT_FALSE(mesh.uvSeamCoords.Test(4));
    EXPECT_TRUE(mesh.uvSeamCoords.Test(0));
    return mesh.uvSeamCorners.Test(0);
}

// By `degrees` upwards from the straight line.
bool seamBendsAtU(float degrees, float seamAngle) {
    const double radians = degrees * 3.14159265358979 / 180.0;
    return seamBendsTowards(
        {static_cast<float>(2 * std::cos(radians)), static_cast<float>(2 * std::sin(radians))},
        seamAngle);
}

TEST(ComputeUVSeams, ABendBeyondTheSeamAngleIsACorner) {
    // The cosine of 11.48 degrees is 1 - 0.02.
    EXPECT_FALSE(seamBendsAtU(0, 0.02F));
    EXPECT_FALSE(seamBendsAtU(11.4F, 0.02F));
    EXPECT_TRUE(seamBendsAtU(11.6F, 0.02F));
    EXPECT_FALSE(seamBendsAtU(-11.4F, 0.02F));
    EXPECT_TRUE(seamBendsAtU(-11.6F, 0.02F));
    // The cosine of 60 degrees is 1 - 0.5.
    EXPECT_FALSE(seamBendsAtU(59.9F, 0.5F));
    EXPECT_TRUE(seamBendsAtU(60.1F, 0.5F));
}

TEST(ComputeUVSeams, ABendByExactlyTheSeamAngleIsACorner) {
    // The cosine of a right angle is 1 - 1.
    EXPECT_TRUE(seamBendsTowards({0, 2}, 1.0F));
    EXPECT_FALSE(seamBendsTowards({0.01F, 2}, 1.0F));
}

TEST(ComputeUVSeams, ASeamAngleOfZeroMakesEveryPointACorner) {
    EXPECT_TRUE(seamBendsAtU(0, 0.0F));
    EXPECT_TRUE(seamBendsAtU(90, 0.0F));
}

TEST(ComputeUVSeams, ASeamEdgeOfZeroLengthIsABend) {
    DMesh mesh = test::buildMesh(test::Points(5), {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}});
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV = {{0, 0}, {0, 0}, {0, 5}, {-3, 0}, {0, 1}};
    findSeams(mesh);
    EXPECT_TRUE(mesh.uvSeamCorners.Test(0));
}

TEST(ComputeUVSeams, AJunctionOfThreeOrMoreSeamsIsACorner) {
    // Two separate triangles that meet at record 0, whose neighbours are all on the seam.
    DMesh mesh = test::buildMesh(test::Points(5), {{0, 1, 2}, {0, 3, 4}});
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV = {{0, 0}, {1, 0}, {1, 1}, {-1, 0}, {-1, -1}};
    findSeams(mesh);
    EXPECT_TRUE(mesh.uvSeamCorners.Test(0));
}

TEST(ComputeUVSeams, ASingleSeamNeighbourMakesACorner) {
    // Record 0 has 3 corners and the neighbours 1 to 4, of which only 3 is on the seam: triangles
    // that name a record twice give the others as many corners as neighbours.
    DMesh mesh = test::buildMesh(test::Points(5), {{0, 1, 2}, {2, 2, 1}, {0, 3, 4}, {4, 4, 0}});
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV.resize(5);
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamCoords), (Bits{0, 3}));
    EXPECT_TRUE(mesh.uvSeamCorners.Test(0));
}

TEST(ComputeUVSeams, WithoutASeamNeighbourThereIsNoCorner) {
    DMesh mesh = test::buildMesh(test::Points(5), {{0, 1, 2}, {2, 2, 1}, {0, 3, 4}, {4, 4, 3}});
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV.resize(5);
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamCoords), (Bits{0}));
    EXPECT_EQ(setBits(mesh.uvSeamVertices), (Bits{0}));
    EXPECT_EQ(setBits(mesh.uvSeamCorners), Bits());
}

TEST(ComputeUVSeams, MoreCornersThanNeighboursMakeASeamWithoutACorner) {
    DMesh mesh = test::buildMesh(test::Points(3), {{0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
    mesh.indicesUV = mesh.triangles;
    mesh.coordsUV = {{0, 0}, {1, 0}, {0, 1}};
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamVertices), (Bits{0, 1, 2}));
    EXPECT_EQ(setBits(mesh.uvSeamCorners), Bits());
}

TEST(ComputeUVSeams, MarksTheVertexAtTheFirstCornerOfTheList) {
    // One record is used at the corners of several vertices: its list starts with the highest
    // corner.
    DMesh mesh = test::oneTriangle();
    mesh.coordsUV.resize(2);
    mesh.indicesUV = {0, 1, 1};
    findSeams(mesh);
    // Record 1 has two corners and the neighbours 1 and 0: no seam. Record 0 has one corner and one
    // neighbour: no seam.
    EXPECT_EQ(setBits(mesh.uvSeamVertices), Bits());
    mesh.indicesUV = {0, 0, 1};
    mesh.coordsUV.resize(3);
    mesh.triangles = {0, 1, 2, 0, 1, 2};
    test::completeMesh(mesh);
    mesh.indicesUV = {0, 1, 2, 1, 0, 0};
    // Record 0 has corners 5, 4, 0 and neighbours 1, 0, 2: no seam. Record 1 has 3, 1 and 0, 2: no
    // seam. Record 2 has corner 2 and neighbours 0, 1: a seam, at vertex 2.
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamCoords), (Bits{2}));
    EXPECT_EQ(setBits(mesh.uvSeamVertices), (Bits{2}));
}

TEST(ComputeUVSeams, ARecordOfTwoVerticesMarksTheHighestCorner) {
    // Two separate triangles share record 0, at vertices 0 and 3.
    DMesh mesh = test::buildMesh(test::Points(6), {{0, 1, 2}, {3, 4, 5}});
    mesh.indicesUV = {0, 1, 2, 0, 3, 4};
    mesh.coordsUV.resize(5);
    findSeams(mesh);
    EXPECT_TRUE(mesh.uvSeamCoords.Test(0));
    EXPECT_FALSE(mesh.uvSeamVertices.Test(0));
    EXPECT_TRUE(mesh.uvSeamVertices.Test(3));
}

TEST(ComputeUVSeams, SeamsOfAnEarlierRunAreForgotten) {
    DMesh mesh = test::tetrahedron();
    test::addCornerUVs(mesh);
    weld(mesh);
    for (BitArray* bits : {&mesh.uvSeamCoords, &mesh.uvSeamVertices, &mesh.uvSeamCorners})
        bits->Resize(100, true);
    findSeams(mesh);
    EXPECT_EQ(setBits(mesh.uvSeamCoords), Bits());
    EXPECT_EQ(setBits(mesh.uvSeamVertices), Bits());
    EXPECT_EQ(setBits(mesh.uvSeamCorners), Bits());
}

}  // namespace
}  // namespace korvalite::core
