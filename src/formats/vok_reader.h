// SPDX-License-Identifier: MIT
//
// Reads a .Vok file: a tolerant walk over tagged blocks. It takes what it knows, skips the rest,
// and treats almost everything short of an unreadable header as a normal end of input. Quads are
// split on the way in. No index is tested against the number of vertices.
#pragma once

#include "formats/vok_format.h"
#include "mesh/dmesh.h"
#include "platform/file.h"
#include "shell/base/heap_string.h"

#include <cstdint>

namespace korvalite {

inline constexpr std::int64_t kVokBytesBeyondFile = 256 * 1024 * 1024;

/// Fills an empty mesh, with every vertex and triangle active. After it `coordsUV` holds three
/// pairs for each triangle, and `indicesUV` is as before.
///
/// False if the file cannot be opened or has another header, with the mesh untouched. Also false,
/// with the mesh half filled, if the counts of its blocks ask for more than `bytesBeyondFile` bytes
/// that the file does not hold, or for more than 2^31 - 1 triangle corners: what is missing of a
/// list is zero, but not to the point where a few bytes take all memory or hours.
bool importDMesh(const HeapString& path, DMesh& mesh,
                 std::int64_t bytesBeyondFile = kVokBytesBeyondFile);

/// True if all 32 bytes came and the magic is right. False on a closed file.
bool readVokFileHeader(platform::File& file);

/// True if all 16 bytes came. False on a closed file.
bool readVokBlockHeader(platform::File& file, VokBlockHeader& header);

/// Empties `maskValues` if all its bytes are equal: such a mask says nothing.
void dropUniformMask(DMesh& mesh);

}  // namespace korvalite
