// SPDX-License-Identifier: MIT
#pragma once

#include "base/heap_string.h"
#include "formats/kvm_format.h"

#include <cstdint>

namespace korvalite::core {

struct ProgressiveMesh;

/// Reads only the header, to turn a percentage into a vertex count before loading. False only if
/// the file cannot be opened.
bool readProgMeshFileHeader(const HeapString& path, ProgMeshHeader& header);

/// Loads a progressive mesh (.kvm) at the level at which it was saved. If wantedVertices is above 0
/// and the file is reordered, reads only the vertices and splits of that level (a partial load);
/// the level update can then move within those splits. Triangles and all other arrays are always
/// read in full.
///
/// Returns 0 on success, 1 if the file cannot be opened or its content is not safe to use: counts
/// that the file cannot fill, active bits that do not match the counts, indices out of range. From
/// a file that ends within its splits, loads the complete ones.
int loadProgressiveMesh(ProgressiveMesh& pm, const HeapString& path, std::int32_t wantedVertices);

}  // namespace korvalite::core
