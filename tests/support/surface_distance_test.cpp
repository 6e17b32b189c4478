// SPDX-License-Identifier: MIT
#include "support/surface_distance.h"

#include "support/mesh_builder.h"
#include "support/random.h"
#include "support/triangle_grid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvalite::core::test {
namespace {

constexpr std::size_t kSamples = 5000;

DMesh shifted(DMesh mesh, const FloatVec3& by) {
    for (VertexRecord& vertex : mesh.vertices)
        vertex.setPosition(vertex.position() + by);
    recomputeBoundingBox(mesh);
    return mesh;
}

double distanceByAllTriangles(const DMesh& mesh, const DoubleVec3& point) {
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t corner = 0; corner < mesh.triangles.size(); corner += 3)
        nearest = std::min(nearest, squaredDistance(point, cornersAt(mesh, corner)));
    return std::sqrt(nearest);
}

TEST(SurfaceDistance, OfAMeshToItselfIsZero) {
    const DMesh mesh = torus(24, 12);
    const SurfaceDistance distance = surfaceDistance(mesh, mesh, kSamples);
    EXPECT_LT(distance.rms, 1e-12);
    EXPECT_LT(distance.maximum, 1e-12);
}

TEST(SurfaceDistance, OfAPlaneLiftedByDIsD) {
    const DMesh mesh = grid(9, 7);
    const SurfaceDistance distance = surfaceDistance(mesh, shifted(mesh, {0, 0, 0.25F}), kSamples);
    EXPECT_NEAR(distance.rms, 0.25, 1e-9);
    EXPECT_NEAR(distance.maximum, 0.25, 1e-9);
}

TEST(SurfaceDistance, OfADistantMeshIsKnown) {
    const DMesh mesh = grid(2, 2);
    const SurfaceDistance distance = surfaceDistance(mesh, shifted(mesh, {102, 0, 0}), kSamples);
    EXPECT_GT(distance.rms, 100.0);
    EXPECT_NEAR(distance.maximum, 102.0, 0.2);
}

TEST(SurfaceDistance, MaximumCoversBothDirections) {
    const DMesh small = grid(1, 1);
    const DMesh large = grid(4, 1);
    const double there = surfaceDistance(small, large, kSamples).maximum;
    EXPECT_NEAR(there, 3.0, 0.05);
    EXPECT_EQ(surfaceDistance(large, small, kSamples).maximum, there);
    EXPECT_LT(surfaceDistance(small, large, kSamples).rms, 1e-12);
}

TEST(SurfaceDistance, IgnoresInactiveTriangles) {
    DMesh mesh = grid(4, 1);
    for (std::int32_t triangle = 2; triangle < mesh.triangleCount(); ++triangle)
        mesh.triangleActive.Clear(triangle);
    EXPECT_LT(surfaceDistance(mesh, grid(1, 1), kSamples).maximum, 1e-12);
}

TEST(SurfaceDistance, OfAnOctahedronToABallIsKnown) {
    // The faces of an octahedron with corners at distance 1 come as close as 1 / sqrt(3) to the
    // centre.
    const SurfaceDistance distance = surfaceDistance(octahedron(), sphere(4), kSamples);
    EXPECT_NEAR(distance.maximum, 1 - 1 / std::sqrt(3.0), 0.01);
    EXPECT_LT(distance.rms, distance.maximum);
    EXPECT_GT(distance.rms, distance.maximum / 3);
}

TEST(SamplesOf, AreSpreadByArea) {
    const DMesh mesh = buildMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {6, 0, 0}, {9, 0, 0}, {6, 3, 0}},
                                 {{0, 1, 2}, {3, 4, 5}});
    const auto samples = samplesOf(mesh, 1000);
    const auto onFirst = std::count_if(samples.begin(), samples.end(),
                                       [](const DoubleVec3& sample) { return sample.x <= 1; });
    EXPECT_NEAR(static_cast<double>(samples.size()), 1000, 1);
    EXPECT_NEAR(static_cast<double>(onFirst), 100, 1);
}

TEST(TriangleGrid, FindsTheSameDistanceAsAFullSearch) {
    DMesh mesh = torus(30, 14);
    jitter(mesh, 0.1F, 5);
    // Adds one triangle across the whole mesh, and one without area.
    mesh.triangles.insert(mesh.triangles.end(), {0, 150, 290, 7, 7, 9});
    completeMesh(mesh);
    const TriangleGrid grid(mesh);
    Random random(9);
    for (int i = 0; i < 500; ++i) {
        const double x = double{random.around(4)};
        const double y = double{random.around(4)};
        const DoubleVec3 point{x, y, double{random.around(2)}};
        EXPECT_NEAR(grid.distanceTo(point), distanceByAllTriangles(mesh, point), 1e-12);
    }
}

TEST(TriangleGrid, WithoutTrianglesIsInfinitelyFar) {
    const DMesh mesh;
    EXPECT_TRUE(std::isinf(TriangleGrid(mesh).distanceTo({0, 0, 0})));
}

}  // namespace
}  // namespace korvalite::core::test
