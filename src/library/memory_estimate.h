// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite {

/// What the memory of a run depends on.
struct MeshSize {
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t uvPoints = 0;
    bool hasColors = false;
    bool hasMask = false;
    bool hasUVs = false;
};

/// MeshCheck::memoryBytes for a mesh of that size.
[[nodiscard]] std::uint64_t estimateSimplifyBytes(const MeshSize& size);

}  // namespace korvalite
