// SPDX-License-Identifier: MIT
#include "library/work_report.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace korvalite {

WorkReport::WorkReport(const Monitor& monitor, Phase phase, std::uint64_t total)
    : monitor_(monitor), phase_(phase), total_(total) {
    add(0);
}

void WorkReport::add(std::uint64_t done) {
    constexpr auto kInterval = std::chrono::milliseconds(50);
    done_ += done;
    if (!monitor_) return;
    if (isCancelled_) throw Error(ErrorCode::Cancelled, "Cancelled by the caller.");
    const std::unique_lock lock(reporting_, std::try_to_lock);
    if (!lock.owns_lock() || isCancelled_) return;
    if (std::chrono::steady_clock::now() - lastReport_ < kInterval) return;
    report();
    lastReport_ = std::chrono::steady_clock::now();
}

void WorkReport::report() {
    bool goesOn = false;
    try {
        goesOn =
            monitor_({.phase = phase_, .done = std::min(done_.load(), total_), .total = total_});
    } catch (...) {
        isCancelled_ = true;
        throw;
    }
    if (goesOn) return;
    isCancelled_ = true;
    throw Error(ErrorCode::Cancelled, "Cancelled by the caller.");
}

namespace {

/// Chunks of work, which several threads take one by one.
class Chunks {
public:
    Chunks(std::size_t count, const std::function<void(std::size_t)>& work)
        : count_(count), work_(work) {}

    void takeAll() {
        try {
            for (std::size_t chunk = next_++; chunk < count_; chunk = next_++)
                work_(chunk);
        } catch (...) {
            next_ = count_;
            const std::lock_guard lock(failing_);
            if (!failure_) failure_ = std::current_exception();
        }
    }
    void finish() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    std::size_t count_;
    const std::function<void(std::size_t)>& work_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex failing_;
    std::exception_ptr failure_;
};

}  // namespace

void forEachChunk(std::size_t count, int threads, const std::function<void(std::size_t)>& work) {
    Chunks chunks(count, work);
    {
        std::vector<std::jthread> helpers;
        const std::size_t most = std::min(static_cast<std::size_t>(threads), count);
        helpers.reserve(most);
        try {
            while (helpers.size() + 1 < most)
                helpers.emplace_back([&chunks] { chunks.takeAll(); });
        } catch (const std::system_error&) {
            // Those that have started share the work.
        }
        chunks.takeAll();
    }
    chunks.finish();
}

}  // namespace korvalite
