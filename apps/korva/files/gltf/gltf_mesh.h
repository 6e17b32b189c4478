// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_accessor.h"
#include "korva/files/gltf/gltf_file.h"
#include "korva/files/gltf/gltf_transform.h"

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace korva {

/// Vertices of a mesh, which several primitives can share.
struct GltfVertices {
    GltfAccessor positions;
    std::optional<GltfAccessor> uvs;
    std::optional<GltfAccessor> colors;
};

enum class GltfMode { Triangles = 4, Strip = 5, Fan = 6 };

struct GltfPrimitive {
    std::size_t vertices = 0;  // index of a GltfVertices
    std::optional<GltfAccessor> indices;
    GltfMode mode = GltfMode::Triangles;
    std::size_t corners = 0;  // as the file lists them
    std::size_t triangles = 0;
};

/// A mesh of a file. Everything but the indices of its triangles has been checked.
struct GltfMesh {
    std::vector<GltfVertices> vertices;
    std::vector<GltfPrimitive> primitives;
    std::uint64_t vertexCount = 0;
    std::uint64_t triangleCount = 0;
    bool hasUVs = false;
    bool hasColors = false;
    bool hadNormals = false;
    std::size_t pointsAndLines = 0;  // primitives that are left out
    std::size_t incomplete = 0;      // primitives with a corner or two too many
};

[[nodiscard]] GltfMesh openGltfMesh(GltfFile& file, std::uint64_t index);

struct GltfWeldCounts {
    std::uint64_t joined = 0;
    std::uint64_t differing = 0;  // joined vertices whose colour is lost
};

/// Reads the triangles of all primitives, and joins vertices at equal positions. The mesh must not
/// have more than 2^31 - 1 vertices or corners.
[[nodiscard]] korvalite::Mesh readGltfMesh(const GltfFile& file, const GltfMesh& mesh,
                                           const GltfTransform& transform, GltfWeldCounts& counts);

}  // namespace korva
