// SPDX-License-Identifier: MIT
#include "korva/files/weld.h"

#include "support/random.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

namespace korva::test {

namespace {

using korvalite::Mesh;
using korvalite::core::test::Random;
using Indices = std::vector<std::uint32_t>;

/// Two triangles with corners of their own that share an edge.
Mesh twoTriangles() {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0};
    mesh.triangles = {0, 1, 2, 3, 4, 5};
    return mesh;
}

}  // namespace

TEST(Weld, JoinsEqualPositionsInTheOrderOfTheirFirstOccurrence) {
    Mesh mesh = twoTriangles();
    const WeldCounts counts = weld(mesh);
    EXPECT_EQ(counts.joined, 2U);
    EXPECT_EQ(counts.differing, 0U);
    EXPECT_EQ(mesh.positions, (std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}));
    EXPECT_EQ(mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
}

TEST(Weld, ZeroesAreEqualWhateverTheirSign) {
    Mesh mesh;
    mesh.positions = {-0.0F, 0, 1, 0, -0.0F, 1};
    mesh.triangles = {0, 1, 0};
    EXPECT_EQ(weld(mesh).joined, 1U);
    EXPECT_EQ(mesh.positions.size(), 3U);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(mesh.positions[0]), 0x80000000U) << "the first is left";
}

TEST(Weld, NeighbouringFloatsStayApartAndEqualNaNsAreJoined) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Mesh mesh;
    mesh.positions = {1, 0, 0, 1.0000001F, 0, 0, nan, 0, 0, nan, 0, 0};
    EXPECT_EQ(weld(mesh).joined, 1U);
    EXPECT_EQ(mesh.vertexCount(), 3U);
}

TEST(Weld, CountsTheVerticesWhoseColourOrMaskIsLost) {
    Mesh mesh;
    mesh.positions = {5, 5, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 7, 7};
    mesh.colors = {9, 9, 9, 9, 1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 5, 1, 2, 3, 4, 8, 8, 8, 8};
    mesh.mask = {0, 10, 10, 10, 11, 77};
    const WeldCounts counts = weld(mesh);
    EXPECT_EQ(counts.joined, 3U);
    EXPECT_EQ(counts.differing, 2U);
    EXPECT_EQ(mesh.colors, (std::vector<std::uint8_t>{9, 9, 9, 9, 1, 2, 3, 4, 8, 8, 8, 8}));
    EXPECT_EQ(mesh.mask, (std::vector<std::uint8_t>{0, 10, 77}));
}

TEST(Weld, LeavesUVsAlone) {
    Mesh mesh = twoTriangles();
    mesh.uvs = {0, 0, 1, 0, 1, 1, 0, 0, 1, 1, 0, 1};
    mesh.triangleUVs = {0, 1, 2, 3, 4, 5};
    const Mesh before = mesh;
    weld(mesh);
    EXPECT_EQ(mesh.uvs, before.uvs);
    EXPECT_EQ(mesh.triangleUVs, before.triangleUVs);
}

TEST(Weld, AnEmptyMeshStaysEmpty) {
    Mesh mesh;
    EXPECT_EQ(weld(mesh).joined, 0U);
    const UnusableCounts counts = removeUnusable(mesh);
    EXPECT_EQ(counts.degenerateTriangles + counts.duplicateTriangles + counts.unusedVertices, 0U);
}

TEST(Weld, AgreesWithASortedMapOnManyPoints) {
    Random random(7);
    for (const std::uint32_t range : {3U, 20U, 1000U}) {
        Mesh mesh;
        for (int i = 0; i < 30000; ++i)
            mesh.positions.push_back(static_cast<float>(random.below(range)) * 0.37F);
        for (std::uint32_t i = 0; i < 10000; ++i)
            mesh.triangles.push_back(random.below(10000));
        mesh.triangles.resize(9999);
        std::map<std::array<float, 3>, std::uint32_t> indexOf;
        std::vector<float> positions;
        Indices newIndex;
        for (std::size_t i = 0; i < mesh.positions.size(); i += 3) {
            const std::array<float, 3> point = {mesh.positions[i], mesh.positions[i + 1],
                                                mesh.positions[i + 2]};
            const auto found = indexOf.emplace(point, static_cast<std::uint32_t>(indexOf.size()));
            if (found.second) positions.insert(positions.end(), point.begin(), point.end());
            newIndex.push_back(found.first->second);
        }
        Indices triangles = mesh.triangles;
        for (std::uint32_t& corner : triangles)
            corner = newIndex[corner];
        EXPECT_EQ(weld(mesh).joined, 10000U - indexOf.size());
        EXPECT_EQ(mesh.positions, positions);
        EXPECT_EQ(mesh.triangles, triangles);
        EXPECT_EQ(weld(mesh).joined, 0U) << "a second time";
        EXPECT_EQ(mesh.triangles, triangles);
    }
}

