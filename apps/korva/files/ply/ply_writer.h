// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"

#include <korvalite/korvalite.h>

#include <filesystem>
#include <span>

namespace korva {

/// Writes a binary little-endian PLY file: colours as uchar, the mask as "quality", UVs as the list
/// "texcoord" of each face. Normals, if there are any, are one per vertex. The mesh must be
/// consistent. Throws korvalite::Error(CannotWrite).
void writePly(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              std::span<const float> normals = {}, const ByteProgress& progress = {});

}  // namespace korva
