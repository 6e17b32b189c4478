// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"
#include "mesh/dmesh.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <unordered_set>
#include <vector>

namespace korvalite::core {

/// The vertices that one thread holds in `lockedVertices` for its turn: both ends of an edge and
/// their rings, and those of the mirror image. The holder may read and write all data of these
/// vertices and of the triangles between them. All members must be called under csQueue.
///
/// Threads never wait for a held vertex; they take the next cheapest one instead.
class Reservations {
public:
    Reservations(const DMesh& mesh, BitArray& lockedVertices)
        : mesh_(mesh), locked_(lockedVertices) {}

    [[nodiscard]] bool isHeld(std::int32_t vertex) const { return locked_.Test(vertex); }

    /// Call on entering csQueue, before trying to hold anything. As long as csQueue is held the
    /// other reservations do not change, so a hub is walked only once and not for each of its
    /// spokes.
    void beginPick() {
        freeHubs_.clear();
        blockedHubs_.clear();
    }

    /// Gathers these vertices and their rings, in addition to what has already been gathered.
    /// False, with nothing gathered, if another thread holds any of it.
    [[nodiscard]] bool gather(std::initializer_list<std::int32_t> centres) {
        const bool isFree = gatherRings(centres);
        if (!isFree) forgetGathered();
        return isFree;
    }

    void holdGathered() {
        for (const Hub& hub : gatheredHubs_) {
            forEachNeighbourFrom(hub.next, [this](std::int32_t vertex) {
                reservedVertices_.push_back(vertex);
                return true;
            });
        }
        for (const std::int32_t vertex : reservedVertices_)
            locked_.Set(vertex);
        isHolding_ = true;
    }

    /// Gathers and holds.
    [[nodiscard]] bool hold(std::initializer_list<std::int32_t> centres) {
        if (!gather(centres)) return false;
        holdGathered();
        return true;
    }

    void releaseAll() {
        if (isHolding_) {
            for (const std::int32_t vertex : reservedVertices_)
                locked_.Clear(vertex);
        }
        isHolding_ = false;
        forgetGathered();
    }

    /// The number of ring vertices checked so far.
    [[nodiscard]] std::uint64_t lookCount() const { return lookCount_; }

private:
    static constexpr int kLongestRing = 64;  // in triangles; a vertex with more is a hub
    static constexpr int kWholeRing = std::numeric_limits<int>::max();

    /// A place in a corner list.
    struct Place {
        std::int32_t corner;  // kNone at the end
        CornerCursor rest;    // after that corner
    };

    /// A vertex with many triangles, and where its list continues after the first ones.
    struct Hub {
        std::int32_t centre;
        Place next;
    };

    void forgetGathered() {
        reservedVertices_.clear();
        gatheredHubs_.clear();
    }

    bool gatherRings(std::initializer_list<std::int32_t> centres) {
        // Usually a centre is held, and that is cheap to check.
        if (std::any_of(centres.begin(), centres.end(),
                        [this](auto v) { return isHeld(v) || blockedHubs_.contains(v); }))
            return false;
        warmVertexCorners(mesh_, {centres.begin(), centres.end()});
        const std::size_t hubsBefore = gatheredHubs_.size();
        return std::all_of(centres.begin(), centres.end(),
                           [this](auto v) { return gatherRing(v); }) &&
               std::all_of(gatheredHubs_.begin() + static_cast<std::ptrdiff_t>(hubsBefore),
                           gatheredHubs_.end(), [this](const Hub& hub) { return isFree(hub); });
    }

    /// Gathers a whole ring, or the start of a hub's ring. False if a vertex of it is held.
    bool gatherRing(std::int32_t centre) {
        reservedVertices_.push_back(centre);
        CornerCursor corners(mesh_.vertexCorners, centre);
        const std::int32_t first = corners.next();
        bool isFree = true;
        const Place next = forEachNeighbourFrom(
            {first, corners},
            [&](std::int32_t vertex) {
                ++lookCount_;
                isFree = !isHeld(vertex);
                if (isFree) reservedVertices_.push_back(vertex);
                return isFree;
            },
            kLongestRing);
        if (next.corner != kNone) gatheredHubs_.push_back({centre, next});
        return isFree;
    }

    bool isFree(const Hub& hub) {
        if (freeHubs_.contains(hub.centre)) return true;
        bool isFree = true;
        forEachNeighbourFrom(hub.next, [&](std::int32_t vertex) {
            ++lookCount_;
            isFree = !isHeld(vertex);
            return isFree;
        });
        (isFree ? freeHubs_ : blockedHubs_).insert(hub.centre);
        return isFree;
    }

    /// Visits the other vertices of up to `most` triangles in a corner list, as long as visit()
    /// returns true. Returns the place after the last triangle visited.
    template <typename Visit>
    Place forEachNeighbourFrom(Place place, Visit visit, int most = kWholeRing) const {
        for (; place.corner != kNone && most > 0; --most) {
            if (!visit(vertexAt(mesh_, nextCorner(place.corner))) ||
                !visit(vertexAt(mesh_, previousCorner(place.corner))))
                break;
            place.corner = place.rest.next();
        }
        return place;
    }

    const DMesh& mesh_;
    BitArray& locked_;
    IndexList reservedVertices_;  // may contain duplicates
    bool isHolding_ = false;      // whether reservedVertices_ are held, not just gathered
    std::vector<Hub> gatheredHubs_;
    // The hubs checked in this pick, by whether another thread holds a neighbour.
    std::unordered_set<std::int32_t> freeHubs_;
    std::unordered_set<std::int32_t> blockedHubs_;
    std::uint64_t lookCount_ = 0;
};

}  // namespace korvalite::core
