// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace korvalite::test {

// While it lives, operator new refuses every request for more than this many bytes at once, as it
// does when memory is exhausted. One at a time.
class AllocationLimit {
public:
    explicit AllocationLimit(std::size_t bytes);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

// Lets the nth allocation of the thread that makes this fail, counted from now on; those before and
// after it succeed. Calls `atFailure`, if there is one, just before it fails. One at a time on a
// thread.
class FailingAllocation {
public:
    explicit FailingAllocation(std::uint64_t nth, std::function<void()> atFailure = {});
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // On the same thread.
    static bool hasFailed();

private:
    std::function<void()> atFailure_;
};

// The same for all threads but the one that makes this, counted together. One at a time.
class FailingAllocationElsewhere {
public:
    explicit FailingAllocationElsewhere(std::uint64_t nth);
    ~FailingAllocationElsewhere();
    FailingAllocationElsewhere(const FailingAllocationElsewhere&) = delete;
    FailingAllocationElsewhere& operator=(const FailingAllocationElsewhere&) = delete;

    static bool hasFailed();
};

}  // namespace korvalite::test
