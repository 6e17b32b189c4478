// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_splits.h"
#include "korva/files/scene.h"

#include <cstdint>
#include <string>
#include <vector>

namespace korva {

/// A mesh as it is written.
struct GltfPart {
    const NamedMesh* named = nullptr;  // its triangles are indices of the vertices in `splits`
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

/// The JSON for these parts, whose positions, normals, UVs, colours and indices follow each other
/// in the buffer. `uri` is empty in a GLB file.
[[nodiscard]] GltfLayout layOutGltf(const std::vector<GltfPart>& parts, const std::string& uri);

}  // namespace korva
