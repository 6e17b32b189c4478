// SPDX-License-Identifier: MIT
#include "ranking/next_collapse_prefetch.h"

#include "base/cache.h"

namespace korvalite::core {

void NextCollapsePrefetch::lists(const DMesh& mesh, std::int32_t next) {
    pair_.clear();
    if (next == kNone) return;
    pair_.push_back(next);
    const std::int32_t partner = mesh.vertices[next].partner;
    if (partner != kNone) pair_.push_back(partner);
    for (const std::int32_t vertex : pair_) {
        prefetch(&mesh.vertexCorners.run(vertex));
        prefetch(&mesh.vertices[vertex]);
    }
}

void NextCollapsePrefetch::triangles(const DMesh& mesh) const {
    warmVertexCorners(mesh, pair_);
}

void NextCollapsePrefetch::ring(const DMesh& mesh) {
    ring_.clear();
    for (const std::int32_t vertex : pair_) {
        mesh.vertexActive.prefetchBit(vertex);
        mesh.borderVertices.prefetchBit(vertex);
        forEachCorner(mesh, vertex, [&](std::int32_t corner) {
            const std::int32_t x = vertexAt(mesh, nextCorner(corner));
            mesh.triangleActive.prefetchBit(triangleOf(corner));
            mesh.borderVertices.prefetchBit(x);
            ring_.push_back(x);
            prefetch(&mesh.vertexCorners.run(x));
            prefetch(&mesh.vertices[x]);
        });
    }
}

void NextCollapsePrefetch::outerRing(const DMesh& mesh) const {
    for (const std::int32_t x : ring_)
        forEachCorner(mesh, x, [&](std::int32_t corner) { prefetch(&mesh.triangles[corner]); });
}

}  // namespace korvalite::core
