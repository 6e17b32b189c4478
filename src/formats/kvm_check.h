// SPDX-License-Identifier: MIT
//
// The checks between a .kvm file and the level update. They pass any file with a valid layout and
// refuse only files that would make the update read or write out of bounds.
#pragma once

#include "formats/kvm_format.h"

#include <cstdint>

namespace korvalite::core {

struct ProgressiveMesh;

/// Whether a file with `bytesLeft` bytes after its header could fill the arrays that the header
/// asks for, with an allowance of 256 MiB: a false header cannot make the reader allocate more than
/// that. A negative `bytesLeft` (not a regular file) counts as 0.
bool couldFill(const ProgMeshHeader& header, std::int64_t bytesLeft);

/// Whether every index in the mesh and its splits is in range. Walks the list of splits once; a
/// list in memory stays at the same position.
bool canChangeLevel(ProgressiveMesh& pm);

}  // namespace korvalite::core
