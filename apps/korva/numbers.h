// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korva {

/// The number with commas: 1,234,567.
[[nodiscard]] std::string withCommas(std::uint64_t number);

/// The number with at most `digits` significant digits, without trailing zeros: 0.0123.
[[nodiscard]] std::string withDigits(double number, int digits = 3);

}  // namespace korva
