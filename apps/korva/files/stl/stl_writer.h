// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"

#include <korvalite/korvalite.h>

#include <filesystem>

namespace korva {

/// Writes positions and triangles as binary STL. Triangles get unit normals, 0 0 0 if they have no
/// area.
void writeStl(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress = {});

}  // namespace korva
