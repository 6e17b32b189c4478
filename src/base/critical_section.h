// SPDX-License-Identifier: MIT
#pragma once

#include "base/cache.h"

#include <atomic>
#include <cstdint>

namespace korvalite::core {

/// A mutex for critical sections of about a microsecond. A thread that finds it taken spins for a
/// while before it sleeps, since sleeping and waking take longer than the section. Spinning only
/// reads, which leaves the cache line with the owner (U. Drepper, "Futexes Are Tricky", mutex 2;
/// test and test-and-set).
class alignas(kCacheLine) CriticalSection {
public:
    void lock() {
        if (enter()) return;
        constexpr int kLooks = 1000;
        for (int look = 0; look < kLooks; ++look) {
            pause();
            if (state_.load(std::memory_order_relaxed) == kFree && enter()) return;
        }
        while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree)
            state_.wait(kAwaited, std::memory_order_relaxed);
    }
    void unlock() {
        if (state_.exchange(kFree, std::memory_order_release) == kAwaited) state_.notify_one();
    }

private:
    enum State : std::uint32_t {
        kFree,
        kTaken,
        kAwaited,  // taken, and a thread may be asleep
    };

    bool enter() {
        std::uint32_t free = kFree;
        return state_.compare_exchange_strong(free, kTaken, std::memory_order_acquire,
                                              std::memory_order_relaxed);
    }

    static void pause() {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
    }

    std::atomic<std::uint32_t> state_ = kFree;
};

}  // namespace korvalite::core
