// SPDX-License-Identifier: MIT
//
// Repairs that do not change what a mesh looks like. All indices of the mesh must be in range.
#pragma once

#include <korvalite/korvalite.h>

#include <cstdint>

namespace korva {

struct WeldCounts {
    std::uint64_t joined = 0;     // vertices that are gone
    std::uint64_t differing = 0;  // of these, vertices with another colour or mask
};

/// Joins vertices whose positions are equal bit for bit, where -0 equals 0. The first one stays,
/// with its colour and mask, and the order is kept. UV points are not joined. Takes at most 16
/// bytes per vertex.
WeldCounts weld(korvalite::Mesh& mesh);

struct UnusableCounts {
    std::uint64_t degenerateTriangles = 0;  // have a vertex twice
    std::uint64_t duplicateTriangles =
        0;                             // the same vertices, in the same sense, as an earlier one
    std::uint64_t unusedVertices = 0;  // in no triangle that is left
};

/// Removes triangles that simplify badly, and vertices without triangles. The rest keeps its order,
/// and UV points stay. Takes 6 to 12 bytes per triangle, then 4 per vertex.
UnusableCounts removeUnusable(korvalite::Mesh& mesh);

}  // namespace korva
