// SPDX-License-Identifier: MIT
//
// The formats that the command reads and writes, each a row of the table in file_table.cpp.
#pragma once

#include "korva/files/scene.h"
#include "korva/io/input_file.h"

#include <filesystem>
#include <span>
#include <string>

namespace korva {

struct FileKind {
    const char* suffix;
    const char* name;
    bool carriesColors;
    bool carriesMask;
    bool carriesUVs;
    bool carriesSeveral;  // meshes, with names
    double millimetre;    // in the format's unit; 1 if it has none
    Scene (*read)(const std::filesystem::path& path, const ByteProgress& progress);
    /// Leaves `scene` in any state, to save memory. Normals are computed and written if hadNormals
    /// is set and the format has them.
    void (*write)(const std::filesystem::path& path, Scene& scene, const ByteProgress& progress);
};

[[nodiscard]] std::span<const FileKind> fileKinds();

/// The kind for the suffix of a path, in either case. Throws Error(BadOption) that lists the
/// suffixes if there is none.
[[nodiscard]] const FileKind& fileKindOf(const std::filesystem::path& path);

/// The suffix of a path with its point, in lower case.
[[nodiscard]] std::string lowerSuffixOf(const std::filesystem::path& path);

/// What the format cannot carry of a scene, as a sentence; empty if it can carry everything.
[[nodiscard]] std::string lossOf(const FileKind& kind, const Scene& scene);

}  // namespace korva
