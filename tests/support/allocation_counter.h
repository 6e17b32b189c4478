// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::core::test {

// Counts the allocations that the whole process makes through operator new during its lifetime:
//
//   const AllocationCounter counter;
//   workInTheSteadyState();
//   EXPECT_EQ(counter.count(), 0U);
//
// Read count() before anything else that may allocate, such as a failing expectation.
class AllocationCounter {
public:
    AllocationCounter() : atStart_(total()), bytesAtStart_(totalBytes()) {}

    std::uint64_t count() const { return total() - atStart_; }
    // The bytes requested, whether or not they have been released since.
    std::uint64_t bytes() const { return totalBytes() - bytesAtStart_; }

private:
    static std::uint64_t total();
    static std::uint64_t totalBytes();

    std::uint64_t atStart_;
    std::uint64_t bytesAtStart_;
};

// The number of allocations by any thread that are not yet freed, minus the older ones that have
// been freed since: 0 after work that leaves nothing behind.
class LiveAllocations {
public:
    LiveAllocations() : atStart_(total()) {}

    std::int64_t count() const { return total() - atStart_; }

private:
    static std::int64_t total();

    std::int64_t atStart_;
};

}  // namespace korvalite::core::test
