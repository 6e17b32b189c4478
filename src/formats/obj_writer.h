// SPDX-License-Identifier: MIT
//
// Writes the active part of a mesh as a Wavefront OBJ text file: vertices, colours, UVs and faces,
// compacted and renumbered in the order of their arrays. docs/file-formats.md has every line.
#pragma once

#include "base/heap_string.h"
#include "mesh/dmesh.h"

#include <cstdint>

namespace korvalite::core {

/// Where to put colours and mask, which OBJ has no place for.
enum class ObjColorMode : std::int32_t {
    None = 0,
    Embedded = 1,   // "#MRGB" comment lines inside the file, for newer hosts
    SideFiles = 2,  // PATH.colors and PATH.mask, for older ones
};

/// False if the OBJ cannot be opened. Nothing else counts as a failure: a side file that cannot be
/// opened is skipped, and writes are not checked. Line ends are the platform's own.
bool saveObj(const HeapString& path, const DMesh& mesh, ObjColorMode colorMode);

}  // namespace korvalite::core
