// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/io/input_file.h"

#include <filesystem>

namespace korva {

/// Reads a PLY file, in text or binary of either byte order: positions, colours and UVs of
/// vertices, faces and triangle strips, UVs of corners (the list "texcoord" of a face), and the
/// vertices' "mask" or "quality" as a mask. Throws korvalite::Error(CannotRead).
[[nodiscard]] ImportedMesh readPly(const std::filesystem::path& path,
                                   const ByteProgress& progress = {});

}  // namespace korva
