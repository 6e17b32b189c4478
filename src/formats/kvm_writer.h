// SPDX-License-Identifier: MIT
#pragma once

#include "base/heap_string.h"

namespace korvalite::core {

struct ProgressiveMesh;

/// Writes a progressive mesh (.kvm) at its current level: the header and, if a low-memory driver
/// made the mesh, nine sections. Returns 0 on success, 1 if the file cannot be opened. Writes are
/// not checked: a full disk leaves a short file and still returns 0.
int saveProgressiveMesh(ProgressiveMesh& pm, const HeapString& path);

/// The same file, but true only if all of it reached the system. An incomplete file is deleted; if
/// the file cannot be opened, an older one of that name stays.
bool writeProgressiveMesh(ProgressiveMesh& pm, const HeapString& path);

}  // namespace korvalite::core
