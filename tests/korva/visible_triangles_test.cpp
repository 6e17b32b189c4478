// SPDX-License-Identifier: MIT
#include "korva/picture/visible_triangles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace korva {
namespace {

constexpr std::size_t kSize = 16;  // of the picture, in samples
constexpr std::uint32_t kNone = VisibleTriangles::kNone;

/// Keeps the numbers: x, y and depth of a point are its coordinates.
Projection asItIs() {
    Projection projection;
    projection.camera = {{1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    return projection;
}

/// The index of the triangle at each sample, drawn in the order given.
std::vector<std::uint32_t> drawn(const std::vector<float>& positions,
                                 const std::vector<std::uint32_t>& order = {}) {
    korvalite::Mesh mesh;
    mesh.positions = positions;
    for (std::uint32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex)
        mesh.triangles.push_back(vertex);
    VisibleTriangles visible(kSize, kSize);
    visible.start(0, kSize);
    for (std::uint32_t i = 0; i < mesh.triangleCount(); ++i) {
        const std::uint32_t index = order.empty() ? i : order[i];
        ScreenTriangle triangle{};
        if (project(mesh, index, asItIs(), triangle)) visible.draw(triangle, index);
    }
    std::vector<std::uint32_t> result;
    for (std::size_t i = 0; i < kSize * kSize; ++i)
        result.push_back(visible.at(i % kSize, i / kSize));
    return result;
}

std::size_t count(const std::vector<std::uint32_t>& samples, std::uint32_t index) {
    return static_cast<std::size_t>(std::ranges::count(samples, index));
}

TEST(VisibleTriangles, ATriangleCoversTheSamplesWhoseMiddlesAreInside) {
    const auto samples = drawn({2, 1, 0, 12.25F, 1, 0, 2, 11.25F, 0});
    for (std::size_t y = 0; y < kSize; ++y)
        for (std::size_t x = 0; x < kSize; ++x) {
            const bool isInside = x >= 2 && y >= 1 && x + y <= 12;
            EXPECT_EQ(samples[y * kSize + x] == 0, isInside) << x << ' ' << y;
        }
}

TEST(VisibleTriangles, BothWindingsCoverTheSame) {
    EXPECT_EQ(drawn({2, 1, 0, 12, 3, 0, 5, 14, 0}), drawn({2, 1, 0, 5, 14, 0, 12, 3, 0}));
}

TEST(VisibleTriangles, SamplesOnASharedEdgeBelongToOneOfBoth) {
    // The diagonal goes through the middles of samples, and so does the border.
    const std::vector<float> upper{0.5F, 0.5F, 0, 8.5F, 0.5F, 0, 0.5F, 8.5F, 0};
    const std::vector<float> lower{8.5F, 0.5F, 0, 8.5F, 8.5F, 0, 0.5F, 8.5F, 0};
    const auto first = drawn(upper);
    const auto second = drawn(lower);
    EXPECT_EQ(count(first, 0) + count(second, 0), 64U);
    for (std::size_t i = 0; i < first.size(); ++i)
        EXPECT_TRUE(first[i] == kNone || second[i] == kNone) << i;
}

TEST(VisibleTriangles, AFanLeavesNoGapAndOverlapsNowhere) {
    std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same points every time
    std::uniform_real_distribution<float> place(4, 12);
    for (int round = 0; round < 50; ++round) {
        const std::array<float, 2> middle{place(random), place(random)};
        const std::array<std::array<float, 2>, 4> corners{{{-1, -1}, {17, -1}, {17, 17}, {-1, 17}}};
        std::vector<int> covered(kSize * kSize);
        for (std::size_t k = 0; k < 4; ++k) {
            const auto& a = corners[k];
            const auto& b = corners[(k + 1) % 4];
            const auto samples = drawn({middle[0], middle[1], 0, a[0], a[1], 0, b[0], b[1], 0});
            for (std::size_t i = 0; i < samples.size(); ++i)
                covered[i] += samples[i] == 0 ? 1 : 0;
        }
        EXPECT_EQ(covered, std::vector<int>(kSize * kSize, 1));
    }
}

TEST(VisibleTriangles, TheNearestIsSeenInAnyOrder) {
    // Two triangles through each other, and a third that both hide in part.
    const std::vector<float> scene{0, 0, -5, 16, 0,  5,  0, 16, -5,  //
                                   0, 0, 5,  16, 0,  -5, 0, 16, 5,   //
                                   0, 0, 1,  16, 16, 1,  0, 16, 1};
    const auto samples = drawn(scene, {0, 1, 2});
    EXPECT_EQ(samples[3], 0U);
    EXPECT_EQ(samples[12], 1U);
    EXPECT_EQ(samples[15 * kSize + 12], 2U);
    EXPECT_EQ(samples, drawn(scene, {2, 1, 0}));
    EXPECT_EQ(samples, drawn(scene, {1, 2, 0}));
}

TEST(VisibleTriangles, TheLowerIndexIsSeenAmongEquals) {
    const std::vector<float> twice{1, 1, 0, 9, 1, 0, 1, 9, 0, 1, 1, 0, 9, 1, 0, 1, 9, 0};
    for (const auto& order : {std::vector<std::uint32_t>{0, 1}, {1, 0}}) {
        EXPECT_GT(count(drawn(twice, order), 0), 20U);
        EXPECT_EQ(count(drawn(twice, order), 1), 0U);
    }
}

TEST(VisibleTriangles, OnlyTheRowsOfABandAreDrawn) {
    korvalite::Mesh mesh;
    mesh.positions = {-50, -50, 0, 100, -50, 0, -50, 100, 0};
    mesh.triangles = {0, 1, 2};
    ScreenTriangle triangle{};
    ASSERT_TRUE(project(mesh, 0, asItIs(), triangle));
    VisibleTriangles visible(kSize, 4);
    visible.start(8, 3);
    EXPECT_EQ(visible.at(0, 8), kNone);
    visible.draw(triangle, 0);
    for (std::size_t y = 8; y < 11; ++y)
        for (std::size_t x = 0; x < kSize; ++x)
            EXPECT_EQ(visible.at(x, y), 0U);
}

TEST(VisibleTriangles, HugeTrianglesCoverWhatTheyShould) {
    for (const float far : {1e6F, 1e15F, 1e30F, 3e38F}) {
        EXPECT_EQ(count(drawn({-far, -far, 0, far, -far, 0, 0, far, 0}), 0), kSize * kSize) << far;
        EXPECT_EQ(count(drawn({-far, -far, far, far, -far, far, 0, far, -far}), 0), kSize * kSize)
            << far;
        EXPECT_EQ(count(drawn({-far, -far, 0, far, -far, 0, 0, -20, 0}), 0), 0U) << far;
        EXPECT_EQ(count(drawn({20, 20, 0, far, 20, 0, 20, far, 0}), 0), 0U) << far;
        EXPECT_EQ(count(drawn({-20, -20, 0, -far, -20, 0, -20, -far, 0}), 0), 0U) << far;
    }
}

TEST(VisibleTriangles, ATinyTriangleIsSeenOnlyAroundTheMiddleOfASample) {
    const auto at = [](float x, float y) {
        return count(drawn({x - 0.03F, y - 0.03F, 0, x + 0.05F, y, 0, x, y + 0.05F, 0}), 0);
    };
    EXPECT_EQ(at(4.5F, 7.5F), 1U);
    EXPECT_EQ(at(4.1F, 7.5F), 0U);
    EXPECT_EQ(at(4.5F, 7.9F), 0U);
    EXPECT_EQ(at(16.5F, 7.5F), 0U);
}

TEST(VisibleTriangles, WhatHasNoAreaOrIsNotFiniteIsNotDrawn) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const std::vector<std::uint32_t> nothing(kSize * kSize, kNone);
    EXPECT_EQ(drawn({1, 1, 0, 5, 5, 0, 9, 9, 0}), nothing);
    EXPECT_EQ(drawn({5, 5, 0, 5, 5, 0, 9, 9, 0}), nothing);
    EXPECT_EQ(drawn({5, 5, 0, 5, 5, 0, 5, 5, 0}), nothing);
    EXPECT_EQ(drawn({1, 1, 0, kNan, 5, 0, 9, 2, 0}), nothing);
    EXPECT_EQ(drawn({1, 1, 0, kInf, 5, 0, 9, 2, 0}), nothing);
    EXPECT_EQ(drawn({1, 1, 0, 5, -kInf, 0, 9, 2, 0}), nothing);
}

}  // namespace
}  // namespace korva
