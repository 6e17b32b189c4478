// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/io/input_file.h"

#include <filesystem>

namespace korva {

/// Reads and writes `.Vok` files with the core's reader and writer.
[[nodiscard]] ImportedMesh readVok(const std::filesystem::path& path,
                                   const ByteProgress& progress = {});
void writeVok(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress = {});

}  // namespace korva
