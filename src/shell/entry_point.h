// SPDX-License-Identifier: MIT
#pragma once

#include "shell/base/heap_string.h"

namespace korvalite {

/// One whole run. `commandTail` is the path of the job file as it stands; a path that does not end
/// in ".kvc" does nothing. Always 0: the host learns the result from the output files. Deletes the
/// marker file, JOB.running, in any case, and the files that the job says to delete.
///
/// Once per process, on the main thread.
int runKorvalite(const HeapString& commandTail);

}  // namespace korvalite
