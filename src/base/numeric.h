// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <limits>

namespace korvalite::core {

/// Rounds toward zero. Values that do not fit, infinities and NaN give INT32_MIN, on every
/// processor and in every build.
constexpr std::int32_t truncateToInt32(double value) {
    if (value > -2147483649.0 && value < 2147483648.0) return static_cast<std::int32_t>(value);
    // COMPAT: a number that is too large becomes the most negative one; old jobs rely on it.
    return std::numeric_limits<std::int32_t>::min();
}

}  // namespace korvalite::core
