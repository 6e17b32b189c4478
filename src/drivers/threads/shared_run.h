// SPDX-License-Identifier: MIT
#pragma once

#include "collapse/thread_guards.h"

#include <cstdint>

namespace korvalite {

/// What the threads of one run share besides the mesh.
struct SharedRun {
    CriticalSections sections;

    // Guarded by csQueue.
    std::uint32_t progressCount = 0;  // committed turns, including refused ones
    bool outOfMemory = false;         // a thread has run out of memory, so all must end
};

}  // namespace korvalite
