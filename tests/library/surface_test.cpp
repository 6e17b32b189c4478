// SPDX-License-Identifier: MIT
#include "library/closest_point.h"
#include "library/library_meshes.h"
#include "library/surface_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace korvalite::test {
namespace {

using core::DoubleVec3;
using core::test::Random;

double distanceByBruteForce(const Mesh& mesh, const DoubleVec3& point) {
    const auto vertex = [&](std::size_t corner) {
        const float* p = &mesh.positions[3 * std::size_t{mesh.triangles[corner]}];
        return toDouble(core::FloatVec3{p[0], p[1], p[2]});
    };
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t corner = 0; corner < mesh.triangles.size(); corner += 3) {
        const TriangleCorners triangle{vertex(corner), vertex(corner + 1), vertex(corner + 2)};
        least = std::min(least, nearestPlace(point, triangle).square);
    }
    return std::sqrt(least);
}

/// Half of the points are within `near` of a vertex on each axis, the others within `size` of 0.
void expectBruteForce(const Mesh& mesh, std::uint32_t seed, float size, float near) {
    const Surface surface(mesh.view());
    Random random(seed);
    for (int i = 0; i < 500; ++i) {
        const std::size_t vertex = random.below(static_cast<std::uint32_t>(mesh.vertexCount()));
        const float* at = &mesh.positions[3 * vertex];
        std::array<double, 3> p{};
        for (std::size_t axis = 0; axis < 3; ++axis)
            p[axis] = i % 2 == 0 ? static_cast<double>(random.around(size))
                                 : static_cast<double>(at[axis] + random.around(near));
        const double expected = distanceByBruteForce(mesh, {p[0], p[1], p[2]});
        EXPECT_DOUBLE_EQ(surface.nearest(p).distance, expected);
    }
}

TEST(Surface, FindsWhatBruteForceFinds) {
    expectBruteForce(soup(1, 1), 1, 2, 0.1F);
    expectBruteForce(soup(5, 2), 2, 2, 0.1F);
    expectBruteForce(soup(1000, 3), 3, 2, 0.01F);
    expectBruteForce(soup(1000, 4, 1.5F), 4, 3, 0.01F);
    expectBruteForce(soup(1000, 5, 1e-4F), 5, 2, 1e-4F);
    expectBruteForce(torusMesh(), 6, 3, 0.01F);
    expectBruteForce(grid(40, 20), 7, 50, 0.5F);
}

TEST(Surface, FindsWhatBruteForceFindsInHardMeshes) {
    // Triangles that become ever smaller, are all at one place, or are all on a line.
    Mesh shrinking;
    for (std::uint32_t t = 0; t < 200; ++t) {
        const float size = std::pow(0.7F, static_cast<float>(t));
        shrinking.positions.insert(shrinking.positions.end(), {size, 0, 0, 0, size, 0, 0, 0, size});
        shrinking.triangles.insert(shrinking.triangles.end(), {3 * t, 3 * t + 1, 3 * t + 2});
    }
    expectBruteForce(shrinking, 1, 1, 1e-6F);
    Mesh atOnePlace = grid(20, 20);
    std::ranges::fill(atOnePlace.positions, 0.5F);
    expectBruteForce(atOnePlace, 2, 2, 0.1F);
    Mesh line = grid(20, 20);
    for (std::size_t i = 0; i < line.positions.size(); ++i)
        if (i % 3 != 0) line.positions[i] = 1;
    expectBruteForce(line, 3, 30, 0.5F);
    expectBruteForce(moved(soup(300, 4), {0, 0, 0}, 1e30F), 4, 2e30F, 1e28F);
    expectBruteForce(moved(soup(300, 5), {0, 0, 0}, 1e-30F), 5, 2e-30F, 1e-31F);
}

TEST(Surface, TheNearestPlaceIsOnTheTriangleThatItNames) {
    const Mesh mesh = soup(400, 8);
    const Surface surface(mesh.view());
    const SurfacePoint found = surface.nearest({0.1, 0.2, 0.3});
    TriangleCorners corners;
    for (std::size_t k = 0; k < 3; ++k) {
        const float* p = &mesh.positions[3 * std::size_t{found.triangle[k]}];
        corners[k] = toDouble(core::FloatVec3{p[0], p[1], p[2]});
    }
    const DoubleVec3 place{found.place[0], found.place[1], found.place[2]};
    EXPECT_NEAR(std::sqrt(nearestPlace(place, corners).square), 0, 1e-15);
    const DoubleVec3 apart = place - DoubleVec3{0.1, 0.2, 0.3};
    EXPECT_NEAR(std::sqrt(dot(apart, apart)), found.distance, 1e-15);
}

TEST(Surface, KnowsAreaVolumeAndDiagonal) {
    const Mesh mesh = moved(cube(), {10, 20, 30}, 2);
    const Surface surface(mesh.view());
    EXPECT_DOUBLE_EQ(surface.area(), 24);
    EXPECT_DOUBLE_EQ(surface.volume(), 8);
    EXPECT_DOUBLE_EQ(surface.diagonal(), std::sqrt(12.0));
    Mesh insideOut = mesh;
    for (std::size_t t = 0; t < insideOut.triangles.size(); t += 3)
        std::swap(insideOut.triangles[t], insideOut.triangles[t + 1]);
    EXPECT_DOUBLE_EQ(Surface(insideOut.view()).volume(), -8);
}

TEST(Surface, SplitsQuads) {
    const std::vector<float> positions{0, 0, 0, 2, 0, 0, 2, 2, 0, 0, 2, 0, 5, 0, 0};
    const std::vector<std::uint32_t> faces{0, 1, 2, 3, 1, 4, 2, kNoVertex};
    MeshView view;
    view.positions = positions;
    view.faces = faces;
    view.verticesPerFace = 4;
    const Surface surface(view);
    EXPECT_DOUBLE_EQ(surface.area(), 7);
    EXPECT_DOUBLE_EQ(surface.nearest({0.5, 1.5, 3}).distance, 3);
    EXPECT_DOUBLE_EQ(surface.nearest({6, 0, 0}).distance, 1);
}

TEST(Surface, RefusesBadMeshesWithASentence) {
    const auto sentenceFor = [](const Mesh& mesh) {
        return errorOf(ErrorCode::BadMesh, [&] { const Surface surface(mesh.view()); });
    };
    Mesh mesh = cube();
    mesh.triangles[4] = 8;
    EXPECT_EQ(sentenceFor(mesh), "Triangle 1 refers to vertex 8, but there are only 8.");
    mesh = cube();
    mesh.positions[10] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_NE(sentenceFor(mesh).find("Vertex 3 has a coordinate that is not finite"),
              std::string::npos);
    mesh.positions.pop_back();
    EXPECT_NE(sentenceFor(mesh).find("positions has 23 values"), std::string::npos);
    mesh = cube();
    mesh.triangles.clear();
    EXPECT_EQ(sentenceFor(mesh), "The mesh has no triangles to measure.");
    EXPECT_EQ(sentenceFor({}), "The mesh has no triangles to measure.");
}

TEST(Surface, TheMonitorCancelsItsPreparation) {
    const Mesh mesh = grid(200, 200);
    EXPECT_EQ(errorOf(ErrorCode::Cancelled,
                      [&] { const Surface s(mesh.view(), [](const auto&) { return false; }); }),
              "Cancelled by the caller.");
}

}  // namespace
}  // namespace korvalite::test
