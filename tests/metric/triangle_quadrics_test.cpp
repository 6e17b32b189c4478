// SPDX-License-Identifier: MIT
#include "metric/mesh_quadrics.h"

#include "progressive/progressive_mesh.h"
#include "support/mesh_builder.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korvalite::core {
namespace {

using Doubles = std::array<double, 10>;
using Floats = std::array<float, 10>;

void take(ProgressiveMesh& pm, const FloatVec3& p0, const FloatVec3& p1, const FloatVec3& p2) {
    pm.mesh = test::buildMesh({p0, p1, p2}, {{0, 1, 2}});
}

//   2
//   |  \        legs of 2 and 3 in the plane z = 3: the cross product is (0, 0, 6)
//   0----1
void takeLegsOfTwoAndThree(ProgressiveMesh& pm) {
    take(pm, {0, 0, 3}, {2, 0, 3}, {0, 3, 3});
}

TEST(TriangleQuadric, IsThePlaneQuadricTimesTwiceTheArea) {
    ProgressiveMesh pm;
    takeLegsOfTwoAndThree(pm);
    EXPECT_EQ(ComputeTriangleQuadric(pm.mesh, pm, 0).q, (Doubles{0, 0, 0, 0, 0, 6, 0, 0, -18, 54}));
    EXPECT_EQ(ComputeTriangleQuadricFloat(pm.mesh, pm, 0).q,
              (Floats{0, 0, 0, 0, 0, 6, 0, 0, -18, 54}));
}

TEST(TriangleQuadric, IsThePlaneQuadricWithoutAreaWeighting) {
    ProgressiveMesh pm;
    takeLegsOfTwoAndThree(pm);
    pm.UseAreaWeighting = false;
    EXPECT_EQ(ComputeTriangleQuadric(pm.mesh, pm, 0).q, (Doubles{0, 0, 0, 0, 0, 1, 0, 0, -3, 9}));
    EXPECT_EQ(ComputeTriangleQuadricFloat(pm.mesh, pm, 0).q,
              (Floats{0, 0, 0, 0, 0, 1, 0, 0, -3, 9}));
}

TEST(TriangleQuadric, ReadsTheRequestedTriangle) {
    ProgressiveMesh pm;
    pm.mesh = test::tetrahedron();
    // Triangle 1 is (0, 1, 3), in the plane y = 0.
    EXPECT_EQ(ComputeTriangleQuadric(pm.mesh, pm, 1).q, (Doubles{0, 0, 0, 1, 0, 0, 0, 0, 0, 0}));
}

TEST(TriangleQuadric, WithoutAreaHasWeightOneInDoublesButZeroInFloats) {
    ProgressiveMesh pm;
    take(pm, {1, 2, 3}, {4, 5, 6}, {4, 5, 6});
    EXPECT_EQ(ComputeTriangleQuadric(pm.mesh, pm, 0).q, Doubles{});
    EXPECT_EQ(ComputeTriangleQuadricFloat(pm.mesh, pm, 0).q, Floats{});

    // A normal near zero is not normalized, and its weight is 1.
    const float leg = 1e-13F;
    take(pm, {0, 0, 0}, {leg, 0, 0}, {0, leg, 0});
    const double n = static_cast<double>(leg) * static_cast<double>(leg);
    ASSERT_LT(n, 1e-24);
    EXPECT_EQ(ComputeTriangleQuadric(pm.mesh, pm, 0).q,
              (Doubles{0, 0, 0, 0, 0, n * n, 0, 0, 0, 0}));
    EXPECT_EQ(ComputeTriangleQuadricFloat(pm.mesh, pm, 0).q, Floats{});
}

TEST(TriangleQuadric, NormalizesNormalsOfTinyTriangles) {
    ProgressiveMesh pm;
    pm.UseAreaWeighting = false;
    const float leg = 1e-11F;  // a normal of 1e-22
    take(pm, {0, 0, 0}, {leg, 0, 0}, {0, leg, 0});
    EXPECT_EQ(ComputeTriangleQuadric(pm.mesh, pm, 0).q, (Doubles{0, 0, 0, 0, 0, 1, 0, 0, 0, 0}));
}

TEST(TriangleQuadric, TheFloatFormNormalizesEveryNonzeroLength) {
    ProgressiveMesh pm;
    const float leg = 1e-10F;  // the square of the length, 1e-40, is a denormal float
    take(pm, {0, 0, 0}, {leg, 0, 0}, {0, leg, 0});
    const float n = leg * leg;
    const float length = std::sqrt(n * n);
    ASSERT_GT(length, 0.0F);
    const auto unit = static_cast<float>(static_cast<double>(n) / static_cast<double>(length));
    EXPECT_EQ(ComputeTriangleQuadricFloat(pm.mesh, pm, 0).q[5], unit * unit * length);
}

TEST(TriangleQuadric, IsComputedInDoublesFromFloatPositions) {
    test::Random random(11);
    for (int round = 0; round < 500; ++round) {
        ProgressiveMesh pm;
        pm.UseAreaWeighting = round % 2 == 0;
        float p[3][3];
        for (auto& point : p) {
            for (float& coordinate : point)
                coordinate = random.around(10);
        }
        take(pm, {p[0][0], p[0][1], p[0][2]}, {p[1][0], p[1][1], p[1][2]},
             {p[2][0], p[2][1], p[2][2]});
        double e1[3];
        double e2[3];
        for (int k = 0; k < 3; ++k) {
            e1[k] = static_cast<double>(p[1][k]) - static_cast<double>(p[0][k]);
            e2[k] = static_cast<double>(p[2][k]) - static_cast<double>(p[0][k]);
        }
        double n[4] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2],
                       e1[0] * e2[1] - e1[1] * e2[0], 0};
        const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        for (int k = 0; k < 3; ++k)
            n[k] /= length;
        n[3] = -(n[0] * static_cast<double>(p[0][0]) + n[1] * static_cast<double>(p[0][1]) +
                 n[2] * static_cast<double>(p[0][2]));
        const int order[10][2] = {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2},
                                  {2, 2}, {0, 3}, {1, 3}, {2, 3}, {3, 3}};
        const Quadric3D quadric = ComputeTriangleQuadric(pm.mesh, pm, 0);
        for (std::size_t slot = 0; slot < 10; ++slot) {
            const double plain = n[order[slot][0]] * n[order[slot][1]];
            ASSERT_EQ(quadric.q[slot], pm.UseAreaWeighting ? plain * length : plain) << slot;
        }
    }
}

