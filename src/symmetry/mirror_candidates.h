// SPDX-License-Identifier: MIT
//
// Finds mirror candidates by the positions of their mirror images.
//
// The sweep of pairVertices filters candidates by one coordinate only. Where many vertices share
// it, on a flat side of a model or within a wide tolerance, that leaves a large part of the model
// for each vertex. Only there does the pairing use this k-d tree, which finds exactly what a walk
// over all candidates would find.
#pragma once

#include "base/indexed_array.h"
#include "geometry/vec3.h"

#include <cstddef>
#include <cstdint>

namespace korvalite::core {

/// Computed in the arithmetic that decides which candidate is nearest.
inline float squaredDistance(const FloatVec3& a, const FloatVec3& b) {
    const FloatVec3 offset = a - b;
    return dot(offset, offset);
}

class MirrorCandidates {
public:
    /// Reserves room for `most` candidates.
    explicit MirrorCandidates(std::size_t most) { entries_.reserve(most); }

    struct Search {
        FloatVec3 from;
        std::int32_t lowestPlace = 0;  // candidates at lower places do not count
    };

    /// Adds the candidate at `place` in the sweep. A candidate whose image is not finite matches
    /// nothing and is left out.
    void add(std::int32_t place, const FloatVec3& image);

    /// Builds the tree. REQUIRES: called once, after the last add and before any call below.
    void finish();

    /// No effect for a place that is not in the tree.
    void remove(std::int32_t place);

    /// The highest place with a candidate whose squared distance is below `squaredReach`; -1 if
    /// there is none.
    [[nodiscard]] std::int32_t highestWithin(const Search& search, float squaredReach);

    /// The place of the nearest such candidate, the highest place among equals; -1 if there is
    /// none.
    [[nodiscard]] std::int32_t nearestWithin(const Search& search, float squaredReach);

    /// The number of nodes and candidates that all searches have visited.
    [[nodiscard]] std::uint64_t lookCount() const { return lookCount_; }

private:
    struct Entry {
        FloatVec3 image;
        std::int32_t place = 0;
    };
    /// The bounding box and highest place of the remaining entries under a node.
    struct Node {
        FloatVec3 low;
        FloatVec3 high;
        std::int32_t highestPlace = 0;
    };
    /// The nearest candidate so far. Until there is one, its place is above all others, so a
    /// distance equal to the reach is not better.
    struct Nearest {
        float squaredDistance;
        std::int32_t place;

        [[nodiscard]] bool isWorseThan(float otherDistance, std::int32_t otherPlace) const {
            return otherDistance < squaredDistance ||
                   (otherDistance == squaredDistance && otherPlace > place);
        }
    };

    [[nodiscard]] static Node emptyNode();
    static void enclose(Node& node, const Node& other);
    [[nodiscard]] static Node nodeOf(const Entry& entry);
    [[nodiscard]] static float distanceToBox(const FloatVec3& from, const Node& box);

    [[nodiscard]] std::size_t leafCount() const { return (nodes_.size() + 1) / 2; }
    [[nodiscard]] bool isLeaf(std::size_t node) const { return node + 1 >= leafCount(); }
    [[nodiscard]] std::size_t firstEntry(std::size_t leaf) const;
    [[nodiscard]] std::size_t leafOf(std::size_t entry) const;
    void split(std::size_t node, std::size_t firstLeaf, std::size_t endLeaf);
    [[nodiscard]] Node leafNode(std::size_t leaf) const;
    [[nodiscard]] Node innerNode(std::size_t node) const;
    template <typename Visit>
    void forEachEntry(std::size_t leafNode, Visit visit);
    void findHighest(std::size_t node, const Search& search, float squaredReach,
                     std::int32_t& best);
    void findNearest(std::size_t node, const Search& search, Nearest& best);

    IndexedArray<Entry> entries_;
    IndexedArray<std::int32_t> entryAt_;  // by place; -1 for a place that is not in the tree
    // A complete binary tree: the root comes first, the children of node i are 2i + 1 and 2i + 2.
    // The entries are divided evenly among the leaves.
    IndexedArray<Node> nodes_;
    std::uint64_t lookCount_ = 0;
};

}  // namespace korvalite::core
