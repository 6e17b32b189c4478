// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace korvalite {

/// The vertices that one thread holds in `lockedVertices` for its turn: the closed rings of both
/// ends of an edge, and of their mirror images. The holder may read and write all data of these
/// vertices and of the triangles between them. All members are called under csQueue.
///
/// A vertex that is held is never waited for: the next cheapest one is taken instead.
class Reservations {
public:
    explicit Reservations(ProgressiveMesh& pm) : mesh_(pm.mesh), locked_(pm.lockedVertices) {}

    [[nodiscard]] bool isHeld(std::int32_t vertex) const { return locked_.Test(vertex); }

    /// Holds the closed rings of all these vertices. False, with nothing held, if another thread
    /// holds any of it.
    [[nodiscard]] bool hold(std::initializer_list<std::int32_t> centres) {
        // Mostly it is the centres that are held: those are cheap to ask.
        if (std::any_of(centres.begin(), centres.end(), [this](auto v) { return isHeld(v); }))
            return false;
        warmVertexCorners(mesh_, {centres.begin(), centres.end()}, cursors_);
        if (!std::all_of(centres.begin(), centres.end(),
                         [this](auto v) { return gatherRing(v); })) {
            reservedVertices_.clear();
            return false;
        }
        for (const std::int32_t vertex : reservedVertices_)
            locked_.Set(vertex);
        return true;
    }

    void releaseAll() {
        for (const std::int32_t vertex : reservedVertices_)
            locked_.Clear(vertex);
        reservedVertices_.clear();
    }

private:
    /// False if one of them is held.
    bool gatherRing(std::int32_t centre) {
        bool isFree = gather(centre);
        forEachCorner(mesh_, centre, [&](std::int32_t corner) {
            isFree = isFree && gather(vertexAt(mesh_, nextCorner(corner))) &&
                     gather(vertexAt(mesh_, previousCorner(corner)));
        });
        return isFree;
    }

    bool gather(std::int32_t vertex) {
        if (isHeld(vertex)) return false;
        reservedVertices_.push_back(vertex);
        return true;
    }

    const DMesh& mesh_;
    BitArray& locked_;
    IndexList reservedVertices_;  // some of them several times
    IndexList cursors_;           // of warmVertexCorners
};

}  // namespace korvalite
