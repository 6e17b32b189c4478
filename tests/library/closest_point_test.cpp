// SPDX-License-Identifier: MIT
#include "library/closest_point.h"

#include "support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace korvalite {
namespace {

using core::DoubleVec3;
using core::test::Random;

void expectPlace(const DoubleVec3& point, const TriangleCorners& triangle,
                 const DoubleVec3& expected) {
    const NearestPlace found = nearestPlace(point, triangle);
    const DoubleVec3 place = point + found.offset;
    EXPECT_DOUBLE_EQ(place.x, expected.x);
    EXPECT_DOUBLE_EQ(place.y, expected.y);
    EXPECT_DOUBLE_EQ(place.z, expected.z);
    const DoubleVec3 apart = expected - point;
    EXPECT_DOUBLE_EQ(found.square, dot(apart, apart));
}

constexpr TriangleCorners kTriangle{{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}};

TEST(ClosestPoint, IsACornerBesideTheCorners) {
    expectPlace({-1, -2, 3}, kTriangle, {0, 0, 0});
    expectPlace({6, -1, 1}, kTriangle, {4, 0, 0});
    expectPlace({-1, 7, -2}, kTriangle, {0, 4, 0});
    expectPlace({4, 0, 0}, kTriangle, {4, 0, 0});
}

TEST(ClosestPoint, IsOnAnEdgeBesideTheEdges) {
    expectPlace({1, -2, 2}, kTriangle, {1, 0, 0});
    expectPlace({-3, 3, 1}, kTriangle, {0, 3, 0});
    expectPlace({4, 4, 1}, kTriangle, {2, 2, 0});
}

TEST(ClosestPoint, IsTheFootOfThePerpendicularAboveTheInside) {
    expectPlace({1, 1, 5}, kTriangle, {1, 1, 0});
    expectPlace({1, 2, -0.25}, kTriangle, {1, 2, 0});
    expectPlace({0.5, 0.25, 0}, kTriangle, {0.5, 0.25, 0});
}

TEST(ClosestPoint, ATriangleWithoutAreaIsASegment) {
    for (const TriangleCorners& line : {TriangleCorners{{{0, 0, 0}, {2, 0, 0}, {8, 0, 0}}},
                                        TriangleCorners{{{2, 0, 0}, {0, 0, 0}, {8, 0, 0}}},
                                        TriangleCorners{{{8, 0, 0}, {0, 0, 0}, {0, 0, 0}}}}) {
        expectPlace({5, 3, 0}, line, {5, 0, 0});
        expectPlace({1, 0, 2}, line, {1, 0, 0});
        expectPlace({-1, 1, 0}, line, {0, 0, 0});
        expectPlace({9, 1, 1}, line, {8, 0, 0});
    }
}

TEST(ClosestPoint, ATriangleAtOnePlaceIsAPoint) {
    expectPlace({1, 2, 3}, {{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}}, {1, 1, 1});
}

/// The least distance to many places of the triangle, which is never below the true one.
double leastOfMany(const DoubleVec3& point, const TriangleCorners& triangle, int steps) {
    const auto& [a, b, c] = triangle;
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i <= steps; ++i) {
        for (int k = 0; i + k <= steps; ++k) {
            const DoubleVec3 place =
                a + ((1.0 * i / steps) * (b - a) + (1.0 * k / steps) * (c - a));
            least = std::min(least, std::sqrt(dot(place - point, place - point)));
        }
    }
    return least;
}

TEST(ClosestPoint, NoOtherPlaceOfTheTriangleIsNearer) {
    Random random(5);
    for (int round = 0; round < 400; ++round) {
        // From well-shaped triangles to slivers, whose normals are inexact.
        const float flat = std::pow(10.0F, -static_cast<float>(round % 9));
        const auto place = [&] {
            return DoubleVec3{static_cast<double>(random.around(1)),
                              static_cast<double>(flat * random.around(1)),
                              static_cast<double>(flat * random.around(1))};
        };
        const TriangleCorners triangle{place(), place(), place()};
        const DoubleVec3 point = round % 2 == 0 ? place() : place() + DoubleVec3{0, 0.3, 0};
        const double found = std::sqrt(nearestPlace(point, triangle).square);
        const double sampled = leastOfMany(point, triangle, 60);
        EXPECT_LE(found, sampled + 1e-13) << round;
        EXPECT_GE(found, sampled - 0.05) << round;  // the samples are up to this far apart
    }
}

TEST(ClosestPoint, TheOffsetLeadsToTheTriangle) {
    Random random(6);
    for (int round = 0; round < 1000; ++round) {
        const auto place = [&] {
            const double flat = round % 3 == 0 ? 1e-7 : 1;
            return DoubleVec3{static_cast<double>(random.around(1)),
                              flat * static_cast<double>(random.around(1)),
                              flat * static_cast<double>(random.around(1))};
        };
        const TriangleCorners triangle{place(), place(), place()};
        const DoubleVec3 point = place();
        const NearestPlace found = nearestPlace(point, triangle);
        EXPECT_NEAR(std::sqrt(nearestPlace(point + found.offset, triangle).square), 0, 1e-13);
        EXPECT_DOUBLE_EQ(found.square, dot(found.offset, found.offset));
    }
}

TEST(ClosestPoint, HugeAndTinyTrianglesStayExact) {
    for (const double scale : {3e38, 1e30, 1e-30, 1e-44}) {
        const TriangleCorners triangle{{{0, 0, 0}, {scale, 0, 0}, {0, scale, 0}}};
        const NearestPlace found = nearestPlace({scale / 4, scale / 4, scale}, triangle);
        EXPECT_NEAR(std::sqrt(found.square) / scale, 1, 1e-12) << scale;
        const NearestPlace beside = nearestPlace({scale / 2, -scale, 0}, triangle);
        EXPECT_NEAR(std::sqrt(beside.square) / scale, 1, 1e-12) << scale;
    }
}

}  // namespace
}  // namespace korvalite
