// SPDX-License-Identifier: MIT
#include "korva/numbers.h"

#include <gtest/gtest.h>

namespace korva {
namespace {

TEST(WithCommas, GroupsByThree) {
    EXPECT_EQ(withCommas(0), "0");
    EXPECT_EQ(withCommas(999), "999");
    EXPECT_EQ(withCommas(1'000), "1,000");
    EXPECT_EQ(withCommas(1'234'567), "1,234,567");
}

TEST(WithDigits, LeavesOutZerosAtTheEnd) {
    EXPECT_EQ(withDigits(0.012345), "0.0123");
    EXPECT_EQ(withDigits(0.5), "0.5");
    EXPECT_EQ(withDigits(1234.5, 6), "1234.5");
    EXPECT_EQ(withDigits(0), "0");
}

}  // namespace
}  // namespace korva
