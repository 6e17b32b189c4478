// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// The vertices that one thread holds in `lockedVertices` for its turn: the closed rings of both
/// ends of an edge, and of their mirror images. The holder may read and write all data of these
/// vertices and of the triangles between them. All members are called under csQueue.
///
/// A vertex that is held is never waited for: the next cheapest one is taken instead.
class Reservations {
public:
    explicit Reservations(ProgressiveMesh& pm) : mesh_(pm.mesh), locked_(pm.lockedVertices) {}

    /// Whether neither the vertex nor a neighbour of it is held.
    [[nodiscard]] bool isRingFree(std::int32_t vertex) const {
        if (locked_.Test(vertex)) return false;
        bool free = true;
        forEachCorner(mesh_, vertex, [&](std::int32_t corner) {
            free = free && !locked_.Test(vertexAt(mesh_, nextCorner(corner))) &&
                   !locked_.Test(vertexAt(mesh_, previousCorner(corner)));
        });
        return free;
    }

    /// Holds the vertex and its neighbours. REQUIRES: they were free when the turn began.
    void holdRing(std::int32_t vertex) {
        hold(vertex);
        forEachCorner(mesh_, vertex, [this](std::int32_t corner) {
            hold(vertexAt(mesh_, nextCorner(corner)));
            hold(vertexAt(mesh_, previousCorner(corner)));
        });
    }

    void releaseAll() {
        for (const std::int32_t vertex : reservedVertices_)
            locked_.Clear(vertex);
        reservedVertices_.clear();
    }

private:
    void hold(std::int32_t vertex) {
        if (locked_.Test(vertex)) return;
        reservedVertices_.push_back(vertex);
        locked_.Set(vertex);
    }

    const DMesh& mesh_;
    BitArray& locked_;
    IndexList reservedVertices_;
};

}  // namespace korvalite
