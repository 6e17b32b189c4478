// SPDX-License-Identifier: MIT
//
// The formats of mesh files, each a row of the table in file_formats.cpp.
#pragma once

#include "base/heap_string.h"

#include <cstdint>
#include <functional>

namespace korvalite::core {

struct ProgressiveMesh;

enum class FileContent { None, Mesh, ProgressiveMesh };

/// The vertex count to load of a progressive mesh that has `vertexCount`.
using WantedVertices = std::function<std::int32_t(std::uint32_t vertexCount)>;

struct FileFormat {
    const char* suffix;
    FileContent content;

    /// Reads a file into a fresh `pm`, no more of a progressive mesh than wanted. False if it
    /// cannot be read, or if no driver can work on the mesh.
    bool (*read)(const HeapString& path, ProgressiveMesh& pm, const WantedVertices& wanted);

    /// Writes the file at the current level. True unless the writer failed. `versionCode` is the
    /// job's.
    bool (*write)(const HeapString& path, ProgressiveMesh& pm, std::int32_t versionCode);
};

/// The format for the suffix of a path, ignoring case. The format of an unknown suffix has no
/// content, reads nothing and writes nothing.
const FileFormat& fileFormatOf(const HeapString& path);

}  // namespace korvalite::core
