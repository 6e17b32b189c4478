// SPDX-License-Identifier: MIT
#pragma once

#include "shell/base/heap_string.h"

namespace korvalite {

struct ProgressiveMesh;

/// Writes a progressive mesh (.kvm) at the level where it stands: the header and, unless another
/// than the low-memory drivers made it, nine sections. 0 for done, 1 if the file cannot be opened.
/// Writes are not checked: a full disk leaves a short file and gives 0.
int saveProgressiveMesh(ProgressiveMesh& pm, const HeapString& path);

}  // namespace korvalite
