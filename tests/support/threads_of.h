// SPDX-License-Identifier: MIT
#pragma once

#include "drivers/threads/thread_context.h"
#include "progressive/progressive_mesh.h"

#include <memory>

namespace korvalite::core::test {

// The state of the driver on threads, which is made if there was no run yet.
inline ThreadsState& threadsOf(ProgressiveMesh& pm) {
    if (!pm.threads) pm.threads = std::make_shared<ThreadsState>();
    return *pm.threads;
}
inline const ThreadsState& threadsOf(const ProgressiveMesh& pm) {
    static const ThreadsState none;
    return pm.threads ? *pm.threads : none;
}

}  // namespace korvalite::core::test
