// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/scene.h"
#include "korva/io/input_file.h"

#include <filesystem>
#include <string>

namespace korva {

/// What is done to a mesh after it is read.
struct InputOptions {
    bool weld = false;   // join vertices at the same place
    bool repair = true;  // remove what cannot be simplified or has no effect
    bool colors = true;  // false leaves them out
    bool mask = true;
    bool uvs = true;
    std::string maskSource;  // see setMask; if empty, the mask of the file stays
};

/// Reads a file by its suffix and prepares its meshes. `notes` has a sentence for each
/// thing that was changed or lost. Throws Error(CannotRead) or, for an unknown suffix,
/// Error(BadOption).
[[nodiscard]] Scene loadScene(const std::filesystem::path& path, const InputOptions& options,
                              const ByteProgress& progress = {});

/// Throws Error(BadMesh) if there is nothing to simplify.
void requireTriangles(const Scene& scene, const std::filesystem::path& path);

/// Writes a file by its suffix, and may change the scene. Returns a sentence that says what the
/// format cannot carry, or an empty one.
std::string saveScene(const std::filesystem::path& path, Scene& scene,
                      const ByteProgress& progress = {});

}  // namespace korva
