// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::core {

/// Elapsed time from the high-resolution counter. The first Timer queries the length of a tick,
/// once per process. REQUIRES: the first Timer is created on the main thread.
class Timer {
public:
    Timer();

    void start();

    /// The time since start(), or since the counter's zero if it was never called; 0 if the system
    /// has no such counter.
    [[nodiscard]] double elapsedSeconds() const;

private:
    std::int64_t startTicks_ = 0;
};

}  // namespace korvalite::core
