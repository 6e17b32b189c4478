// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace korvalite::core {

/// Data that several threads write gets cache lines of its own: a write takes the whole line away
/// from threads that only read something next to it.
inline constexpr std::size_t kCacheLine = 64;

/// Hints that the cache line at `address` will be read soon; any address is allowed.
inline void prefetch([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

}  // namespace korvalite::core
