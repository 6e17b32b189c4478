// SPDX-License-Identifier: MIT
//
// Pairs the vertices of a mesh across a plane that stands at right angles to an axis.
#pragma once

#include "geometry/vec3.h"
#include "mesh/bit_array.h"

#include <cstdint>
#include <vector>

namespace korvalite {

struct DMesh;

struct MirrorPairs {
    std::vector<std::int32_t>
        pairing;          // -1 unpaired, the vertex itself on the plane, else its mirror
    BitArray secondSide;  // vertices above the plane
    std::int32_t pairedCount = 0;
    std::uint64_t lookCount = 0;  // at candidates and groups of them: what the search has cost
};

/// Pairs every vertex record, active or not, across the plane through `centre` at right angles to
/// `axis` (0, 1, 2). A mirror image matches within `tolerance`; the first one within a 200th of it
/// is taken without looking for a better one. Vertices with equal coordinates go by ascending
/// index, so that every platform finds the same pairs. Coordinates that are not finite are allowed
/// and stay unpaired. Returns false, with `pairs` untouched, if there are no vertices.
[[nodiscard]] bool pairVertices(MirrorPairs& pairs, const DMesh& mesh, int axis,
                                const FloatVec3& centre, float tolerance);

}  // namespace korvalite
