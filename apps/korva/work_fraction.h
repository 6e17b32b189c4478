// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

namespace korva {

/// How far a call of the library is, from 0 to 1. The shares are those of a usual run.
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

}  // namespace korva
