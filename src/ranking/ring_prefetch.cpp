// SPDX-License-Identifier: MIT
#include "ranking/ring_prefetch.h"

namespace korvalite::core {

void RingPrefetch::ring(const WorkingMesh& work, const NeighbourhoodMarks& marks,
                        std::span<const std::int32_t> ring) {
    work.costQueue.prefetchOwnLinks(ring);
    warmVertexCorners(work.mesh, ring.subspan(1), &marks.triangleMark);
    work.costQueue.prefetchLinks(ring);
}

void RingPrefetch::outerRing(const DMesh& mesh, const NeighbourhoodMarks& marks,
                             std::span<const std::int32_t> outerRing, std::int32_t next) {
    nextPair_.clear();
    if (next != kNone) {
        nextPair_.push_back(next);
        const std::int32_t partner = mesh.vertices[next].partner;
        if (partner != kNone) nextPair_.push_back(partner);
    }
    warmed_.assign(outerRing.begin(), outerRing.end());
    warmed_.insert(warmed_.end(), nextPair_.begin(), nextPair_.end());
    warmVertexCorners(mesh, warmed_, &marks.triangleMark);
}

void RingPrefetch::nextRing(const DMesh& mesh) {
    nextRing_.clear();
    for (const std::int32_t vertex : nextPair_) {
        mesh.vertexActive.prefetchBit(vertex);
        mesh.borderVertices.prefetchBit(vertex);
        forEachCorner(mesh, vertex, [&](std::int32_t corner) {
            const std::int32_t x = vertexAt(mesh, nextCorner(corner));
            mesh.triangleActive.prefetchBit(triangleOf(corner));
            mesh.borderVertices.prefetchBit(x);
            nextRing_.push_back(x);
            prefetch(&mesh.vertexCorners.run(x));
            prefetch(&mesh.vertices[x]);
        });
    }
}

void RingPrefetch::nextOuterRing(const DMesh& mesh) const {
    for (const std::int32_t x : nextRing_) {
        forEachCorner(mesh, x, [&](std::int32_t corner) { prefetch(&mesh.triangles[corner]); });
    }
}

}  // namespace korvalite::core
