// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>

namespace korva {

/// Calls `work` for each index below `count`, from up to `threads` threads at once. Rethrows the
/// first exception, after which no further index is started.
void shareWork(std::size_t count, int threads, const std::function<void(std::size_t)>& work);

}  // namespace korva
