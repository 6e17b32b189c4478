// SPDX-License-Identifier: MIT
//
// Writes the active part of a mesh as a .Vok file: vertices and triangles are compacted and
// renumbered in the order of their arrays. The blocks, always in this order: flags, points,
// triangles, corner UVs, mask, colours, end. UVs, mask and colours are written only if their arrays
// match the mesh. docs/file-formats.md has every byte.
#pragma once

#include "base/heap_string.h"
#include "formats/vok_format.h"
#include "mesh/dmesh.h"
#include "platform/file.h"

namespace korvalite::core {

/// True when the whole file is on disk and closed. On failure the file is deleted, even if it could
/// not be opened for writing, so neither a half-written nor an older mesh passes for the new one.
/// Anything but a regular file is left alone.
bool exportDMesh(const HeapString& path, const DMesh& mesh);

/// Writes the first 32 bytes. False on a closed file or a short write.
bool writeVokFileHeader(platform::File& file);

/// Writes the 16 bytes before a payload. False on a closed file or a short write.
bool writeVokBlockHeader(platform::File& file, const VokBlockHeader& header);

}  // namespace korvalite::core
