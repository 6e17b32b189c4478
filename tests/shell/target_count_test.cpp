// SPDX-License-Identifier: MIT
#include "shell/target_count.h"

#include <gtest/gtest.h>
#include <limits>

namespace korvalite {
namespace {

std::int32_t percentOf(float percent, std::uint32_t vertexCount) {
    BatchSettings settings;
    settings.DecimationTargetNum = 77;
    settings.DecimationTargetPourcent = percent;
    return targetVertexCount(settings, vertexCount);
}

TEST(TargetVertexCount, IsTheNumberWithoutAPercentage) {
    EXPECT_EQ(percentOf(-1.0F, 1000), 77);
}

TEST(TargetVertexCount, APercentageWinsOverTheNumber) {
    EXPECT_EQ(percentOf(50.0F, 1001), 500);
    EXPECT_EQ(percentOf(0.0F, 1000), 0);
    EXPECT_EQ(percentOf(200.0F, 1000), 2000);
    EXPECT_EQ(percentOf(-2.0F, 1000), -20);
}

TEST(TargetVertexCount, IsComputedInSinglePrecisionAndTruncated) {
    EXPECT_EQ(percentOf(20.0F, 1018), 203);
    // 0.7F is below seven tenths, but the product rounds up to 7.
    EXPECT_EQ(percentOf(70.0F, 10), 7);
    // 0.53F is below 53 hundredths, and so is its product.
    EXPECT_EQ(percentOf(53.0F, 100), 52);
    // The count itself passes through a float.
    EXPECT_EQ(percentOf(100.0F, 16777217), 16777216);
}

TEST(TargetVertexCount, IsTheLowestNumberIfItDoesNotFit) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(percentOf(std::numeric_limits<float>::quiet_NaN(), 10), kLowest);
    EXPECT_EQ(percentOf(std::numeric_limits<float>::infinity(), 10), kLowest);
    EXPECT_EQ(percentOf(1e30F, 10), kLowest);
}

}  // namespace
}  // namespace korvalite
