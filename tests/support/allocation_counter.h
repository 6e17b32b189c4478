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

}  // namespace korvalite::test
