// SPDX-License-Identifier: MIT
#include "geometry/linear_algebra.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace korvalite::core {
namespace {

void expectEqual(const FloatVec3& actual, const FloatVec3& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

TEST(Vec3, CrossProductTurnsXToYIntoZ) {
    expectEqual(cross(FloatVec3{1, 0, 0}, FloatVec3{0, 1, 0}), {0, 0, 1});
    expectEqual(cross(FloatVec3{1, 2, 3}, FloatVec3{5, 7, 11}), {1, 4, -3});
}

TEST(Vec3, DotProductAddsXThenYThenZ) {
    // The 1 is lost next to 1e8; with z before y it would survive.
    EXPECT_EQ(dot(FloatVec3{1e8F, 1, -1e8F}, FloatVec3{1, 1, 1}), 0.0F);
}

TEST(Vec3, ComponentsAreReadAndSetByAxis) {
    FloatVec3 v{1, 2, 3};
    EXPECT_EQ(component(v, 0), 1.0F);
    EXPECT_EQ(component(v, 1), 2.0F);
    EXPECT_EQ(component(v, 2), 3.0F);
    setComponent(v, 1, 9.0F);
    expectEqual(v, {1, 9, 3});
}

TEST(Normalize3f, DividesByTheLength) {
    FloatVec3 out;
    normalize3f(out, {0, 3, 4});
    expectEqual(out, {0, 0.6F, 0.8F});
}

TEST(Normalize3f, LengthZeroLeavesTheResultUnchanged) {
    FloatVec3 out{1, 2, 3};
    normalize3f(out, {0, 0, 0});
    expectEqual(out, {1, 2, 3});
}

TEST(Normalize3fInPlace, ReturnsTheLengthInDouble) {
    FloatVec3 v{1e-30F, 0, 0};  // its square is 0 in single precision
    EXPECT_EQ(normalize3fInPlace(v), static_cast<double>(1e-30F));
    expectEqual(v, {1, 0, 0});
}

TEST(Normalize3fInPlace, LengthZeroReturnsZero) {
    FloatVec3 v;
    EXPECT_EQ(normalize3fInPlace(v), 0.0);
    expectEqual(v, {0, 0, 0});
}

TEST(Normalize3d, ZeroVectorReturnsOne) {
    DoubleVec3 v;
    EXPECT_EQ(normalize3d(v), 1.0);
    EXPECT_EQ(v.x, 0.0);
}

TEST(Normalize3d, LeavesOnlyVectorsShorterThan1e24th) {
    DoubleVec3 shorter{0.9e-24, 0, 0};
    EXPECT_EQ(normalize3d(shorter), 1.0);
    EXPECT_EQ(shorter.x, 0.9e-24);
    DoubleVec3 longer{0, 1.1e-24, 0};
    EXPECT_NEAR(normalize3d(longer), 1.1e-24, 1e-38);
    EXPECT_EQ(longer.y, 1.0);
}

TEST(AngleBetween, OppositeUnitVectorsGiveExactlyPi) {
    EXPECT_EQ(angleBetween({1, 0, 0}, {-1, 0, 0}), 3.141592653589793);
    FloatVec3 v;
    normalize3f(v, {1, 1, 1});
    EXPECT_EQ(angleBetween(v, {-v.x, -v.y, -v.z}), 3.141592653589793);
}

TEST(AngleBetween, SameDirectionGivesExactlyZero) {
    EXPECT_EQ(angleBetween({0, 2, 0}, {0, 5, 0}), 0.0);
}

TEST(AngleBetween, CosineRoundedAbove1GivesZero) {
    // The rounded square root of 3 has a square below 3.
    EXPECT_EQ(angleBetween({1, 1, 1}, {1, 1, 1}), 0.0);
}

TEST(AngleBetween, ZeroVectorGivesZero) {
    EXPECT_EQ(angleBetween({0, 0, 0}, {1, 0, 0}), 0.0);
    EXPECT_EQ(angleBetween({1, 0, 0}, {0, 0, 0}), 0.0);
}

TEST(AngleBetween, RightAngleGivesHalfPi) {
    EXPECT_EQ(angleBetween({0, 2, 0}, {5, 0, 0}), std::acos(0.0));
}

TEST(Multiply3, SecondOperandActsFirst) {
    const std::array<double, 9> a{1, 2, 3, 4, 5, 6, 7, 8, 10};
    const std::array<double, 9> swapXY{0, 1, 0, 1, 0, 0, 0, 0, 1};
    std::array<double, 9> out{};
    multiply3(out.data(), a.data(), swapXY.data());
    const std::array<double, 9> rowsSwapped{4, 5, 6, 1, 2, 3, 7, 8, 10};
    EXPECT_EQ(out, rowsSwapped);
    out = a;
    multiply3(out.data(), swapXY.data(), out.data());
    const std::array<double, 9> columnsSwapped{2, 1, 3, 5, 4, 6, 8, 7, 10};
    EXPECT_EQ(out, columnsSwapped);
}

TEST(AxisAngleToQuaternion, UsesHalfTheAngleAboutTheUnitAxis) {
    Quaternion q;
    axisAngleToQuaternion(q, {0, 0, 5}, std::numbers::pi);
    EXPECT_EQ(q.w, static_cast<float>(std::cos(std::numbers::pi / 2)));
    EXPECT_EQ(q.x, 0.0F);
    EXPECT_EQ(q.y, 0.0F);
    EXPECT_EQ(q.z, 1.0F);
}

TEST(AxisAngleToQuaternion, AxisShorterThan1e7thGivesTheIdentity) {
    Quaternion q{0, 1, 2, 3};
    axisAngleToQuaternion(q, {0.9e-7F, 0, 0}, 1.0);
    EXPECT_EQ(q.w, 1.0F);
    EXPECT_EQ(q.x, 0.0F);
    EXPECT_EQ(q.y, 0.0F);
    EXPECT_EQ(q.z, 0.0F);
}

TEST(QuaternionToMatrix, ComputesEveryElementForAnyQuaternion) {
    // With 2, 3, 5, 7 all products differ and nothing is rounded. The length need not be 1.
    std::array<float, 16> m{};
    quaternionToMatrix(m.data(), {2, 3, 5, 7});
    const std::array<float, 16> expected{25, 58, 22,  0,  //
                                         2,  57, 82,  0,  //
                                         62, 58, 105, 0,  //
                                         0,  0,  0,   1};
    EXPECT_EQ(m, expected);
}

TEST(QuaternionToMatrix, ProductsAreRoundedBeforeTheyAreSummed) {
    const float e = 1.0F + 0x1p-12F;  // its square needs one bit more than a float has
    std::array<float, 16> m{};
    quaternionToMatrix(m.data(), {0, e, 0, 0});
    EXPECT_EQ(m[0], static_cast<float>(static_cast<double>(e * e) * 2.0 - 1.0));
    EXPECT_EQ(m[5], -1.0F);
}

}  // namespace
}  // namespace korvalite::core
