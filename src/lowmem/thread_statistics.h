// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

namespace korvalite {

/// Where the turns of one thread went, and its time, which is taken only where
/// ProgressiveMesh::measureThreads asks for it.
struct ThreadStatistics {
    std::uint64_t turns = 0;
    std::uint64_t candidates = 0;  // looked at for a pick; all but one a turn were passed over
    double secondsWaiting = 0;     // for csQueue
    double secondsInQueue = 0;     // with csQueue held
    double secondsInLoop = 0;      // all included
};

/// Adds the time of its own life to `seconds`; takes none for null.
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
