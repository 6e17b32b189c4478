// SPDX-License-Identifier: MIT
#pragma once

#include "formats/kvm_header.h"
#include "shell/base/heap_string.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

/// The header alone, to turn a percentage into a vertex count before the load. False only if the
/// file cannot be opened.
bool readProgMeshFileHeader(const HeapString& path, ProgMeshHeader& header);

/// Loads a progressive mesh (.kvm), at the level where it was saved. With wantedVertices above 0
/// and a reordered file only the vertices and splits of that level are read (a partial load): the
/// level update can then move within those splits. Triangles and all other arrays are always read
/// in full.
///
/// 0 for done, 1 if the file cannot be opened or its content cannot be worked on safely: counts
/// that the file could never fill, activity that does not fit the counts, indices out of range. A
/// file that ends within its splits gives those that are whole.
int loadProgressiveMesh(ProgressiveMesh& pm, const HeapString& path, std::int32_t wantedVertices);

}  // namespace korvalite
