// SPDX-License-Identifier: MIT
#pragma once

#include "base/cache.h"
#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "ranking/neighbourhood_marks.h"

#include <cstdint>
#include <span>

namespace korvalite::core {

/// Brings the memory that a cost update will read into the cache ahead of it. In a large mesh
/// nearly every access misses, so what counts is that the misses overlap. Changes nothing but the
/// cache.
///
/// The next vertex to collapse is in the ring, which is in the cache, or a vertex that the caller
/// guesses. The memory around the latter is fetched step by step, one link further each time, so it
/// has arrived when the next turn starts.
class RingPrefetch {
public:
    /// The corner lists of the ring and the queue links of the kept vertex, ring[0], and its ring.
    void ring(const WorkingMesh& work, const NeighbourhoodMarks& marks,
              std::span<const std::int32_t> ring);

    /// What is read of a vertex of the outer ring and of a triangle when they are listed.
    static void outerVertex(const DMesh& mesh, const NeighbourhoodMarks& marks,
                            std::int32_t vertex) {
        prefetch(&marks.vertexSlot[vertex]);
        prefetch(&mesh.vertexCorners.run(vertex));
        mesh.borderVertices.prefetchBit(vertex);
    }
    static void triangle(const DMesh& mesh, const NeighbourhoodMarks& marks,
                         std::int32_t triangle) {
        for (const std::int32_t corner : cornersOf(triangle)) {
            const std::int32_t vertex = vertexAt(mesh, corner);
            prefetch(&mesh.vertices[vertex]);
            prefetch(&marks.vertexSlot[vertex]);
        }
    }

    /// The corner lists of the outer ring and of the next collapse; `next` may be kNone.
    void outerRing(const DMesh& mesh, const NeighbourhoodMarks& marks,
                   std::span<const std::int32_t> outerRing, std::int32_t next);

    /// One step further each: the ring of the next collapse, and the first corners of that ring.
    void nextRing(const DMesh& mesh);
    void nextOuterRing(const DMesh& mesh) const;

private:
    IndexList warmed_;
    IndexList nextPair_;  // the vertex likely to collapse next, and its partner
    IndexList nextRing_;
};

}  // namespace korvalite::core
