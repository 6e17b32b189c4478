// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

/// Hints that the cache line at `address` will be read soon; any address is allowed.
inline void prefetch([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

}  // namespace korvalite
