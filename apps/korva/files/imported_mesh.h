// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <cstdint>
#include <string>
#include <vector>

namespace korva {

/// The most vertices, and the most corners, that a mesh may have: the library numbers them with 31
/// bits.
inline constexpr std::uint64_t kMostElements = 0x7FFFFFFF;

/// A mesh from a file that holds one. Polygons are split into fans of triangles from their first
/// corner.
struct ImportedMesh {
    korvalite::Mesh mesh;
    bool hadNormals = false;  // they are not kept: an output gets new ones

    /// What could not be carried over, a sentence each: "3 materials are ignored."
    std::vector<std::string> notes;
};

}  // namespace korva
