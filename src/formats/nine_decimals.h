// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace korvalite {

/// The longest text: a sign, 39 digits, the point and nine decimals.
inline constexpr std::size_t kLongestNineDecimals = 50;

/// Writes the number as printf's "%.9f" does in the "C" locale, byte for byte and several times
/// faster, and gives the place behind it. No zero byte is added.
/// REQUIRES: room for kLongestNineDecimals characters at `out`.
char* appendNineDecimals(char* out, float value);

}  // namespace korvalite
