// SPDX-License-Identifier: MIT
//
// The two process-wide names of a job. They may only be changed on the main thread and between
// decimation runs.
#pragma once

#include "base/heap_string.h"

namespace korvalite::core {

/// The folder of the job file, for scratch files. Removes one `/` or `\` at the end of `path`.
void SetJobDirectory(const HeapString& path);
const HeapString& JobDirectory();

/// The name of the current mesh in progress texts.
void SetCurrentMeshName(const HeapString& name);
const HeapString& CurrentMeshName();

}  // namespace korvalite::core
