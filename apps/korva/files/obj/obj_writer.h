// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"

#include <korvalite/korvalite.h>

#include <filesystem>
#include <span>

namespace korva {

/// Writes a Wavefront OBJ file: vertices, UV points and triangles. Colours follow the coordinates,
/// red, green and blue from 0 to 1. Reading it gives the same floats and colours; OBJ has no place
/// for the mask and for alpha. UV points are left out if the triangles have none. Normals, if there
/// are any, are one per vertex.
///
/// Throws korvalite::Error(CannotWrite).
void writeObj(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              std::span<const float> normals = {}, const ByteProgress& progress = {});

}  // namespace korva
