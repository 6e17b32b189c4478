// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace korvalite {

/// What several threads write stands on cache lines of its own: a write takes the whole line away
/// from those that only read something beside it.
inline constexpr std::size_t kCacheLine = 64;

}  // namespace korvalite
