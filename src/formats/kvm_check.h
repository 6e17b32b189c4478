// SPDX-License-Identifier: MIT
//
// What stands between a .kvm file and the level update. Any file of the layout passes; what is
// refused cannot be worked on without reading or writing outside of the arrays.
#pragma once

#include "formats/kvm_header.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

/// Whether a file with so many bytes behind its header could fill the arrays that the header asks
/// for, give or take 256 MiB: no more memory is taken on its word. A negative `bytesLeft` (no
/// ordinary file) passes with that allowance alone.
bool couldFill(const ProgMeshHeader& header, std::int64_t bytesLeft);

/// Whether every index that the mesh and its splits hold is in range. Walks the list of splits once
/// and leaves it where it was for a list in memory.
bool canChangeLevel(ProgressiveMesh& pm);

}  // namespace korvalite
