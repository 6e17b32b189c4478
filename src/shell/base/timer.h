// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite {

/// Elapsed time by the high-resolution counter. The length of a tick is asked for once in the
/// process, by the first Timer, which is made on the main thread.
class Timer {
public:
    Timer();

    void start();

    /// Since start(), or since the counter's zero if it was never started; 0 if the system has no
    /// such counter.
    [[nodiscard]] double elapsedSeconds() const;

private:
    std::int64_t startTicks_ = 0;
};

}  // namespace korvalite
