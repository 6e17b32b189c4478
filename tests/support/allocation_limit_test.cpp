// SPDX-License-Identifier: MIT
#include "support/allocation_limit.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace korvalite::core::test {
namespace {

bool canAllocate(std::size_t bytes = 1) {
    std::vector<char> items;
    try {
        items.reserve(bytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool canAllocateElsewhere() {
    bool can = false;
    std::thread([&can] { can = canAllocate(); }).join();
    return can;
}

TEST(AllocationLimit, RefusesOnlyLargerRequests) {
    const AllocationLimit limit(100);
    const bool small = canAllocate(100);
    const bool large = canAllocate(101);
    EXPECT_TRUE(small);
    EXPECT_FALSE(large);
}

TEST(FailingAllocation, IsOnlyTheNthOfItsThread) {
    std::vector<bool> could(5);
    bool early = true;
    {
        const FailingAllocation third(3);
        for (std::size_t i = 0; i < could.size(); ++i) {
            could[i] = canAllocate();
            early = early && (i >= 2 || !FailingAllocation::hasFailed());
        }
    }
    EXPECT_EQ(could, (std::vector<bool>{true, true, false, true, true}));
    EXPECT_TRUE(early);
}

TEST(FailingAllocation, DoesNotAffectOtherThreads) {
    bool elsewhere = false;
    bool here = true;
    {
        // The first allocation is for the start of the thread.
        const FailingAllocation second(2);
        elsewhere = canAllocateElsewhere();
        here = canAllocate();
    }
    EXPECT_TRUE(elsewhere);
    EXPECT_FALSE(here);
}

TEST(FailingAllocationElsewhere, IsTheNthOfAllOtherThreadsTogether) {
    std::vector<bool> could;
    const FailingAllocationElsewhere second(2);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(canAllocate());
        could.push_back(canAllocateElsewhere());
    }
    EXPECT_EQ(could, (std::vector<bool>{true, false, true}));
    EXPECT_TRUE(FailingAllocationElsewhere::hasFailed());
}

}  // namespace
}  // namespace korvalite::core::test
