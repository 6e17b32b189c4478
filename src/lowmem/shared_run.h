// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/thread_guards.h"

#include <cstdint>

namespace korvalite {

/// What the threads of one run share beside the mesh.
struct SharedRun {
    CriticalSections sections;

    // Under csQueue.
    std::uint32_t progressCount = 0;  // turns committed, refused ones too
    bool outOfMemory = false;         // a thread has found no memory: the others end too
};

}  // namespace korvalite
