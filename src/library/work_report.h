// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>

namespace korvalite {

/// Reports to a monitor now and then how much is done, from any thread.
class WorkReport {
public:
    WorkReport(const Monitor& monitor, Phase phase, std::uint64_t total);

    /// Throws Error(Cancelled) if the monitor cancels, or what it throws; from then on, every call
    /// throws Error(Cancelled).
    void add(std::uint64_t done);

private:
    void report();

    const Monitor& monitor_;
    Phase phase_;
    std::uint64_t total_;
    std::atomic<std::uint64_t> done_ = 0;
    std::atomic<bool> isCancelled_ = false;
    std::mutex reporting_;
    std::chrono::steady_clock::time_point lastReport_;
};

/// Calls work(0) to work(count - 1), in no particular order, on up to `threads` threads; on fewer
/// if the system refuses to start them. The first exception ends the work and comes out.
void forEachChunk(std::size_t count, int threads, const std::function<void(std::size_t)>& work);

}  // namespace korvalite
