// SPDX-License-Identifier: MIT
//
// Writes the active part of a mesh as a .Vok file: vertices and triangles are compacted and
// renumbered as they go out, in the order of their arrays. Blocks, always in this order: flags,
// points, triangles, corner UVs, mask, colours, end; those of the UVs, mask and colours only if
// their arrays fit the mesh. docs/file-formats.md has every byte.
#pragma once

#include "formats/vok_format.h"
#include "mesh/dmesh.h"
#include "platform/file.h"
#include "shell/base/heap_string.h"

namespace korvalite {

/// True when the whole file is on disk and closed. On failure the file is deleted, also one that
/// could not be opened for writing, so that neither a half-written mesh nor an older one passes for
/// the new one. What is not a regular file stays.
bool exportDMesh(const HeapString& path, const DMesh& mesh);

/// The 32 bytes at the front. False on a closed file or a short write.
bool writeVokFileHeader(platform::File& file);

/// The 16 bytes in front of a payload. False on a closed file or a short write.
bool writeVokBlockHeader(platform::File& file, const VokBlockHeader& header);

}  // namespace korvalite
