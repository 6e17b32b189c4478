// SPDX-License-Identifier: MIT
#include "base/critical_section.h"

#include "support/random.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>

namespace korvalite::core {
namespace {

// More than the number of processors on most machines.
constexpr std::size_t kThreads = 12;

// The data that the section guards, and a check for other threads inside.
struct Guarded {
    CriticalSection section;
    std::uint64_t stays = 0;
    std::atomic<int> inside = 0;
    std::atomic<bool> crowded = false;

    template <typename During>
    void stay(During during) {
        const std::lock_guard lock(section);
        if (inside.fetch_add(1, std::memory_order_relaxed) != 0) crowded = true;
        const std::uint64_t before = stays;
        during();
        stays = before + 1;
        inside.fetch_sub(1, std::memory_order_relaxed);
    }
};

void longEnoughForTheOthersToSleep() {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST(CriticalSection, AdmitsOneThreadAtATime) {
    constexpr std::uint64_t kStays = 40'000;
    Guarded guarded;
    test::onThreads(kThreads, [&](std::size_t) {
        for (std::uint64_t i = 0; i < kStays; ++i)
            guarded.stay([] {});
    });
    EXPECT_EQ(guarded.stays, kThreads * kStays);
    EXPECT_FALSE(guarded.crowded);
}

TEST(CriticalSection, WakesAllThreadsThatSleepWhileItIsHeld) {
    constexpr std::uint64_t kStays = 10;
    Guarded guarded;
    test::onThreads(kThreads, [&](std::size_t) {
        for (std::uint64_t i = 0; i < kStays; ++i)
            guarded.stay(longEnoughForTheOthersToSleep);
    });
    EXPECT_EQ(guarded.stays, kThreads * kStays);
    EXPECT_FALSE(guarded.crowded);
}

TEST(CriticalSection, ForgetsNoSleeperUnderHeavyContention) {
    constexpr std::uint64_t kStays = 1000;
    Guarded guarded;
    test::onThreads(kThreads, [&](std::size_t i) {
        test::Random random(static_cast<std::uint32_t>(i));
        for (std::uint64_t k = 0; k < kStays; ++k) {
            if (random.onceIn(200)) {
                guarded.stay(longEnoughForTheOthersToSleep);
            } else {
                guarded.stay([] {});
            }
        }
    });
    EXPECT_EQ(guarded.stays, kThreads * kStays);
    EXPECT_FALSE(guarded.crowded);
}

TEST(CriticalSection, AUniqueLockMayUnlockRelockAndMove) {
    CriticalSection section;
    int value = 0;
    std::unique_lock lock(section);
    std::thread other([&] {
        const std::lock_guard inside(section);
        ++value;
    });
    value = 10;
    lock.unlock();
    other.join();
    EXPECT_EQ(value, 11);
    lock.lock();
    const std::unique_lock taken = std::move(lock);
    EXPECT_TRUE(taken.owns_lock());
}

TEST(CriticalSection, IsReleasedByAnException) {
    CriticalSection section;
    EXPECT_THROW(
        {
            const std::lock_guard lock(section);
            throw 1;
        },
        int);
    test::onThreads(1, [&](std::size_t) { const std::lock_guard lock(section); });
}

TEST(CriticalSection, DoesNotShareACacheLineWithANeighbour) {
    CriticalSection pair[2];
    const auto first = reinterpret_cast<std::uintptr_t>(&pair[0]);
    const auto second = reinterpret_cast<std::uintptr_t>(&pair[1]);
    EXPECT_NE(first / kCacheLine, second / kCacheLine);
}

}  // namespace
}  // namespace korvalite::core
