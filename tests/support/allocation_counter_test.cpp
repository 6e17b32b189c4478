// SPDX-License-Identifier: MIT
#include "support/allocation_counter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace korvalite::test {
namespace {

TEST(AllocationCounter, CountsWhatVectorsAllocate) {
    std::vector<int> items;
    const AllocationCounter counter;
    items.reserve(100);
    const auto afterReserve = counter.count();
    items.resize(100);
    const auto afterResize = counter.count();
    items.resize(1000);
    const auto afterGrowth = counter.count();
    EXPECT_EQ(afterReserve, 1U);
    EXPECT_EQ(afterResize, 1U);
    EXPECT_EQ(afterGrowth, 2U);
}

TEST(AllocationCounter, SumsUpWhatWasAskedFor) {
    std::vector<int> items;
    const AllocationCounter counter;
    items.reserve(100);
    items.reserve(150);
    const auto bytes = counter.bytes();
    EXPECT_EQ(bytes, 250 * sizeof(int));
}

TEST(AllocationCounter, CountsArrays) {
    const AllocationCounter counter;
    const auto array = std::make_unique<int[]>(50);
    const auto count = counter.count();
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(count, 1U);
}

TEST(AllocationCounter, SeesOnlyWhatComesAfterIt) {
    const std::string before(1000, 'x');
    const AllocationCounter counter;
    const auto count = counter.count();
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(before.size(), 1000U);
}

}  // namespace
}  // namespace korvalite::test
