// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace korvalite::core {

/// The messages between the main thread and its workers. To a worker they mean: run the loop, or
/// end. To the main thread: the worker has started, or its loop has ended.
enum ThreadMessage : std::uint32_t {
    WM_LOOP_START = 1024,
    WM_LOOP_DONE = 1025,
};

/// The messages to one thread. Messages have only an id and are merely counted, so posting never
/// allocates; pending starts are read first. Any thread may post, only the owner reads.
class ThreadMessageQueue {
public:
    void post(ThreadMessage message) {
        const std::lock_guard lock(mutex_);
        ++waiting(message);
        posted_.notify_one();
    }

    /// Blocks until there is a message.
    ThreadMessage read() {
        std::unique_lock lock(mutex_);
        posted_.wait(lock, [this] { return starts_ > 0 || dones_ > 0; });
        const ThreadMessage message = starts_ > 0 ? WM_LOOP_START : WM_LOOP_DONE;
        --waiting(message);
        return message;
    }

    /// Reads until `count` messages of one kind have arrived. Discards others.
    void waitFor(ThreadMessage message, std::size_t count) {
        while (count > 0) {
            if (read() == message) --count;
        }
    }

private:
    std::size_t& waiting(ThreadMessage message) {
        return message == WM_LOOP_START ? starts_ : dones_;
    }

    std::mutex mutex_;
    std::condition_variable posted_;
    std::size_t starts_ = 0;
    std::size_t dones_ = 0;
};

}  // namespace korvalite::core
