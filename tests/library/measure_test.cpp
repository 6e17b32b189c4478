// SPDX-License-Identifier: MIT
#include "library/library_meshes.h"
#include "library/surface_meshes.h"

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <stdexcept>

namespace korvalite::test {
namespace {

constexpr MeasureOptions kFewSamples{.samples = 20'000, .threads = 1};

Measurement measured(const Mesh& a, const Mesh& b, const MeasureOptions& options = kFewSamples) {
    return measure(a.view(), b.view(), options);
}

void expectSame(const Distances& a, const Distances& b) {
    EXPECT_EQ(a.largest, b.largest);
    EXPECT_EQ(a.atMost, b.atMost);
    EXPECT_EQ(a.rms, b.rms);
    EXPECT_EQ(a.percentile95, b.percentile95);
    EXPECT_EQ(a.largestAt, b.largestAt);
    EXPECT_EQ(a.largestTo, b.largestTo);
    EXPECT_EQ(a.meanNormalAngle, b.meanNormalAngle);
    EXPECT_EQ(a.largestNormalAngle, b.largestNormalAngle);
    EXPECT_EQ(a.samples, b.samples);
}

void expectOrdered(const Distances& d) {
    EXPECT_LE(d.rms, d.largest);
    EXPECT_LE(d.percentile95, d.largest);
    EXPECT_LE(d.largest, d.atMost);
    EXPECT_TRUE(std::isfinite(d.atMost));
    EXPECT_GE(d.rms, 0);
    EXPECT_GE(d.percentile95, 0);
}

TEST(Measure, ParallelSquaresAreEverywhereAtTheSameDistance) {
    const Measurement m = measured(square(0), square(0.25F));
    for (const Distances& d : {m.fromAToB, m.fromBToA}) {
        EXPECT_DOUBLE_EQ(d.largest, 0.25);
        EXPECT_DOUBLE_EQ(d.atMost, 0.25);
        EXPECT_DOUBLE_EQ(d.rms, 0.25);
        EXPECT_NEAR(d.percentile95, 0.25, 1e-7);
        EXPECT_EQ(d.largestNormalAngle, 0);
        EXPECT_GT(d.samples, 10'000U);
        EXPECT_LT(d.samples, 60'000U);
    }
    EXPECT_DOUBLE_EQ(m.areaA, 1);
    EXPECT_DOUBLE_EQ(m.diagonalA, std::sqrt(2.0));
}

TEST(Measure, ASurfaceTurnedOverHasNormalsAtHalfATurn) {
    Mesh over = square(0);
    std::ranges::reverse(over.triangles);
    const Measurement m = measured(square(0), over);
    EXPECT_EQ(m.largest, 0);
    EXPECT_DOUBLE_EQ(m.fromAToB.meanNormalAngle, 180);
}

TEST(Measure, AMeshHasNoDistanceFromItself) {
    for (const Mesh& mesh : {torusMesh(), soup(200, 3), moved(torusMesh(), {1e6F, 3e5F, 0})}) {
        const Measurement m = measured(mesh, mesh);
        EXPECT_EQ(m.largest, 0);
        EXPECT_EQ(m.atMost, 0);
        EXPECT_EQ(m.rms, 0);
        EXPECT_EQ(m.percentile95, 0);
        EXPECT_EQ(m.volumeA, m.volumeB);
    }
    EXPECT_EQ(measured(torusMesh(), torusMesh()).fromAToB.largestNormalAngle, 0);
}

TEST(Measure, ACubeInACubeIsFarthestFromItsCorners) {
    const Mesh outer = moved(cube(), {-1.5F, -1.5F, -1.5F}, 3);
    const Mesh inner = moved(cube(), {-0.5F, -0.5F, -0.5F});
    const Measurement m = measured(outer, inner);
    EXPECT_DOUBLE_EQ(m.fromAToB.largest, std::sqrt(3.0));
    EXPECT_DOUBLE_EQ(m.fromBToA.largest, 1);
    EXPECT_DOUBLE_EQ(m.largest, std::sqrt(3.0));
    EXPECT_NEAR(m.atMost, std::sqrt(3.0), 1e-12);
    EXPECT_DOUBLE_EQ(m.fromBToA.rms, 1);
    EXPECT_DOUBLE_EQ(m.volumeA, 27);
    EXPECT_DOUBLE_EQ(m.areaB, 6);
    for (const double coordinate : m.fromAToB.largestAt)
        EXPECT_EQ(std::abs(coordinate), 1.5);
    for (const double coordinate : m.fromAToB.largestTo)
        EXPECT_EQ(std::abs(coordinate), 0.5);
    // Of an outer face, the inside is 1 from the inner cube, and the rim is farther away: the mean
    // square is 1 + 2 * (2 / 3) * (1 / 3).
    EXPECT_NEAR(m.fromAToB.rms, std::sqrt(1 + 4.0 / 9), 1e-3);
}

TEST(Measure, ASphereIsHalfItsRadiusFromOneOfHalfItsSize) {
    const Measurement m = measured(sphere(64, 2), sphere(64, 1));
    EXPECT_NEAR(m.fromAToB.largest, 1, 2e-3);
    EXPECT_NEAR(m.fromAToB.rms, 1, 5e-3);
    EXPECT_NEAR(m.fromBToA.rms, 1, 5e-3);
    EXPECT_LT(m.fromAToB.meanNormalAngle, 3);
    EXPECT_NEAR(m.volumeA / m.volumeB, 8, 1e-4);
    EXPECT_GT(m.volumeA, 0);
}

TEST(Measure, ARaisedVertexIsTheFarthest) {
    const Mesh flat = grid(20, 20);
    Mesh raised = flat;
    raised.positions[3 * (10 * 21 + 10) + 2] = 0.5F;
    const Measurement m = measured(flat, raised);
    EXPECT_DOUBLE_EQ(m.fromBToA.largest, 0.5);
    EXPECT_DOUBLE_EQ(m.fromBToA.atMost, 0.5);
    EXPECT_EQ(m.fromBToA.largestAt, (std::array<double, 3>{10, 10, 0.5}));
    EXPECT_EQ(m.fromBToA.largestTo, (std::array<double, 3>{10, 10, 0}));
    EXPECT_EQ(m.fromBToA.percentile95, 0);
    EXPECT_LT(m.fromAToB.largest, 0.5);
    EXPECT_GT(m.fromAToB.largest, 0.3);
}

TEST(Measure, AMovedMeshIsNoFartherThanTheMove) {
    const Mesh mesh = torusMesh();
    const Measurement m = measured(mesh, moved(mesh, {0.01F, 0, 0}));
    EXPECT_LE(m.largest, 0.01 + 1e-7);
    EXPECT_GT(m.largest, 0.009);
    EXPECT_NEAR(m.areaA, m.areaB, 1e-4);
}

TEST(Measure, TheBoundHoldsForManyMoreSamples) {
    const Mesh mesh = torusMesh();
    Options options;
    options.target = Target::percent(20);
    const Mesh simple = simplify(mesh.view(), options).mesh;
    const Measurement few = measured(mesh, simple, {.samples = 1, .threads = 1});
    const Measurement many = measured(mesh, simple, {.samples = 500'000, .threads = 1});
    EXPECT_GE(few.fromAToB.atMost, many.fromAToB.largest);
    EXPECT_GE(few.fromBToA.atMost, many.fromBToA.largest);
    EXPECT_LE(few.largest, many.largest + 1e-12);
    EXPECT_LE(many.atMost, few.atMost);
    EXPECT_LT(many.atMost, 1.1 * many.largest);
    EXPECT_GE(few.fromAToB.samples, mesh.vertexCount() + mesh.triangleCount());
}

TEST(Measure, TheBoundIsAFewPercentAboveTheLargestDistance) {
    const auto expectBound = [](const Distances& d, double expected) {
        EXPECT_LE(d.largest, expected + 1e-7);
        EXPECT_GE(d.atMost, expected - 1e-7);
        EXPECT_LE(d.atMost, 1.03 * expected);
    };
    Mesh raised = grid(20, 20);
    raised.positions[3 * (10 * 21 + 10) + 2] = 0.5F;
    const Mesh outer = moved(cube(), {-1.5F, -1.5F, -1.5F}, 3);
    const Mesh inner = moved(cube(), {-0.5F, -0.5F, -0.5F});
    for (const std::uint64_t samples : {1U, 1000U, 100'000U}) {
        const MeasureOptions options{.samples = samples, .threads = 1};
        // Of the flat grid, the place below the raised vertex is farthest from the raised one.
        const Measurement bump = measured(grid(20, 20), raised, options);
        expectBound(bump.fromAToB, std::sqrt(1.0 / 6));
        expectBound(bump.fromBToA, 0.5);
        const Measurement cubes = measured(outer, inner, options);
        expectBound(cubes.fromAToB, std::sqrt(3.0));
        expectBound(cubes.fromBToA, 1);
        const Measurement spheres = measured(sphere(64, 2), sphere(64, 1), options);
        expectBound(spheres.fromAToB, 1);
        EXPECT_LE(spheres.fromBToA.atMost, 1.03 * spheres.fromBToA.largest);
    }
}

TEST(Measure, TheBoundIsCloseToTheLargestDistanceOfFineLevelsToo) {
    const Mesh mesh = sampleMesh("spot.Vok");
    Options options;
    options.target = Target::percent(90);
    const Mesh fine = simplify(mesh.view(), options).mesh;
    for (const std::uint64_t samples : {20'000U, 100'000U}) {
        const Measurement m = measured(mesh, fine, {.samples = samples, .threads = 1});
        EXPECT_LE(m.fromAToB.atMost, 1.1 * m.fromAToB.largest) << samples;
        EXPECT_LE(m.fromBToA.atMost, 1.1 * m.fromBToA.largest) << samples;
    }
}

TEST(Measure, BothDirectionsTogetherAreTheSameEitherWay) {
    const Mesh a = soup(150, 1);
    const Mesh b = torusMesh();
    const Measurement there = measured(a, b);
    const Measurement back = measured(b, a);
    EXPECT_EQ(there.largest, back.largest);
    EXPECT_EQ(there.atMost, back.atMost);
    EXPECT_NEAR(there.rms, back.rms, 1e-12);
    EXPECT_NEAR(there.percentile95, back.percentile95, 1e-3 * there.percentile95);
    expectSame(there.fromAToB, back.fromBToA);
    expectSame(there.fromBToA, back.fromAToB);
    EXPECT_GE(there.percentile95,
              std::min(there.fromAToB.percentile95, there.fromBToA.percentile95));
    EXPECT_LE(there.percentile95,
              std::max(there.fromAToB.percentile95, there.fromBToA.percentile95));
}

TEST(Measure, TheNumberOfThreadsChangesNothing) {
    const Mesh a = torusMesh(60, 40);
    const Mesh b = soup(700, 2);
    const Measurement one = measured(a, b, {.samples = 50'000, .threads = 1});
    for (const int threads : {2, 5}) {
        const Measurement several = measured(a, b, {.samples = 50'000, .threads = threads});
        expectSame(one.fromAToB, several.fromAToB);
        expectSame(one.fromBToA, several.fromBToA);
        EXPECT_EQ(one.rms, several.rms);
        EXPECT_EQ(one.percentile95, several.percentile95);
    }
    const Surface surface(b.view());
    EXPECT_EQ(vertexDistances(a.view(), surface, 1), vertexDistances(a.view(), surface, 4));
}

TEST(Measure, HostileMeshesGetFiniteAnswers) {
    Mesh point = grid(5, 5);
    std::ranges::fill(point.positions, 0.5F);
    Mesh needle{.positions = {0, 0, 0, 1e30F, 0, 0, 1e30F, 1e-30F, 0},
                .triangles = {0, 1, 2},
                .colors = {},
                .mask = {},
                .uvs = {},
                .triangleUVs = {}};
    Mesh pinched = cube();
    pinched.triangles.insert(pinched.triangles.end(), {0, 0, 0, 0, 7, 0, 1, 1, 2});
    const std::vector<Mesh> meshes{point,
                                   needle,
                                   pinched,
                                   moved(torusMesh(), {0, 0, 0}, 1e30F),
                                   moved(cube(), {-1.5e38F, 0, 0}, 3e38F),
                                   moved(torusMesh(), {0, 0, 0}, 1e-30F),
                                   moved(torusMesh(), {0, 0, 0}, 1e-44F)};
    for (const Mesh& a : meshes) {
        for (const Mesh& b : meshes) {
            const Measurement m = measured(a, b, {.samples = 1000, .threads = 1});
            expectOrdered(m.fromAToB);
            expectOrdered(m.fromBToA);
            EXPECT_TRUE(std::isfinite(m.rms) && std::isfinite(m.volumeA));
            EXPECT_LT(m.fromAToB.samples, 20'000U) << &a - meshes.data();
        }
    }
}

TEST(Measure, MeshesWithoutAreaStillHaveDistances) {
    Mesh point = grid(3, 3);
    std::ranges::fill(point.positions, 0.5F);
    const Measurement m = measured(point, moved(point, {0, 0, 2}));
    EXPECT_DOUBLE_EQ(m.largest, 2);
    EXPECT_DOUBLE_EQ(m.rms, 2);
    EXPECT_NEAR(m.percentile95, 2, 1e-6);
    EXPECT_EQ(m.fromAToB.meanNormalAngle, 0);
}

TEST(Measure, VerticesWithoutTrianglesDoNotCount) {
    Mesh mesh = square(0);
    mesh.positions.insert(mesh.positions.end(), {50, 50, 50});
    const Measurement m = measured(mesh, square(0));
    EXPECT_EQ(m.largest, 0);
    EXPECT_DOUBLE_EQ(m.diagonalA, std::sqrt(2.0));
    const Mesh flat = square(0);
    const std::vector<float> distances = vertexDistances(mesh.view(), Surface(flat.view()));
    EXPECT_EQ(distances[0], 0);
    EXPECT_FLOAT_EQ(distances[4], std::sqrt(49.0F * 49 * 2 + 2500));
}

TEST(Measure, RefusesOptionsOutOfRange) {
    const Mesh mesh = cube();
    for (const MeasureOptions& bad :
         {MeasureOptions{.samples = 0, .threads = 1}, MeasureOptions{.samples = 1, .threads = 0},
          MeasureOptions{.samples = 1, .threads = 1025},
          MeasureOptions{.samples = 2'000'000'000, .threads = 1}})
        EXPECT_NE(errorOf(ErrorCode::BadOption, [&] { (void)measured(mesh, mesh, bad); })
                      .find("it must be from 1 to"),
                  std::string::npos);
    EXPECT_EQ(errorOf(ErrorCode::BadOption,
                      [&] { (void)measured(mesh, mesh, {.samples = 1, .threads = -5}); }),
              "threads is -5; it must be from 1 to 1024.");
}

TEST(Measure, ReportsProgressFromOneThreadAtATime) {
    const Mesh a = torusMesh();
    std::atomic<int> inside = 0;
    int calls = 0;
    const Monitor monitor = [&](const Progress& progress) {
        EXPECT_EQ(++inside, 1);
        EXPECT_EQ(progress.phase, Phase::Measuring);
        EXPECT_LE(progress.done, progress.total);
        ++calls;
        --inside;
        return true;
    };
    (void)measure(a.view(), a.view(), {.samples = 300'000, .threads = 3}, monitor);
    EXPECT_GE(calls, 3);
}

TEST(Measure, TheMonitorCancels) {
    const Mesh mesh = torusMesh();
    const Surface a(mesh.view());
    int calls = 0;
    const Monitor cancels = [&](const Progress&) { return ++calls < 3; };
    const MeasureOptions options{.samples = 50'000'000, .threads = 2};
    EXPECT_EQ(errorOf(ErrorCode::Cancelled, [&] { (void)measure(a, a, options, cancels); }),
              "Cancelled by the caller.");
    EXPECT_EQ(calls, 3);
    const Monitor throws = [](const Progress&) -> bool { throw std::runtime_error("mine"); };
    EXPECT_THROW((void)measure(a, a, options, throws), std::runtime_error);
}

TEST(Measure, ALevelIsMeasuredAgainstTheFinest) {
    const Mesh mesh = torusMesh();
    Options options;
    options.target = Target::vertices(50);
    ProgressiveMesh progressive = ProgressiveMesh::build(mesh.view(), options);
    const Measurement m = progressive.measureLevel(Target::vertices(200), kFewSamples);
    EXPECT_EQ(progressive.vertexCount(), 200U);
    const Mesh level = progressive.level(Target::vertices(200));
    const Measurement expected = measured(mesh, level);
    EXPECT_NEAR(m.rms, expected.rms, 1e-3 * expected.rms);
    EXPECT_DOUBLE_EQ(m.areaA, expected.areaA);
    EXPECT_GT(m.largest, 0);
    EXPECT_EQ(progressive.measureLevel(Target::percent(100), kFewSamples).largest, 0);
}

}  // namespace
}  // namespace korvalite::test
