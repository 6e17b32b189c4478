// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_item.h"

#include <array>
#include <cstddef>

namespace korva {

/// An affine map: three rows of four numbers.
struct GltfTransform {
    std::array<double, 12> rows{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

    bool operator==(const GltfTransform&) const = default;
};

/// The transform of a node relative to its parent.
[[nodiscard]] GltfTransform transformOf(const GltfItem& node);

/// Applies `second`, then `first`.
[[nodiscard]] GltfTransform operator*(const GltfTransform& first, const GltfTransform& second);

/// Whether the transform turns a surface inside out.
[[nodiscard]] bool isMirroring(const GltfTransform& transform);

/// Moves points of three floats each. The identity changes no bits.
void applyTransform(const GltfTransform& transform, float* points, std::size_t count);

}  // namespace korva
