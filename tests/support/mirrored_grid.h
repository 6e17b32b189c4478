// SPDX-License-Identifier: MIT
#pragma once

#include "support/prepared_mesh.h"
#include "symmetry/compute_symmetry.h"

#include <cstdint>
#include <vector>

namespace korvalite::core::test {

// 4 x 4 hilly squares to the right of the plane x = 0 and their mirror image, paired and with
// symmetry handled. Vertex (c, r) of the right half has the index 5 r + c; those of column 0 are on
// the plane. There are no slaves yet.
struct MirroredGrid {
    ProgressiveMesh pm;
    std::vector<std::int32_t> mirrorOf;

    MirroredGrid() {
        prepare(pm, withMirrorImage(grid(4, 4, hills), 0, &mirrorOf));
        auto& cache = pm.mesh.symmetryCache;
        cache.pairing = mirrorOf;
        cache.planeNormal = {1, 0, 0};
        cache.planePoint = {0, 0, 0};
        buildTransforms(cache.planeProjection, cache.mirrorTransform, cache.planeNormal,
                        cache.planePoint);
        cache.secondSide.Resize(pm.mesh.vertexCount(), false);
        for (std::int32_t v = 0; v < pm.mesh.vertexCount(); ++v)
            cache.secondSide.Assign(v, position(v).x > 0);
        pm.handleSymmetry = true;
        pm.m_handleSymmetry_internal = true;
    }
    static constexpr std::int32_t at(std::int32_t column, std::int32_t row) {
        return 5 * row + column;
    }
    [[nodiscard]] FloatVec3 position(std::int32_t v) const {
        return pm.mesh.vertices[static_cast<std::size_t>(v)].position();
    }
    [[nodiscard]] std::int32_t image(std::int32_t v) const {
        return mirrorOf[static_cast<std::size_t>(v)];
    }
    void pair(std::int32_t v, std::int32_t with) {
        pm.mesh.symmetryCache.pairing[static_cast<std::size_t>(v)] = with;
    }
    void unpair(std::int32_t v) { pair(v, kNone); }
};

}  // namespace korvalite::core::test
