// SPDX-License-Identifier: MIT
#include "support/allocation_counter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace korvalite::core::test {
namespace {

TEST(AllocationCounter, CountsTheAllocationsOfVectors) {
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

TEST(AllocationCounter, SumsUpTheRequestedBytes) {
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

TEST(AllocationCounter, CountsOnlyLaterAllocations) {
    const std::string before(1000, 'x');
    const AllocationCounter counter;
    const auto count = counter.count();
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(before.size(), 1000U);
}

TEST(LiveAllocations, AreThoseNotYetFreed) {
    auto old = std::make_unique<int>(1);
    const LiveAllocations live;
    auto array = std::make_unique<int[]>(50);
    auto object = std::make_unique<std::string>(1000, 'x');
    const auto withBoth = live.count();
    array.reset();
    const auto withObject = live.count();
    object.reset();
    const auto withNone = live.count();
    old.reset();
    const auto withLess = live.count();
    EXPECT_EQ(withBoth, 3);  // the array, the string and its text
    EXPECT_EQ(withObject, 2);
    EXPECT_EQ(withNone, 0);
    EXPECT_EQ(withLess, -1);
}

}  // namespace
}  // namespace korvalite::core::test
