// SPDX-License-Identifier: MIT
#include "geometry/transform.h"

#include "geometry/linear_algebra.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace korvalite::core {
namespace {

FloatVec3 apply(const Transform& transform, const FloatVec3& p) {
    FloatVec3 out;
    transformPoint(out, transform, p);
    return out;
}

void expectEqual(const FloatVec3& actual, const FloatVec3& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

void expectNear(const FloatVec3& actual, const FloatVec3& expected, float tolerance = 1e-6F) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

void expectSameMatrix(const Transform& actual, const Transform& expected) {
    EXPECT_TRUE(std::equal(actual.m, actual.m + 16, expected.m));
}

TEST(Transform, StartsAsTheIdentity) {
    Transform t;
    EXPECT_EQ(t.kind, TRANSFORM_IDENTITY);
    expectEqual(apply(t, {1, 2, 3}), {1, 2, 3});
    t.scale({2, 2, 2});
    t.setIdentity();
    EXPECT_EQ(t.kind, TRANSFORM_IDENTITY);
    expectSameMatrix(t, Transform{});
}

TEST(Transform, ScaleActsAfterTheMap) {
    Transform t;
    t.scaleAbout({1, 1, 1}, {0, 0, 0});
    t.m[12] = 10.0F;
    t.scale({2, 3, 4});
    expectEqual(apply(t, {1, 1, 1}), {22, 3, 4});
    EXPECT_EQ(t.kind, TRANSFORM_AFFINE);
}

TEST(Transform, ScaleKeepsTheGeneralKind) {
    Transform t;
    t.kind = TRANSFORM_GENERAL;
    t.scale({2, 2, 2});
    EXPECT_EQ(t.kind, TRANSFORM_GENERAL);
}

TEST(Transform, ScaleAboutWithMinusOneReflects) {
    Transform t;
    t.scaleAbout({-1, 1, 1}, {3, 0, 0});
    expectEqual(apply(t, {5, 7, 9}), {2 * 3 - 5, 7, 9});
    EXPECT_EQ(t.kind, TRANSFORM_AFFINE);
}

TEST(Transform, ScaleAboutWithZeroProjects) {
    Transform t;
    t.scaleAbout({0, 1, 1}, {3, 0, 0});
    expectEqual(apply(t, {5, 7, 9}), {3, 7, 9});
    EXPECT_EQ(t.kind, TRANSFORM_AFFINE);
}

TEST(Transform, ElementsWithAnAffineLastColumnAreAffine) {
    std::array<float, 16> elements{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 1, 1, 1, 1};
    Transform t;
    t.setElements(elements.data());
    EXPECT_EQ(t.kind, TRANSFORM_AFFINE);
    EXPECT_EQ(t.m[6], 6.0F);
    elements[7] = 1e-30F;
    t.setElements(elements.data());
    EXPECT_EQ(t.kind, TRANSFORM_GENERAL);
    elements[7] = 0.0F;
    elements[15] = 2.0F;
    t.setElements(elements.data());
    EXPECT_EQ(t.kind, TRANSFORM_GENERAL);
}

TEST(Transform, QuarterTurnAboutZMapsXToY) {
    Transform t;
    t.rotationFromAxisAngle({0, 0, 2}, std::numbers::pi / 2);
    EXPECT_EQ(t.kind, TRANSFORM_ROTATION);
    expectNear(apply(t, {1, 0, 0}), {0, 1, 0});
    expectNear(apply(t, {0, 1, 0}), {-1, 0, 0});
}

TEST(RotationBetween, SameDirectionKeepsMatrixAndKind) {
    Transform t;
    t.rotationBetween({1, 2, 3}, {1, 2, 3});
    EXPECT_EQ(t.kind, TRANSFORM_IDENTITY);
    expectSameMatrix(t, Transform{});
}

TEST(RotationBetween, OppositeDirectionsMakeAHalfTurn) {
    for (const FloatVec3& from : {FloatVec3{1, 0, 0}, FloatVec3{0, 1, 0}, FloatVec3{0, 0, 1},
                                  FloatVec3{1, 2, 3}, FloatVec3{-3, 1, 1}}) {
        Transform t;
        t.rotationBetween(from, {-from.x, -from.y, -from.z});
        EXPECT_EQ(t.kind, TRANSFORM_ROTATION);
        expectNear(apply(t, from), {-from.x, -from.y, -from.z}, 2e-6F);
    }
}

TEST(RotationBetween, HalfTurnUsesAQuarterTurnRoundedToFloat) {
    Transform t;
    t.rotationBetween({1, 0, 0}, {-1, 0, 0});
    // The float nearest to pi / 2 is 4.371139e-8 above it.
    EXPECT_FLOAT_EQ(t.m[1], -2 * 4.371139e-8F);
    EXPECT_FLOAT_EQ(t.m[4], 2 * 4.371139e-8F);
}

TEST(RotationBetween, HalfTurnTakesTheFirstOfEqualAxes) {
    Transform t;
    t.rotationBetween({0, 0, 1}, {0, 0, -1});
    // x and y are equally far from z. The cross product of z and x is y.
    expectNear(apply(t, {1, 2, 3}), {-1, 2, -3});
}

TEST(RotationBetween, DirectionsAThousandthApartAreNotParallel) {
    Transform t;
    t.rotationBetween({1, 0, 0}, {1, 1e-4F, 0});
    EXPECT_EQ(t.kind, TRANSFORM_IDENTITY);
    t.rotationBetween({1, 0, 0}, {1, 1e-3F, 0});
    EXPECT_EQ(t.kind, TRANSFORM_ROTATION);
    expectNear(apply(t, {1, 0, 0}), {1, 1e-3F, 0}, 1e-4F);
}

TEST(RotationBetween, MapsOneDirectionToTheOtherAndKeepsLengths) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> element(-1.0F, 1.0F);
    for (int round = 0; round < 500; ++round) {
        FloatVec3 from{element(random), element(random), element(random)};
        FloatVec3 to{element(random), element(random), element(random)};
        normalize3f(from, from);
        normalize3f(to, to);
        Transform t;
        t.rotationBetween(from, to);
        expectNear(apply(t, from), to, 1e-4F);
        const FloatVec3 turned = apply(t, {1, 2, 3});
        EXPECT_NEAR(dot(turned, turned), 14.0F, 1e-3F);
    }
}

TEST(RotationBetweenAbout, MapsThePivotToTheOffset) {
    Transform t;
    t.scale({9, 9, 9});  // to be discarded
    t.rotationBetweenAbout({1, 0, 0}, {0, 1, 0}, {1, 1, 1}, {5, 6, 7});
    EXPECT_EQ(t.kind, TRANSFORM_ROTATION);
    expectNear(apply(t, {1, 1, 1}), {5, 6, 7}, 1e-5F);
    expectNear(apply(t, {2, 1, 1}), {5, 7, 7}, 1e-5F);
}

TEST(RotationBetweenAbout, SameDirectionStillMakesARotation) {
    Transform t;
    t.rotationBetweenAbout({1, 0, 0}, {1, 0, 0}, {1, 1, 1}, {5, 6, 7});
    EXPECT_EQ(t.kind, TRANSFORM_ROTATION);
    expectEqual(apply(t, {0, 0, 0}), {4, 5, 6});
}

TEST(Multiply4, SecondOperandActsFirst) {
    Transform move;
    move.m[12] = 1.0F;
    Transform doubled;
    doubled.scale({2, 2, 2});
    Transform out;
    multiply4(out.m, doubled.m, move.m);
    expectEqual(apply(out, {0, 0, 0}), {2, 0, 0});
    multiply4(out.m, move.m, doubled.m);
    expectEqual(apply(out, {1, 0, 0}), {3, 0, 0});
    multiply4(doubled.m, move.m, doubled.m);  // in place
    expectSameMatrix(doubled, out);
}

TEST(InvertTransform, UndoesEveryKind) {
    Transform identity;
    Transform move;
    move.m[12] = 3.0F;
    move.kind = TRANSFORM_TRANSLATION;
    Transform turn;
    turn.rotationBetweenAbout({1, 0, 0}, {0, 0.6F, 0.8F}, {1, 2, 3}, {4, 5, 6});
    Transform stretch;
    stretch.scaleAbout({2, 4, -1}, {1, 2, 3});
    for (const Transform& t : {identity, move, turn, stretch}) {
        Transform back;
        ASSERT_TRUE(invertTransform(back, t));
        expectNear(apply(back, apply(t, {7, -8, 9})), {7, -8, 9}, 1e-5F);
        Transform inPlace = t;
        ASSERT_TRUE(invertTransform(inPlace, inPlace));
        expectSameMatrix(inPlace, back);
    }
}

TEST(InvertTransform, KeepsTheKindOfRotationsAndTranslations) {
    for (const TransformKind kind : {TRANSFORM_TRANSLATION, TRANSFORM_ROTATION}) {
        Transform t;
        t.kind = kind;
        Transform back;
        ASSERT_TRUE(invertTransform(back, t));
        EXPECT_EQ(back.kind, kind);
    }
}

TEST(InvertTransform, FailsForAProjection) {
    Transform flat;
    flat.scaleAbout({0, 1, 1}, {3, 0, 0});
    Transform out;
    EXPECT_FALSE(invertTransform(out, flat));
    expectSameMatrix(out, Transform{});
}

TEST(TransformPoint, DividesByTheFourthComponent) {
    Transform t;
    t.m[15] = 4.0F;
    expectEqual(apply(t, {4, 8, 12}), {1, 2, 3});
}

TEST(TransformPoint, FourthComponentOfZeroGivesTheOrigin) {
    Transform t;
    t.m[15] = 0.0F;
    expectEqual(apply(t, {4, 8, 12}), {0, 0, 0});
}

TEST(TransformPoint, WorksInDouble) {
    Transform t;
    t.m[4] = 1.0F;
    t.m[8] = -1.0F;
    // The sum 1 + 2^30 - 2^30 loses the 1 in single precision.
    expectEqual(apply(t, {1, 0x1p30F, 0x1p30F}), {1, 0x1p30F, 0x1p30F});
}

TEST(TransformPoint, ResultMayBeTheOperand) {
    Transform t;
    t.rotationFromAxisAngle({0, 0, 1}, 1.0);
    FloatVec3 p{1, 2, 3};
    const FloatVec3 expected = apply(t, p);
    transformPoint(p, t, p);
    expectEqual(p, expected);
}

}  // namespace
}  // namespace korvalite::core
