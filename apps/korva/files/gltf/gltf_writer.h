// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/scene.h"
#include "korva/io/input_file.h"

#include <cstdint>
#include <filesystem>

namespace korva {

/// Writes glTF 2.0: a mesh and a node for each mesh of the scene that has triangles, with a vertex
/// for each UV. Normals are computed and written if the input had them. Takes a copy of the UVs,
/// and the triangles of the scene are changed. Throws korvalite::Error(CannotWrite).

/// With the data beside the file, under its name with the suffix ".bin".
void writeGltf(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress = {});

/// In one file, of at most 4 GiB.
void writeGlb(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress = {});

/// The size of a GLB file with these contents, before they are padded. Throws
/// korvalite::Error(CannotWrite) if it is too large for the format.
[[nodiscard]] std::uint32_t glbBytes(const std::filesystem::path& path, std::uint64_t jsonBytes,
                                     std::uint64_t binaryBytes);

}  // namespace korva
