// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace korvalite::core::test {

// During its lifetime, operator new refuses every request for more than this number of bytes, as it
// does when memory is exhausted. Only one may exist at a time.
class AllocationLimit {
public:
    explicit AllocationLimit(std::size_t bytes);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

// Fails the nth allocation of the thread that creates this, counted from now on; those before and
// after it succeed. Calls `atFailure`, if there is one, just before the failure. Only one may exist
// on a thread at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(std::uint64_t nth, std::function<void()> atFailure = {});
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // Call it on the same thread.
    static bool hasFailed();

private:
    std::function<void()> atFailure_;
};

// The same for all threads but the one that creates this, counted together. Only one may exist at a
// time.
class FailingAllocationElsewhere {
public:
    explicit FailingAllocationElsewhere(std::uint64_t nth);
    ~FailingAllocationElsewhere();
    FailingAllocationElsewhere(const FailingAllocationElsewhere&) = delete;
    FailingAllocationElsewhere& operator=(const FailingAllocationElsewhere&) = delete;

    static bool hasFailed();
};

}  // namespace korvalite::core::test
