// SPDX-License-Identifier: MIT
#pragma once

#include "shell/base/heap_string.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

enum class OutputKind { None, Mesh, Progressive };

/// What the suffix of an output file asks for, letter case ignored; None for a suffix that nothing
/// is written for. ".stl" is a Mesh, though SaveOutput makes no file of it.
OutputKind outputKindOf(const HeapString& path);

/// Writes the mesh in the format of the path's suffix. True unless a writer failed. `versionCode`
/// is that of the job.
bool SaveOutput(const HeapString& path, ProgressiveMesh& pm, std::int32_t versionCode);

}  // namespace korvalite