TEST(TriangleQuadric, TheFloatFormUsesFloatsExceptForTheDivision) {
    test::Random random(12);
    for (int round = 0; round < 500; ++round) {
        ProgressiveMesh pm;
        pm.UseAreaWeighting = round % 2 == 0;
        float p[3][3];
        for (auto& point : p) {
            for (float& coordinate : point)
                coordinate = random.around(10);
        }
        take(pm, {p[0][0], p[0][1], p[0][2]}, {p[1][0], p[1][1], p[1][2]},
             {p[2][0], p[2][1], p[2][2]});
        float e1[3];
        float e2[3];
        for (int k = 0; k < 3; ++k) {
            e1[k] = p[1][k] - p[0][k];
            e2[k] = p[2][k] - p[0][k];
        }
        float n[4] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2],
                      e1[0] * e2[1] - e1[1] * e2[0], 0};
        const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        for (int k = 0; k < 3; ++k) {
            n[k] = static_cast<float>(static_cast<double>(n[k]) / static_cast<double>(length));
        }
        n[3] = -(n[0] * p[0][0] + n[1] * p[0][1] + n[2] * p[0][2]);
        const int order[10][2] = {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2},
                                  {2, 2}, {0, 3}, {1, 3}, {2, 3}, {3, 3}};
        const Quadric3DFloat quadric = ComputeTriangleQuadricFloat(pm.mesh, pm, 0);
        for (std::size_t slot = 0; slot < 10; ++slot) {
            const float plain = n[order[slot][0]] * n[order[slot][1]];
            ASSERT_EQ(quadric.q[slot], pm.UseAreaWeighting ? plain * length : plain) << slot;
        }
    }
}

TEST(TriangleQuadric, HandlesCoordinatesThatAreNotFinite) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::max()}) {
        ProgressiveMesh pm;
        take(pm, {0, 0, 0}, {bad, 0, 0}, {0, 1, bad});
        pm.mesh.vertexColors = {1, 2, 3};
        pm.colorScale = 1;
        (void)ComputeTriangleQuadric(pm.mesh, pm, 0);
        (void)ComputeTriangleQuadricFloat(pm.mesh, pm, 0);
        (void)ComputeTriangleColorQuadric(pm.mesh, pm, 0);
    }
}

