// SPDX-License-Identifier: MIT
#include "metric/color_quadric.h"

#include "support/random.h"

#include <gtest/gtest.h>

#include <limits>

namespace korvalite::core {
namespace {

ColorQuadric counting() {
    ColorQuadric q;
    q.A = {1, 2, 3, 4, 5, 6};
    q.G = {7, 8, 9, 10, 11, 12, 13, 14, 15};
    q.C = 16;
    q.b1 = {17, 18, 19};
    q.b2 = {20, 21, 22};
    q.c = 23;
    return q;
}

TEST(ColorQuadric, StartsAsZero) {
    const ColorQuadric q;
    EXPECT_EQ(q.A, (std::array<double, 6>{}));
    EXPECT_EQ(q.G, (std::array<double, 9>{}));
    EXPECT_EQ(q.C, 0.0);
    EXPECT_EQ(q.b1, (std::array<double, 3>{}));
    EXPECT_EQ(q.b2, (std::array<double, 3>{}));
    EXPECT_EQ(q.c, 0.0);
}

TEST(ColorQuadric, FromAPlaneQuadricTakesItsSlotsAndOneForC) {
    const ColorQuadric q(Quadric3D{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}});
    EXPECT_EQ(q.A, (std::array<double, 6>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(q.G, (std::array<double, 9>{}));
    EXPECT_EQ(q.C, 1.0);
    EXPECT_EQ(q.b1, (std::array<double, 3>{7, 8, 9}));
    EXPECT_EQ(q.b2, (std::array<double, 3>{}));
    EXPECT_EQ(q.c, 10.0);
}

TEST(ColorQuadric, AddsAndScalesEveryNumber) {
    ColorQuadric q = counting() + counting();
    q += counting();
    q *= 10;
    EXPECT_EQ(q.A, (std::array<double, 6>{30, 60, 90, 120, 150, 180}));
    EXPECT_EQ(q.G, (std::array<double, 9>{210, 240, 270, 300, 330, 360, 390, 420, 450}));
    EXPECT_EQ(q.C, 480.0);
    EXPECT_EQ(q.b1, (std::array<double, 3>{510, 540, 570}));
    EXPECT_EQ(q.b2, (std::array<double, 3>{600, 630, 660}));
    EXPECT_EQ(q.c, 690.0);
}

// x = (1, 2, 3), s = (-1, 1, 2):
//   A x = (14, 25, 31), x.Ax = 157;  G s = (-7+10+26, -8+11+28, -9+12+30) = (29, 31, 33),
//   x.Gs = 190;  s.s = 6;  b1.x = 110;  b2.s = 45.
TEST(ColorQuadric, EvaluatesTheSixDimensionalFormWithGByColumns) {
    EXPECT_EQ(counting().Evaluate({1, 2, 3}, {-1, 1, 2}),
              157.0 + 2 * 190.0 + 16 * 6.0 + 2 * (110.0 + 45.0) + 23.0);
}

//   A = 4 I, G has 2 at row 0, column 1, C = 2:
//   S = 2 I - G' A^-1 G = diag(2, 1, 2), T = diag(0.5, 1, 0.5), R = -0.5 at (0, 1),
//   P = A^-1 + 0.25 at (0, 0)
TEST(ColorQuadric, SumsTheTermsOfAnEvaluationInTheirOrder) {
    ColorQuadric q;
    q.A[0] = 1;
    q.G[0] = 0x1p52;
    q.C = -0x1p53;
    // 1 + 2^53 is 2^53 in doubles, so that the first term is lost.
    EXPECT_EQ(q.Evaluate({1, 0, 0}, {1, 0, 0}), 0.0);
}

TEST(ColorQuadric, InvertsByBlocks) {
    ColorQuadric q;
    q.A = {4, 0, 0, 4, 0, 4};
    q.G[0 + 3 * 1] = 2;
    q.C = 2;
    Matrix3 P;
    Matrix3 R;
    Matrix3 T;
    ASSERT_TRUE(q.InvertBlocks(P, R, T));
    EXPECT_EQ(P, (Matrix3{0.5, 0, 0, 0, 0.25, 0, 0, 0, 0.25}));
    EXPECT_EQ(R, (Matrix3{0, -0.5, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(T, (Matrix3{0.5, 0, 0, 0, 1, 0, 0, 0, 0.5}));
}

TEST(ColorQuadric, TheBlocksFormTheInverse) {
    test::Random random(7);
    for (int round = 0; round < 200; ++round) {
        ColorQuadric q;
        q.A = {5, 0, 0, 5, 0, 5};
        for (double& a : q.A)
            a += static_cast<double>(random.around(1));
        for (double& g : q.G)
            g = static_cast<double>(random.around(1));
        q.C = 4;
        Matrix3 P;
        Matrix3 R;
        Matrix3 T;
        ASSERT_TRUE(q.InvertBlocks(P, R, T));
        const std::array<double, 9> A{q.A[0], q.A[1], q.A[2], q.A[1], q.A[3],
                                      q.A[4], q.A[2], q.A[4], q.A[5]};
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                // Rows of [A G; G' C] times columns of [P R; R' T].
                double topLeft = 0;
                double topRight = 0;
                double bottomRight = q.C * T[3 * r + c];
                for (std::size_t k = 0; k < 3; ++k) {
                    topLeft += A[3 * r + k] * P[3 * k + c] + q.G[r + 3 * k] * R[3 * c + k];
                    topRight += A[3 * r + k] * R[3 * k + c] + q.G[r + 3 * k] * T[3 * k + c];
                    bottomRight += q.G[k + 3 * r] * R[3 * k + c];
                }
                EXPECT_NEAR(topLeft, r == c ? 1 : 0, 1e-12);
                EXPECT_NEAR(topRight, 0, 1e-12);
                EXPECT_NEAR(bottomRight, r == c ? 1 : 0, 1e-12);
            }
        }
    }
}

TEST(ColorQuadric, HasNoInverseIfABlockIsSingular) {
    Matrix3 P;
    Matrix3 R;
    Matrix3 T;
    ColorQuadric flat(planeQuadric(0.0, 0.0, 1.0, 0.0));
    EXPECT_FALSE(flat.InvertBlocks(P, R, T));
    ColorQuadric colorless;
    colorless.A = {1, 0, 0, 1, 0, 1};
    EXPECT_FALSE(colorless.InvertBlocks(P, R, T));  // C = 0
    colorless.C = 1;
    EXPECT_TRUE(colorless.InvertBlocks(P, R, T));
}

TEST(ColorQuadric, HandlesNaN) {
    ColorQuadric q = counting();
    q.A[0] = std::numeric_limits<double>::quiet_NaN();
    q.G[2] = std::numeric_limits<double>::infinity();
    Matrix3 P;
    Matrix3 R;
    Matrix3 T;
    (void)q.InvertBlocks(P, R, T);
    EXPECT_NE(q.Evaluate({1, 1, 1}, {1, 1, 1}), q.Evaluate({1, 1, 1}, {1, 1, 1}));
}

}  // namespace
}  // namespace korvalite::core
