// SPDX-License-Identifier: MIT
#include "support/hard_meshes.h"

#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace korvalite::core::test {
namespace {

// EXPECTs the kind to be known.
DMesh made(std::string_view kind, std::int32_t size) {
    std::optional<DMesh> mesh = hardMesh(kind, size);
    EXPECT_TRUE(mesh) << kind;
    return mesh ? *std::move(mesh) : DMesh{};
}

struct Size {
    std::string_view kind;
    std::int32_t vertices;
    std::int32_t triangles;
};

TEST(HardMeshes, HaveTheSizeOfTheirKind) {
    constexpr std::int32_t kSize = 12;
    for (const Size& expected :
         {Size{"relief", 144, 242}, Size{"terrain", 144, 242}, Size{"plate", 144, 242},
          Size{"cube", 866, 1728}, Size{"cylinders", 50 * 26, 50 * 48}, Size{"fan", 13, 12},
          Size{"patches", 288, 484}}) {
        const DMesh mesh = made(expected.kind, kSize);
        EXPECT_EQ(mesh.vertexCount(), expected.vertices) << expected.kind;
        EXPECT_EQ(mesh.triangleCount(), expected.triangles) << expected.kind;
        EXPECT_TRUE(isSound(mesh)) << expected.kind;
    }
}

TEST(HardMeshes, OtherNamesAndSizesGiveNothing) {
    EXPECT_FALSE(hardMesh("sphere", 12));
    EXPECT_FALSE(hardMesh("", 12));
    EXPECT_FALSE(hardMesh("plate", 2));
    EXPECT_FALSE(hardMesh("plate", -1));
    EXPECT_TRUE(hardMesh("plate", 3));
}

TEST(HardMeshes, CubeAndCylindersAreClosed) {
    EXPECT_TRUE(isClosedManifold(made("cube", 5)));
    EXPECT_TRUE(isClosedManifold(made("cylinders", 7)));
}

TEST(HardMeshes, TheSeaOfATerrainCoversEverythingBelowZero) {
    const DMesh land = made("terrain", 20);
    const DMesh relief = made("relief", 20);
    std::int32_t flooded = 0;
    for (std::size_t v = 0; v < relief.vertices.size(); ++v) {
        const VertexRecord& before = relief.vertices[v];
        const VertexRecord& after = land.vertices[v];
        EXPECT_EQ(after.x, before.x);
        EXPECT_EQ(after.y, before.y);
        EXPECT_EQ(after.z, std::max(0.0F, before.z));
        flooded += before.z < 0 ? 1 : 0;
    }
    EXPECT_EQ(land.triangles, relief.triangles);
    EXPECT_GT(flooded, 100);
    EXPECT_LT(flooded, 300);
}

// The hubs of a cylinder are its last two vertices, that of a fan its last one.
TEST(HardMeshes, AHubIsACornerOfAllTrianglesOfItsFan) {
    constexpr std::int32_t kSize = 9;
    const auto trianglesAt = [](const DMesh& mesh, std::int32_t vertex) {
        return std::count(mesh.triangles.begin(), mesh.triangles.end(),
                          static_cast<std::uint32_t>(vertex));
    };
    EXPECT_EQ(trianglesAt(made("fan", kSize), kSize), kSize);
    const DMesh cylinders = made("cylinders", kSize);
    EXPECT_EQ(trianglesAt(cylinders, 2 * kSize), kSize);
    EXPECT_EQ(trianglesAt(cylinders, 2 * kSize + 1), kSize);
}

TEST(HardMeshes, PatchesAreNarrowAndOnEitherSideOfTheMirrorPlane) {
    const DMesh mesh = made("patches", 4);
    const auto half = std::next(mesh.vertices.begin(), 16);
    for (auto vertex = mesh.vertices.begin(); vertex != mesh.vertices.end(); ++vertex) {
        EXPECT_NEAR(vertex->x, vertex < half ? -5 : 5, 0.0011);
        EXPECT_NEAR(vertex->y, 0.0005, 0.00051);
        EXPECT_EQ(vertex->z, 0);
    }
}

}  // namespace
}  // namespace korvalite::core::test
