// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_item.h"
#include "korva/files/gltf/gltf_transform.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korva {

/// A mesh at a place in the scene.
struct GltfInstance {
    std::uint64_t mesh = 0;
    std::string name;  // of the node; may be empty
    GltfTransform transform;
};

struct GltfInstances {
    std::vector<GltfInstance> instances;  // parents before children
    std::size_t elsewhere = 0;            // nodes with meshes that are not in the scene
};

/// The meshes of the default scene, or else of the first scene, or else of all nodes. Without
/// nodes, all meshes. Throws korvalite::Error(CannotRead) if the nodes do not form a forest.
[[nodiscard]] GltfInstances gltfInstances(const GltfItem& root);

}  // namespace korva
