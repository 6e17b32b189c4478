// SPDX-License-Identifier: MIT
#pragma once

#include "base/heap_string.h"

namespace korvalite::core {

/// Executes one whole run. `commandTail` is the path of the job file, unprocessed; a path that does
/// not end in ".kvc" runs no job. Always returns 0: the host learns the result from the output
/// files. Always deletes the marker file, JOB.running, and the files that the job says to delete.
///
/// Call once per process, on the main thread.
int runKorvalite(const HeapString& commandTail);

}  // namespace korvalite::core
