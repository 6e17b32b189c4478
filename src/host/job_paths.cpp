// SPDX-License-Identifier: MIT
#include "host/job_paths.h"

namespace korvalite::core {

namespace {

HeapString jobDirectory;
HeapString currentMeshName;

}  // namespace

void SetJobDirectory(const HeapString& path) {
    jobDirectory = path;
    const std::int32_t last = path.length() - 1;
    if (path.FindLastOf("/\\") == last) jobDirectory.cutAt(last);
}

const HeapString& JobDirectory() {
    return jobDirectory;
}

void SetCurrentMeshName(const HeapString& name) {
    currentMeshName = name;
}

const HeapString& CurrentMeshName() {
    return currentMeshName;
}

}  // namespace korvalite::core
