// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"

#include <cstdint>
#include <vector>

namespace korvalite::core::test {

using Lists = std::vector<IndexList>;

// The corners of every vertex, in list order; empty before they are listed.
inline Lists vertexCornersOf(const DMesh& mesh) {
    Lists lists;
    if (!mesh.vertexCorners.areBuiltFor(mesh.vertices.size(), mesh.triangles.size())) return lists;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex)
        GetVertexCorners(mesh, vertex, lists.emplace_back());
    return lists;
}

}  // namespace korvalite::core::test
