// SPDX-License-Identifier: MIT
//
// The parts of check: what is wrong with single triangles, and with edges and what they connect.
#pragma once

#include <korvalite/korvalite.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace korvalite {

using IndexTriple = std::array<std::uint32_t, 3>;

/// The triangles of a mesh after quads are split. Takes 12 bytes for each, and 12 more with UVs.
struct CheckedTriangles {
    /// Of each triangle; three times kNoVertex if it has no part in the topology, because an index
    /// is out of range or a vertex occurs twice.
    std::vector<IndexTriple> vertices;
    /// Of each triangle, with kNoVertex where an index is out of range; empty without faceUVs.
    std::vector<IndexTriple> uvs;

    [[nodiscard]] bool isInTopology(std::size_t triangle) const {
        return vertices[triangle][0] != kNoVertex;
    }
};

/// Counts a fault and keeps its place if it is among the first.
inline void addFault(std::uint64_t& count, std::vector<std::uint32_t>& places,
                     std::uint32_t place) {
    ++count;
    const auto at = std::lower_bound(places.begin(), places.end(), place);
    if (at != places.end() && *at == place) return;
    if (places.size() < MeshCheck::kMostPlaces) {
        places.insert(at, place);
    } else if (at != places.end()) {
        std::move_backward(at, places.end() - 1, places.end());
        *at = place;
    }
}

/// Counts bad and degenerate triangles and unused vertices. REQUIRES: requireFittingSizes has
/// passed.
[[nodiscard]] CheckedTriangles gatherTriangles(const MeshView& mesh, MeshCheck& check);

/// Counts triangles with the same vertices. Takes 4 bytes for each triangle and each vertex.
void checkDuplicates(const CheckedTriangles& triangles, std::size_t vertexCount, MeshCheck& check);

/// Counts components. Takes 4 bytes for each vertex, and a bit.
void checkComponents(const CheckedTriangles& triangles, std::size_t vertexCount, MeshCheck& check);

/// Counts faulty edges, border loops, seams and vertices with several fans. Takes 24 bytes for each
/// triangle and 8 for each vertex, and a few bits.
void checkEdges(const MeshView& mesh, const CheckedTriangles& triangles, MeshCheck& check);

}  // namespace korvalite
