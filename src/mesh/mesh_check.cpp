// SPDX-License-Identifier: MIT
#include "mesh/mesh_check.h"

#include "mesh/dmesh.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace korvalite {

bool canBeDecimated(const DMesh& mesh) {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    if (mesh.vertices.size() > kMost || mesh.triangles.size() > kMost) return false;
    const std::size_t vertexCount = mesh.vertices.size();
    return std::all_of(mesh.triangles.begin(), mesh.triangles.end(),
                       [vertexCount](std::uint32_t index) { return index < vertexCount; });
}

}  // namespace korvalite
