// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/io/input_file.h"

#include <filesystem>

namespace korva {

/// Reads a binary or text STL file. Corners at equal points become one vertex, as with weld(). The
/// solids of a text file become one mesh. Normals and the attributes of facets are ignored.
ImportedMesh readStl(const std::filesystem::path& path, const ByteProgress& progress = {});

}  // namespace korva
