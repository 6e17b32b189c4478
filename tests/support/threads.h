// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <latch>
#include <thread>
#include <vector>

namespace korvalite::test {

// Calls work(0) to work(count - 1), each on a thread of its own, and waits for all of them. None
// begins before all are there.
template <typename Work>
void onThreads(std::size_t count, Work work) {
    std::latch allAreThere(static_cast<std::ptrdiff_t>(count));
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < count; ++i) {
        threads.emplace_back([&allAreThere, &work, i] {
            allAreThere.arrive_and_wait();
            work(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace korvalite::test
