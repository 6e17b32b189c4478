// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/io/input_file.h"

#include <filesystem>

namespace korva {

/// Reads a text OFF file: [ST][C][N]OFF in any order. Colours are from 0 to 1 if none in the file
/// is above 1, and otherwise from 0 to 255.
ImportedMesh readOff(const std::filesystem::path& path, const ByteProgress& progress = {});

}  // namespace korva
