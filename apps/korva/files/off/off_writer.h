// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"

#include <korvalite/korvalite.h>

#include <filesystem>

namespace korva {

/// Writes positions and triangles as OFF, or as COFF with colours from 0 to 255 if the mesh has
/// any.
void writeOff(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress = {});

}  // namespace korva
