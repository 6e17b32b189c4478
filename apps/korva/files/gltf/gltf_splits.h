// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korva {

/// The vertices of a mesh in a file that has one UV for each. Those of the mesh come first; the
/// others repeat some of them where their corners have different UVs.
struct GltfSplits {
    std::vector<std::uint32_t> repeated;  // vertex of the mesh, for each further one
    std::vector<std::uint32_t> uvPoints;  // of each vertex, if there are UVs: an index into uvs
    std::vector<float> uvs;               // u and v of each point
};

/// Changes the triangles of the mesh to the indices of these vertices, and leaves it without UVs.
[[nodiscard]] GltfSplits splitForGltf(korvalite::Mesh& mesh);

}  // namespace korva
