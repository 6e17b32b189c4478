// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace korvalite::core::test {

// Calls work(0) to work(count - 1), each on its own thread, and waits for all of them. None starts
// before all threads exist.
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

// Calls work() on another thread while this one is inside the section. Returns true if look() has
// returned the same all that time; the work has finished on return.
template <typename Section, typename Look, typename Work>
bool staysTheSameInside(Section& section, Look look, Work work) {
    std::unique_lock inside(section);
    const auto before = look();
    std::atomic<bool> begun = false;
    std::thread other([&] {
        begun = true;
        work();
    });
    while (!begun)
        std::this_thread::yield();
    bool stays = true;
    for (int i = 0; i < 2000; ++i) {
        stays = stays && look() == before;
        std::this_thread::yield();
    }
    inside.unlock();
    other.join();
    return stays;
}

}  // namespace korvalite::core::test
