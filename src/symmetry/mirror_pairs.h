// SPDX-License-Identifier: MIT
//
// Pairs the vertices of a mesh across a plane perpendicular to an axis.
#pragma once

#include "base/bit_array.h"
#include "base/indexed_array.h"
#include "geometry/vec3.h"

#include <cstdint>
#include <vector>

namespace korvalite::core {

struct DMesh;

struct MirrorPairs {
    IndexedArray<std::int32_t>
        pairing;          // -1 if unpaired, the vertex itself if on the plane, else its mirror
    BitArray secondSide;  // vertices above the plane
    std::int32_t pairedCount = 0;
    std::uint64_t lookCount = 0;  // candidates and tree nodes visited: the cost of the search
};

/// Pairs every vertex record, active or not, across the plane through `centre` perpendicular to
/// `axis` (0, 1, 2). A vertex matches within `tolerance` of the mirror image; the first one within
/// a 200th of it is taken without looking for a better one. Vertices with equal coordinates are
/// ordered by index, so every platform finds the same pairs. Vertices with coordinates that are not
/// finite stay unpaired. Returns false, with `pairs` untouched, if there are no vertices.
[[nodiscard]] bool pairVertices(MirrorPairs& pairs, const DMesh& mesh, int axis,
                                const FloatVec3& centre, float tolerance);

}  // namespace korvalite::core
