// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::test {

// Counts the allocations that the whole process makes through operator new while it lives:
//
//   const AllocationCounter counter;
//   workInTheSteadyState();
//   EXPECT_EQ(counter.count(), 0U);
//
// Evaluate count() before anything else that may allocate, a failing expectation among them.
class AllocationCounter {
public:
    AllocationCounter() : atStart_(total()), bytesAtStart_(totalBytes()) {}

    std::uint64_t count() const { return total() - atStart_; }
    // What was asked for, whether or not it has been released since.
    std::uint64_t bytes() const { return totalBytes() - bytesAtStart_; }

private:
    static std::uint64_t total();
    static std::uint64_t totalBytes();

    std::uint64_t atStart_;
    std::uint64_t bytesAtStart_;
};

// Of the allocations made since its begin, by any thread, those that are not freed, less the older
// ones that are: 0 after work that leaves nothing behind.
class LiveAllocations {
public:
    LiveAllocations() : atStart_(total()) {}

    std::int64_t count() const { return total() - atStart_; }

private:
    static std::int64_t total();

    std::int64_t atStart_;
};

}  // namespace korvalite::test
