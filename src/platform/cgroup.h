// SPDX-License-Identifier: MIT
//
// Limits on the memory of a group of processes, such as a container, as Linux has them.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace korvalite::core::platform {

constexpr std::uint64_t kNoMemoryLimit = std::numeric_limits<std::uint64_t>::max();

// The bytes that the control groups of this process, version 1 or 2, still let it take; this
// includes what the system would give up from its caches of files. kNoMemoryLimit if there are
// none. `root` is put before the paths of the system, for tests.
std::uint64_t memoryLeftInGroups(const std::string& root = {});

}  // namespace korvalite::core::platform
