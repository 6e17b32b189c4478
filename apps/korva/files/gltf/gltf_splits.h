// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korva {

/// The vertices of a mesh in a file format with one UV for each. Those of the mesh come first; the
/// others repeat vertices whose corners have different UVs.
struct GltfSplits {
    std::vector<std::uint32_t> repeated;  // the vertex of the mesh that each of the others repeats
    std::vector<std::uint32_t> uvPoints;  // of each vertex if there are UVs: a point of `uvs`
    std::vector<float> uvs;               // u and v of each point
};

/// Makes the triangles of the mesh refer to these vertices, and removes its UVs.
[[nodiscard]] GltfSplits splitForGltf(korvalite::Mesh& mesh);

}  // namespace korva
