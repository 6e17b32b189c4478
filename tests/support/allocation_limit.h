// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

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

}  // namespace korvalite::test
