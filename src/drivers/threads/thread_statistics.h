// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

namespace korvalite {

/// The turns of one thread and its times, which are measured only if
/// ProgressiveMesh::measureThreads is set.
struct ThreadStatistics {
    std::uint64_t turns = 0;
    std::uint64_t candidates = 0;  // vertices tried for picks; a turn takes at most one
    double secondsWaiting = 0;     // for csQueue
    double secondsInQueue = 0;     // while holding csQueue
    double secondsInLoop = 0;      // in total
};

/// Adds its lifetime to `seconds`; measures nothing if that is null.
class TimeTaken {
public:
    explicit TimeTaken(double* seconds) : seconds_(seconds) {
        if (seconds_ != nullptr) begin_ = Clock::now();
    }
    ~TimeTaken() {
        if (seconds_ != nullptr)
            *seconds_ += std::chrono::duration<double>(Clock::now() - begin_).count();
    }
    TimeTaken(const TimeTaken&) = delete;
    TimeTaken& operator=(const TimeTaken&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    double* seconds_;
    Clock::time_point begin_;
};

}  // namespace korvalite