TEST(RemoveUnusable, RemovesTrianglesThatHaveAVertexTwice) {
    Mesh mesh = twoTriangles();
    mesh.triangles = {0, 0, 1, 0, 1, 2, 3, 4, 3, 4, 5, 5, 3, 4, 5, 1, 1, 1};
    const UnusableCounts counts = removeUnusable(mesh);
    EXPECT_EQ(counts.degenerateTriangles, 4U);
    EXPECT_EQ(counts.duplicateTriangles, 0U);
    EXPECT_EQ(mesh.triangles, (Indices{0, 1, 2, 3, 4, 5}));
}

TEST(RemoveUnusable, RemovesDuplicatesInTheSameSenseOnly) {
    Mesh mesh = twoTriangles();
    mesh.triangles = {0, 1, 2, 1, 2, 0, 2, 0, 1, 2, 1, 0, 3, 4, 5, 1, 0, 2, 0, 2, 1};
    mesh.uvs = {0, 0, 1, 1};
    mesh.triangleUVs = {0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 1, 0, 1, 0, 1, 1, 1, 0, 0, 0};
    const UnusableCounts counts = removeUnusable(mesh);
    EXPECT_EQ(counts.degenerateTriangles, 0U);
    EXPECT_EQ(counts.duplicateTriangles, 4U);
    EXPECT_EQ(mesh.triangles, (Indices{0, 1, 2, 2, 1, 0, 3, 4, 5}));
    EXPECT_EQ(mesh.triangleUVs, (Indices{0, 0, 0, 0, 0, 1, 0, 1, 0}));
}

TEST(RemoveUnusable, RemovesVerticesOfNoTriangleThatIsLeft) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4};
    mesh.colors = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4};
    mesh.mask = {0, 1, 2, 3, 4};
    mesh.triangles = {4, 1, 3, 0, 0, 1};
    const UnusableCounts counts = removeUnusable(mesh);
    EXPECT_EQ(counts.degenerateTriangles, 1U);
    EXPECT_EQ(counts.unusedVertices, 2U);
    EXPECT_EQ(mesh.positions, (std::vector<float>{1, 1, 1, 3, 3, 3, 4, 4, 4}));
    EXPECT_EQ(mesh.colors, (std::vector<std::uint8_t>{1, 1, 1, 1, 3, 3, 3, 3, 4, 4, 4, 4}));
    EXPECT_EQ(mesh.mask, (std::vector<std::uint8_t>{1, 3, 4}));
    EXPECT_EQ(mesh.triangles, (Indices{2, 0, 1}));
}

TEST(RemoveUnusable, LeavesACleanMeshAlone) {
    Mesh mesh = twoTriangles();
    const Mesh before = mesh;
    removeUnusable(mesh);
    EXPECT_EQ(mesh.positions, before.positions);
    EXPECT_EQ(mesh.triangles, before.triangles);
}

TEST(RemoveUnusable, FindsEveryDuplicateAmongMany) {
    Mesh mesh;
    mesh.positions.resize(300);
    for (std::uint32_t round = 0; round < 2; ++round) {
        for (std::uint32_t i = 0; i < 100 * 99; ++i) {
            const std::uint32_t a = i / 99;
            const std::uint32_t b = (a + 1 + i % 99) % 100;
            const std::uint32_t c = (a + b + 50) % 100;
            mesh.triangles.insert(mesh.triangles.end(),
                                  {round == 0 ? a : b, round == 0 ? b : c, round == 0 ? c : a});
        }
    }
    const std::size_t all = mesh.triangleCount();
    const UnusableCounts counts = removeUnusable(mesh);
    EXPECT_EQ(counts.degenerateTriangles % 2, 0U);
    EXPECT_GE(counts.duplicateTriangles, (all - counts.degenerateTriangles) / 2);
    EXPECT_EQ(mesh.triangleCount(), all - counts.degenerateTriangles - counts.duplicateTriangles);
    EXPECT_EQ(removeUnusable(mesh).duplicateTriangles, 0U);
}

}  // namespace korva::test
