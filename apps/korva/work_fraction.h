// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <algorithm>
#include <cstdint>

namespace korva {

/// How far a call of the library is, from 0 to 1. The shares are those of a typical run.
[[nodiscard]] inline double fractionOf(const korvalite::Progress& progress) {
    const double done = progress.total == 0 ? 0
                                            : static_cast<double>(progress.done) /
                                                  static_cast<double>(progress.total);
    switch (progress.phase) {
    case korvalite::Phase::Analysing: return 0.15 * done;
    case korvalite::Phase::Simplifying: return 0.15 + 0.83 * done;
    case korvalite::Phase::Reordering: return 0.98 + 0.02 * done;
    case korvalite::Phase::ChangingLevel:
    case korvalite::Phase::Measuring: return done;
    }
    return done;
}

/// The monitor of a call that is the share from `from` to `to` of the work that `whole` watches.
[[nodiscard]] inline korvalite::Monitor shareOf(const korvalite::Monitor& whole, double from,
                                                double to) {
    if (!whole) return {};
    return [=](const korvalite::Progress& progress) {
        constexpr std::uint64_t kSteps = 10000;
        const double fraction = from + (to - from) * std::min(fractionOf(progress), 1.0);
        // Of all phases, this one counts its steps alone.
        return whole({.phase = korvalite::Phase::Measuring,
                      .done = static_cast<std::uint64_t>(fraction * kSteps),
                      .total = kSteps});
    };
}

}  // namespace korva
