// SPDX-License-Identifier: MIT
#include "base/numeric.h"

#include <gtest/gtest.h>
#include <limits>

namespace korvalite::core {
namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();

TEST(TruncateToInt32, RoundsTowardZero) {
    EXPECT_EQ(truncateToInt32(1.9), 1);
    EXPECT_EQ(truncateToInt32(-1.9), -1);
    EXPECT_EQ(truncateToInt32(-0.5), 0);
    EXPECT_EQ(truncateToInt32(2147483647.9), 2147483647);
    EXPECT_EQ(truncateToInt32(-2147483648.9), kLowest);
}

TEST(TruncateToInt32, TurnsWhatDoesNotFitIntoTheLowestNumber) {
    EXPECT_EQ(truncateToInt32(2147483648.0), kLowest);
    EXPECT_EQ(truncateToInt32(-2147483649.0), kLowest);
    EXPECT_EQ(truncateToInt32(std::numeric_limits<double>::infinity()), kLowest);
    EXPECT_EQ(truncateToInt32(-std::numeric_limits<double>::infinity()), kLowest);
    EXPECT_EQ(truncateToInt32(std::numeric_limits<double>::quiet_NaN()), kLowest);
}

}  // namespace
}  // namespace korvalite::core
