// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/io/input_file.h"

#include <filesystem>

namespace korva {

/// Reads a Wavefront OBJ file: vertices with colours, UV points and faces. Colours follow the
/// coordinates, as three or four more numbers from 0 to 1, or from 0 to 255 if any in the file is 2
/// or more. A corner without a UV gets (0, 0) if other corners have one. A number too small for a
/// float becomes 0.
///
/// Throws korvalite::Error(CannotRead), which names the line, if the file is not OBJ or is damaged.
/// Memory beyond the mesh: at most the longest of its arrays while that grows. The progress starts
/// again when the first colour up to 255 is found, because the file is then read again.
ImportedMesh readObj(const std::filesystem::path& path, const ByteProgress& progress = {});

}  // namespace korva
