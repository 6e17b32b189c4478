// SPDX-License-Identifier: MIT
#include "korva/files/scene.h"

#include "korva/files/normals.h"
#include "korva/simplify_scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace korva {
namespace {

using korvalite::Mesh;
using korvalite::Target;

Mesh square(float z) {
    Mesh mesh;
    mesh.positions = {0, 0, z, 1, 0, z, 1, 1, z, 0, 1, z};
    mesh.triangles = {0, 1, 2, 0, 2, 3};
    return mesh;
}

/// A bumpy sheet of `side` times `side` vertices.
Mesh sheet(std::uint32_t side) {
    Mesh mesh;
    for (std::uint32_t y = 0; y < side; ++y)
        for (std::uint32_t x = 0; x < side; ++x)
            mesh.positions.insert(mesh.positions.end(),
                                  {static_cast<float>(x), static_cast<float>(y),
                                   static_cast<float>((x * 7 + y * 13) % 5) / 10});
    for (std::uint32_t y = 0; y + 1 < side; ++y)
        for (std::uint32_t x = 0; x + 1 < side; ++x) {
            const std::uint32_t a = y * side + x;
            mesh.triangles.insert(mesh.triangles.end(),
                                  {a, a + 1, a + side, a + 1, a + side + 1, a + side});
        }
    return mesh;
}

korvalite::Report simplified(Scene& scene, const Target& target) {
    korvalite::Options options;
    options.target = target;
    return simplifyScene(scene, options, [](double, double) { return korvalite::Monitor(); })
        .report;
}

TEST(Scene, JoinsMeshesInTheirOrder) {
    std::vector<NamedMesh> meshes{{"a", square(0)}, {"b", square(1)}};
    const Mesh joined = joinMeshes(meshes);
    EXPECT_EQ(joined.vertexCount(), 8U);
    EXPECT_EQ(joined.triangles, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7}));
    EXPECT_EQ(joined.positions[14], 1.0F);
}

TEST(Scene, GivesAJoinedMeshWhatOneOfThemHas) {
    std::vector<NamedMesh> meshes{{"a", square(0)}, {"b", square(1)}};
    meshes[1].mesh.colors.assign(16, 7);
    meshes[1].mesh.mask.assign(4, 9);
    meshes[1].mesh.uvs = {0.25F, 0.5F, 0.75F, 1};
    meshes[1].mesh.triangleUVs = {0, 1, 0, 1, 0, 1};
    const Mesh joined = joinMeshes(meshes);
    ASSERT_EQ(joined.colors.size(), 32U);
    EXPECT_EQ(joined.colors[0], 255);
    EXPECT_EQ(joined.colors[16], 7);
    ASSERT_EQ(joined.mask.size(), 8U);
    EXPECT_EQ(joined.mask[3], 255);
    EXPECT_EQ(joined.mask[4], 9);
    EXPECT_EQ(joined.uvs, (std::vector<float>{0, 0, 0.25F, 0.5F, 0.75F, 1}));
    EXPECT_EQ(joined.triangleUVs, (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 0, 1, 2, 1, 2, 1, 2}));
}

TEST(Scene, ASingleMeshStaysAsItIs) {
    std::vector<NamedMesh> meshes{{"a", square(0)}};
    meshes[0].mesh.uvs = {1, 1};  // a point that no corner has
    const Mesh joined = joinMeshes(meshes);
    EXPECT_EQ(joined.uvs.size(), 2U);
    EXPECT_TRUE(joined.triangleUVs.empty());
}

TEST(SimplifyScene, TakesEachMeshToTheSameShare) {
    Scene scene;
    scene.meshes = {{"small", sheet(20)}, {"large", sheet(40)}};
    const korvalite::Report report = simplified(scene, Target::percent(25));
    EXPECT_EQ(scene.meshes[0].mesh.vertexCount(), 100U);
    EXPECT_EQ(scene.meshes[1].mesh.vertexCount(), 400U);
    EXPECT_EQ(scene.meshes[1].name, "large");
    EXPECT_EQ(report.inputVertices, 2000U);
    EXPECT_EQ(report.asked, 500U);
    EXPECT_EQ(report.reached, 500U);
    EXPECT_FALSE(report.missed);
}

TEST(SimplifyScene, DividesANumberInProportionWithoutLosingAny) {
    Scene scene;
    scene.meshes = {{"a", sheet(21)}, {"b", sheet(30)}, {"c", sheet(17)}};
    const korvalite::Report report = simplified(scene, Target::vertices(503));
    EXPECT_EQ(report.asked, 503U);
    EXPECT_EQ(scene.vertexCount(), 503U);
    EXPECT_NEAR(static_cast<double>(scene.meshes[1].mesh.vertexCount()), 503.0 * 900 / 1630, 1.0);
}

TEST(SimplifyScene, AddsUpWhatHeldMeshesBack) {
    Scene scene;
    scene.meshes = {{"a", sheet(12)}, {"b", sheet(12)}};
    for (NamedMesh& named : scene.meshes) {
        named.mesh.mask.assign(named.mesh.vertexCount(), 0);
        named.mesh.mask[0] = 255;  // one value everywhere would count as no mask
    }
    const korvalite::Report report = simplified(scene, Target::percent(10));
    EXPECT_TRUE(report.missed);
    EXPECT_EQ(report.reached, 288U);
    // Each sheet has 11 * 12 edges along both axes, and 11 * 11 diagonals.
    EXPECT_EQ(report.blockedEdges.mask, 2U * (11 * 12 * 2 + 11 * 11));
    EXPECT_NE(report.advice.find("mask 0"), std::string::npos) << report.advice;
}

TEST(SimplifyScene, GivesEachMeshItsShareOfTheProgress) {
    Scene scene;
    scene.meshes = {{"a", sheet(11)}, {"b", sheet(21)}};  // 200 and 800 triangles
    std::vector<double> shares;
    korvalite::Options options;
    (void)simplifyScene(scene, options, [&](double from, double to) {
        shares.insert(shares.end(), {from, to});
        return korvalite::Monitor();
    });
    EXPECT_EQ(shares, (std::vector<double>{0, 0.2, 0.2, 1}));
}

TEST(Normals, TheWayAFaceIsCutMakesNoDifference) {
    // Three faces of a cube around vertex 0; one is cut through it.
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 1, 0, 1, 0, 1, 1};
    mesh.triangles = {0, 2, 4, 0, 4, 1, 0, 1, 3, 1, 5, 3, 0, 3, 2, 2, 3, 6};
    const std::vector<float> normals = vertexNormals(mesh);
    const float expected = -1 / std::sqrt(3.0F);
    for (std::size_t axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(normals[axis], expected, 1e-6F);
}

TEST(Normals, AreOfLengthOneAtAnySize) {
    for (const float scale : {1e-30F, 1.0F, 1e30F}) {
        Mesh mesh = square(0);
        for (float& coordinate : mesh.positions)
            coordinate *= scale;
        EXPECT_EQ(vertexNormals(mesh), (std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}));
    }
}

TEST(Normals, PointUpWhereNoTriangleHasAnArea) {
    Mesh mesh = square(0);
    mesh.positions.insert(mesh.positions.end(), {5, 5, 5});
    mesh.triangles = {0, 1, 1};
    const std::vector<float> normals = vertexNormals(mesh);
    for (std::size_t i = 0; i < normals.size(); i += 3) {
        EXPECT_EQ(normals[i], 0);
        EXPECT_EQ(normals[i + 1], 0);
        EXPECT_EQ(normals[i + 2], 1);
    }
}

}  // namespace
}  // namespace korva
