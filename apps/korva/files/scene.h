// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <cstddef>
#include <string>
#include <vector>

namespace korva {

struct NamedMesh {
    std::string name;  // empty if the format has no names
    korvalite::Mesh mesh;
};

/// What a file holds. Several meshes are simplified one by one and stay apart.
struct Scene {
    std::vector<NamedMesh> meshes;  // at least one
    bool hadNormals = false;        // they are not kept: an output gets new ones

    /// What could not be carried over, a sentence each: "3 materials are ignored."
    std::vector<std::string> notes;

    [[nodiscard]] std::size_t vertexCount() const;
    [[nodiscard]] std::size_t triangleCount() const;
};

/// Makes one mesh of them, in their order, and leaves them empty. If some have colours, a mask or
/// UVs and others do not, these become white, get mask 255 or the UV (0, 0).
[[nodiscard]] korvalite::Mesh joinMeshes(std::vector<NamedMesh>& meshes);

}  // namespace korva
