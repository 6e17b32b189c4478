// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace korvalite::core {

/// The longest text: a sign, 39 digits, the decimal point and nine decimals.
inline constexpr std::size_t kLongestNineDecimals = 50;

/// Writes the number exactly as printf's "%.9f" does in the "C" locale, but several times faster.
/// Returns the end of the text, which is not zero-terminated.
/// REQUIRES: room for kLongestNineDecimals characters at `out`.
char* appendNineDecimals(char* out, float value);

}  // namespace korvalite::core
