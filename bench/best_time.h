// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace korvalite::core::bench {

/// The best of several measurements, in wall seconds: the one that other work on the machine
/// disturbed least.
class BestTime {
public:
    template <typename Work>
    void measure(Work work) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        seconds_ = std::min(seconds_, taken.count());
    }
    [[nodiscard]] double seconds() const { return seconds_; }

private:
    double seconds_ = std::numeric_limits<double>::infinity();
};

}  // namespace korvalite::core::bench
