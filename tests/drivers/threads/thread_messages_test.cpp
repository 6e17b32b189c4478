// SPDX-License-Identifier: MIT
#include "drivers/threads/thread_messages.h"

#include "support/allocation_counter.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <thread>

namespace korvalite::core {
namespace {

TEST(ThreadMessageQueue, AReadBlocksUntilAMessageArrives) {
    for (int round = 0; round < 200; ++round) {
        ThreadMessageQueue queue;
        bool posted = false;
        bool seen = false;
        std::thread reader([&] {
            queue.read();
            seen = posted;
        });
        std::this_thread::yield();
        posted = true;
        queue.post(WM_LOOP_START);
        reader.join();
        ASSERT_TRUE(seen) << round;
    }
}

TEST(ThreadMessageQueue, EveryMessageIsReadOnce) {
    ThreadMessageQueue queue;
    for (const ThreadMessage message : {WM_LOOP_DONE, WM_LOOP_START, WM_LOOP_DONE, WM_LOOP_DONE})
        queue.post(message);
    int starts = 0;
    for (int i = 0; i < 4; ++i)
        starts += queue.read() == WM_LOOP_START ? 1 : 0;
    EXPECT_EQ(starts, 1);
    // Nothing is left before the next message.
    queue.post(WM_LOOP_START);
    EXPECT_EQ(queue.read(), WM_LOOP_START);
}

TEST(ThreadMessageQueue, AQueuedStartIsReadBeforeAnEnd) {
    ThreadMessageQueue queue;
    queue.post(WM_LOOP_DONE);
    queue.post(WM_LOOP_START);
    EXPECT_EQ(queue.read(), WM_LOOP_START);
    EXPECT_EQ(queue.read(), WM_LOOP_DONE);
}

TEST(ThreadMessageQueue, AWaitForOneKindDropsTheOther) {
    ThreadMessageQueue queue;
    for (const ThreadMessage message : {WM_LOOP_START, WM_LOOP_DONE, WM_LOOP_START, WM_LOOP_DONE})
        queue.post(message);
    queue.waitFor(WM_LOOP_DONE, 1);
    EXPECT_EQ(queue.read(), WM_LOOP_DONE) << "both starts are dropped, and one end is left";

    // The end arrives first, and alone.
    queue.post(WM_LOOP_DONE);
    std::thread waiter([&] { queue.waitFor(WM_LOOP_START, 2); });
    queue.post(WM_LOOP_START);
    queue.post(WM_LOOP_START);
    waiter.join();
}

TEST(ThreadMessageQueue, AWaitForNoneReadsNothing) {
    ThreadMessageQueue queue;
    queue.waitFor(WM_LOOP_DONE, 0);
    queue.post(WM_LOOP_START);
    queue.waitFor(WM_LOOP_DONE, 0);
    EXPECT_EQ(queue.read(), WM_LOOP_START);
}

TEST(ThreadMessageQueue, AWaitCountsMessagesFromManyThreads) {
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kEach = 500;
    ThreadMessageQueue queue;
    int results[kThreads] = {};
    test::onThreads(kThreads + 1, [&](std::size_t i) {
        if (i == kThreads) {
            queue.waitFor(WM_LOOP_DONE, kThreads * kEach);
            for (const int result : results)
                EXPECT_EQ(result, static_cast<int>(kEach));
            return;
        }
        for (std::size_t k = 0; k < kEach; ++k) {
            ++results[i];
            queue.post(WM_LOOP_DONE);
        }
    });
}

TEST(ThreadMessageQueue, TwoThreadsCanAlternate) {
    constexpr int kTurns = 2000;
    ThreadMessageQueue toFirst;
    ThreadMessageQueue toSecond;
    int turns = 0;
    std::thread second([&] {
        while (toSecond.read() == WM_LOOP_START) {
            ++turns;
            toFirst.post(WM_LOOP_DONE);
        }
    });
    for (int i = 0; i < kTurns; ++i) {
        EXPECT_EQ(turns, i);
        toSecond.post(WM_LOOP_START);
        toFirst.waitFor(WM_LOOP_DONE, 1);
    }
    toSecond.post(WM_LOOP_DONE);
    second.join();
    EXPECT_EQ(turns, kTurns);
}

TEST(ThreadMessageQueue, PostingNeverAllocates) {
    ThreadMessageQueue queue;
    const test::AllocationCounter counter;
    for (int i = 0; i < 1000; ++i)
        queue.post(i % 2 == 0 ? WM_LOOP_START : WM_LOOP_DONE);
    const std::uint64_t allocations = counter.count();
    EXPECT_EQ(allocations, 0U);
}

}  // namespace
}  // namespace korvalite::core
