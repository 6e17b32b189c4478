// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace korvalite::core::test {

// For a test whose threads could wait for each other for ever: ends the process if this object
// lives for minutes, and says where.
class Watchdog {
public:
    explicit Watchdog(std::string where) : where_(std::move(where)) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(mutex_);
            isDone_ = true;
        }
        done_.notify_one();
        thread_.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    static constexpr std::chrono::seconds kPatience{600};  // sanitizers are slow

    void watch() {
        std::unique_lock lock(mutex_);
        if (done_.wait_for(lock, kPatience, [this] { return isDone_; })) return;
        std::fprintf(stderr, "hangs: %s\n", where_.c_str());
        std::abort();
    }

    const std::string where_;
    std::mutex mutex_;
    std::condition_variable done_;
    bool isDone_ = false;
    std::thread thread_{[this] { watch(); }};
};

}  // namespace korvalite::core::test