//   2
//   | \         red grows from 50 at x = 0 to 150 at x = 1: gradient (100, 0, 0), offset 50
//   0---1
TEST(TriangleColorQuadric, HoldsThePlaneAndTheLinearFunctionOfEachChannel) {
    ProgressiveMesh pm;
    take(pm, {0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    pm.mesh.vertexColors = {test::packColor(50, 0, 7, 99), test::packColor(150, 0, 7, 1),
                            test::packColor(50, 20, 7, 200)};
    pm.colorScale = 1;
    const ColorQuadric q = ComputeTriangleColorQuadric(pm.mesh, pm, 0);
    // For green, the gradient is (0, 20, 0) and the offset 0. For blue, the gradient is 0 and the
    // offset 7.
    EXPECT_EQ(q.A, (std::array<double, 6>{10000, 0, 0, 400, 0, 1}));
    EXPECT_EQ(q.G, (std::array<double, 9>{-100, 0, 0, 0, -20, 0, 0, 0, 0}));
    EXPECT_EQ(q.C, 1.0);
    EXPECT_EQ(q.b1, (std::array<double, 3>{5000, 0, 0}));
    EXPECT_EQ(q.b2, (std::array<double, 3>{-50, 0, -7}));
    EXPECT_EQ(q.c, 2500.0 + 49.0);
}

TEST(TriangleColorQuadric, IsZeroAtTheCornersWithTheirScaledColours) {
    test::Random random(13);
    for (int round = 0; round < 100; ++round) {
        ProgressiveMesh pm;
        const test::Points points{{random.around(3), random.around(3), random.around(3)},
                                  {random.around(3), random.around(3), random.around(3)},
                                  {random.around(3), random.around(3), random.around(3)}};
        take(pm, points[0], points[1], points[2]);
        pm.mesh.vertexColors = {random.word(), random.word(), random.word()};
        pm.colorScale = 0.01;
        const ColorQuadric q = ComputeTriangleColorQuadric(pm.mesh, pm, 0);
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const std::uint32_t color = pm.mesh.vertexColors[corner];
            const DoubleVec3 s{0.01 * (color & 255U), 0.01 * ((color >> 8U) & 255U),
                               0.01 * ((color >> 16U) & 255U)};
            EXPECT_NEAR(q.Evaluate(toDouble(points[corner]), s), 0, 1e-6) << round;
            EXPECT_NEAR(q.Evaluate(toDouble(points[corner]), {s.x, s.y + 2, s.z}), 4, 1e-5);
        }
    }
}

TEST(TriangleColorQuadric, IsNeverWeightedByArea) {
    ProgressiveMesh pm;
    takeLegsOfTwoAndThree(pm);
    pm.mesh.vertexColors.assign(3, 0);
    pm.colorScale = 1;
    for (const bool weighting : {false, true}) {
        pm.UseAreaWeighting = weighting;
        const ColorQuadric q = ComputeTriangleColorQuadric(pm.mesh, pm, 0);
        EXPECT_EQ(q.A, (std::array<double, 6>{0, 0, 0, 0, 0, 1}));
        EXPECT_EQ(q.b1, (std::array<double, 3>{0, 0, -3}));
        EXPECT_EQ(q.c, 9.0);
    }
}

TEST(TriangleColorQuadric, WithoutAColourScaleReducesToItsPlane) {
    ProgressiveMesh pm;
    takeLegsOfTwoAndThree(pm);
    pm.mesh.vertexColors = {0x123456, 0xFFFFFF, 0x00FF00};
    pm.colorScale = 0;
    const ColorQuadric q = ComputeTriangleColorQuadric(pm.mesh, pm, 0);
    EXPECT_EQ(q.A, (std::array<double, 6>{0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(q.G, (std::array<double, 9>{}));
    EXPECT_EQ(q.C, 1.0);
}

TEST(TriangleColorQuadric, WithoutAreaHasNoColourPart) {
    ProgressiveMesh pm;
    take(pm, {1, 2, 3}, {4, 5, 6}, {4, 5, 6});
    pm.mesh.vertexColors = {0x123456, 0xFFFFFF, 0x00FF00};
    pm.colorScale = 1;
    const ColorQuadric q = ComputeTriangleColorQuadric(pm.mesh, pm, 0);
    EXPECT_EQ(q.C, 0.0);
    EXPECT_EQ(q.A, (std::array<double, 6>{}));
    EXPECT_EQ(q.G, (std::array<double, 9>{}));
    EXPECT_EQ(q.b2, (std::array<double, 3>{}));
    EXPECT_EQ(q.c, 0.0);
}

}  // namespace
}  // namespace korvalite::core
