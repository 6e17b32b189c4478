// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_splits.h"
#include "korva/files/scene.h"

#include <cstdint>
#include <string>
#include <vector>

namespace korva {

/// A mesh, ready to be written.
struct GltfPart {
    const NamedMesh* named = nullptr;  // its triangles refer to the vertices in `splits`
    GltfSplits splits;
    std::vector<float> normals;  // of the vertices of the mesh, or empty

    [[nodiscard]] const korvalite::Mesh& mesh() const { return named->mesh; }
    [[nodiscard]] std::uint64_t vertexCount() const {
        return mesh().vertexCount() + splits.repeated.size();
    }
    [[nodiscard]] bool hasShortIndices() const { return vertexCount() < 65535; }
    [[nodiscard]] std::uint64_t indexBytes() const {  // with padding
        return hasShortIndices() ? (2 * mesh().triangles.size() + 3) / 4 * 4
                                 : 4 * mesh().triangles.size();
    }
};

struct GltfLayout {
    std::string json;
    std::uint64_t binaryBytes = 0;
};

/// The JSON for these parts. In the buffer, each has its positions, normals, UVs, colours and
/// indices, in this order. `uri` is empty in a GLB file.
[[nodiscard]] GltfLayout layOutGltf(const std::vector<GltfPart>& parts, const std::string& uri);

}  // namespace korva
