// SPDX-License-Identifier: MIT
#include "korva/nearest_name.h"

#include <gtest/gtest.h>

#include <array>

namespace korva {
namespace {

const std::array<std::string, 3> kNames{"--freeze-border", "--threads", "--to"};

TEST(NearestName, FindsWhatWasMeant) {
    EXPECT_EQ(nearestName("--freezeborder", kNames), "--freeze-border");
    EXPECT_EQ(nearestName("--thread", kNames), "--threads");
    EXPECT_EQ(nearestName("--too", kNames), "--to");
}

TEST(NearestName, FindsNothingFarOff) {
    EXPECT_EQ(nearestName("--xyzxyzxyz", kNames), "");
    EXPECT_EQ(nearestName("--threads", {}), "");
}

}  // namespace
}  // namespace korva
