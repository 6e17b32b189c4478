// SPDX-License-Identifier: MIT
#include "metric/quadric3d.h"

#include "support/random.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

TEST(Quadric3D, StartsAsZero) {
    EXPECT_EQ(Quadric3D().q, (std::array<double, 10>{}));
    EXPECT_EQ(evaluateQuadric(Quadric3D(), {3, 4, 5}), 0.0);
}

TEST(Quadric3D, HoldsTheProductsOfAPlaneInTheOrderOfItsSlots) {
    const Quadric3D q = planeQuadric(2.0, 3.0, 5.0, 7.0);
    EXPECT_EQ(q.q, (std::array<double, 10>{4, 6, 10, 9, 15, 25, 14, 21, 35, 49}));
}

TEST(Quadric3D, AddsAndScalesSlotBySlot) {
    const Quadric3D one = planeQuadric(2.0, 3.0, 5.0, 7.0);
    Quadric3D sum = one + Quadric3D{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
    EXPECT_EQ(sum.q, (std::array<double, 10>{5, 8, 13, 13, 20, 31, 21, 29, 44, 59}));
    sum *= 0.5;
    EXPECT_EQ(sum.q, (std::array<double, 10>{2.5, 4, 6.5, 6.5, 10, 15.5, 10.5, 14.5, 22, 29.5}));
}

TEST(Quadric3D, EvaluatesToTheSquaredDistanceFromItsPlane) {
    // For the plane z = 3.
    const Quadric3D q = planeQuadric(0.0, 0.0, 1.0, -3.0);
    EXPECT_EQ(evaluateQuadric(q, {17, -4, 3}), 0.0);
    EXPECT_EQ(evaluateQuadric(q, {0, 0, 5}), 4.0);
    // At (1, 2, 3), 2x + 3y + 5z + 7 is 2 + 6 + 15 + 7.
    EXPECT_EQ(evaluateQuadric(planeQuadric(2.0, 3.0, 5.0, 7.0), {1, 2, 3}), 900.0);
}

TEST(Quadric3D, SumsTheErrorFromLeftToRight) {
    test::Random random(5);
    for (int i = 0; i < 1000; ++i) {
        Quadric3D quadric;
        for (double& slot : quadric.q)
            slot = static_cast<double>(random.around(3)) / 7.0;
        const double x = static_cast<double>(random.around(9));
        const double y = static_cast<double>(random.around(9));
        const double z = static_cast<double>(random.around(9));
        const auto& q = quadric.q;
        double sum = (q[0] * x) * x;
        sum += ((2 * q[1]) * x) * y;
        sum += ((2 * q[2]) * x) * z;
        sum += (q[3] * y) * y;
        sum += ((2 * q[4]) * y) * z;
        sum += (q[5] * z) * z;
        sum += (2 * q[6]) * x;
        sum += (2 * q[7]) * y;
        sum += (2 * q[8]) * z;
        sum += q[9];
        ASSERT_EQ(evaluateQuadric(quadric, {x, y, z}), sum);
    }
}

TEST(Quadric3D, TheFloatStorageRoundsEachSlot) {
    Quadric3D wide;
    wide.q = {0.1, -0.1, 1e-50, 1e10, 1.0 / 3.0, 0, 1, 2, 16777217.0, -7};
    const Quadric3DFloat narrow = narrowed(wide);
    EXPECT_EQ(narrow.q[0], 0.1F);
    EXPECT_EQ(narrow.q[2], 0.0F);
    EXPECT_EQ(narrow.q[8], 16777216.0F);
    const Quadric3D back = widened(narrow);
    EXPECT_EQ(back.q[0], static_cast<double>(0.1F));
    EXPECT_EQ(back.q[3], 1e10);
    EXPECT_EQ(back.q[9], -7.0);
}

}  // namespace
}  // namespace korvalite::core
