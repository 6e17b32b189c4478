// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/scene.h"
#include "korva/io/input_file.h"

#include <filesystem>

namespace korva {

/// Reads a glTF 2.0 file, as JSON or GLB. Each node with a mesh becomes a mesh of its own, at its
/// place in the scene. Vertices of a mesh that are at equal positions are joined, since glTF needs
/// several where UVs or normals differ. Takes memory for the buffers and the meshes, and 8 to 20
/// bytes more per vertex. Throws korvalite::Error(CannotRead).
[[nodiscard]] Scene readGltf(const std::filesystem::path& path, const ByteProgress& progress = {});

}  // namespace korva
