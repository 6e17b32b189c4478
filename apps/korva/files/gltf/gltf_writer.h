// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/scene.h"
#include "korva/io/input_file.h"

#include <cstdint>
#include <filesystem>

namespace korva {

// Both functions write glTF 2.0: a mesh and a node for each mesh of the scene that has triangles,
// with a vertex for each UV. If the input had normals, new ones are computed and written. The scene
// is changed: its triangles then refer to the vertices in the file, and its UVs are gone. Takes
// memory for a copy of the UVs. Throws korvalite::Error(CannotWrite).

/// Writes the data into a second file of the same name with the suffix ".bin".
void writeGltf(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress = {});

/// Writes one file of at most 4 GiB.
void writeGlb(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress = {});

/// The size of a GLB file with this much JSON, not yet padded, and binary data. Throws
/// korvalite::Error(CannotWrite) if it is too large for the format.
[[nodiscard]] std::uint32_t glbBytes(const std::filesystem::path& path, std::uint64_t jsonBytes,
                                     std::uint64_t binaryBytes);

}  // namespace korva
