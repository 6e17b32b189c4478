// SPDX-License-Identifier: MIT
//
// Reads a .Vok file: a tolerant walk over tagged blocks. It reads the blocks it knows, skips the
// rest, and treats almost everything short of an unreadable header as a normal end of input. Quads
// are split while reading. Indices are not checked against the number of vertices.
#pragma once

#include "base/heap_string.h"
#include "formats/vok_format.h"
#include "mesh/dmesh.h"
#include "platform/file.h"

#include <cstdint>

namespace korvalite::core {

inline constexpr std::int64_t kVokBytesBeyondFile = std::int64_t{256} << 20U;

/// Fills an empty mesh and makes every vertex and triangle active. `coordsUV` then holds three
/// pairs per triangle; `indicesUV` is unchanged.
///
/// False, with the mesh untouched, if the file cannot be opened or has the wrong header. Also
/// false, with the mesh half filled, if the counts of its blocks ask for more than
/// `bytesBeyondFile` bytes that the file does not hold, or for more than 2^31 - 1 triangle corners.
/// The missing part of a list is filled with zeros, and the limit keeps a tiny file from using up
/// all memory or hours of time.
bool importDMesh(const HeapString& path, DMesh& mesh,
                 std::int64_t bytesBeyondFile = kVokBytesBeyondFile);

/// True if all 32 bytes were read and the magic is correct. False on a closed file.
bool readVokFileHeader(platform::File& file);

/// True if all 16 bytes were read. False on a closed file.
bool readVokBlockHeader(platform::File& file, VokBlockHeader& header);

}  // namespace korvalite::core
