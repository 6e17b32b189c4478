// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"
#include "support/level_walk.h"
#include "support/threads_of.h"
#include "support/vertex_corners.h"

#include <cstdint>
#include <vector>

namespace korvalite::core::test {

inline void append(Words& words, const BitArray& bits) {
    words.push_back(static_cast<std::uint32_t>(bits.count()));
    for (std::int32_t i = 0; i < bits.count(); ++i)
        words.push_back(bits.Test(i) ? 1U : 0U);
}
inline void append(Words& words, const std::vector<std::int32_t>& items) {
    for (const std::int32_t item : items)
        words.push_back(static_cast<std::uint32_t>(item));
}

// Everything that collapses and cost updates may change, bit for bit: the arrays of the mesh, costs
// and partners, corner lists in their order, the other bits, the pairs, and the queued vertices.
// Use as EXPECT_TRUE(stateOf(a) == stateOf(b)).
inline Words stateOf(const ProgressiveMesh& pm) {
    const DMesh& mesh = pm.mesh;
    Words words = arraysOf(mesh, Part::All);
    for (const VertexRecord& vertex : mesh.vertices) {
        appendFloat(words, vertex.cost);
        words.push_back(static_cast<std::uint32_t>(vertex.partner));
    }
    for (const IndexList& corners : vertexCornersOf(mesh))
        append(words, corners);
    for (const auto* list : {&mesh.uvCornerHead, &mesh.uvCornerNext, &mesh.symmetryCache.pairing})
        append(words, *list);
    for (const BitArray* bits : {&mesh.borderVertices, &mesh.uvSeamVertices, &mesh.uvSeamCorners,
                                 &pm.symmetrySlaves, &threadsOf(pm).lockedVertices})
        append(words, *bits);
    words.push_back(static_cast<std::uint32_t>(pm.costQueue.vertexCount()));
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v)
        words.push_back(pm.costQueue.isQueued(v) ? 1 : 0);
    return words;
}

}  // namespace korvalite::core::test
