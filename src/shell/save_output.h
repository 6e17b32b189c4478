// SPDX-License-Identifier: MIT
#pragma once

#include "base/heap_string.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

enum class OutputKind { None, Mesh, Progressive };

/// The kind of output for the suffix of a path, ignoring case; None for an unknown suffix. ".stl"
/// is a Mesh, although SaveOutput does not write it.
OutputKind outputKindOf(const HeapString& path);

/// Writes the mesh in the format given by the path's suffix. True unless a writer failed.
/// `versionCode` is the job's.
bool SaveOutput(const HeapString& path, ProgressiveMesh& pm, std::int32_t versionCode);

}  // namespace korvalite
