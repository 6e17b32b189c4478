// SPDX-License-Identifier: MIT
//
// Looks up mirror candidates by the positions of their mirror images.
//
// The sweep of pairVertices narrows candidates by one coordinate only. Where many vertices share
// it, on a flat side of a model or within a wide tolerance, that leaves a good part of the model
// for each vertex. The pairing turns to this k-d tree only there, and finds in it exactly what
// walking all candidates would find.
#pragma once

#include "geometry/vec3.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite {

/// In the arithmetic that decides which candidate is nearest.
inline float squaredDistance(const FloatVec3& a, const FloatVec3& b) {
    const FloatVec3 offset = a - b;
    return dot(offset, offset);
}

class MirrorCandidates {
public:
    /// Makes room for this many.
    explicit MirrorCandidates(std::size_t most) { entries_.reserve(most); }

    struct Search {
        FloatVec3 from;
        std::int32_t lowestPlace = 0;  // candidates at places below it do not count
    };

    /// Enters the candidate at place `place` of the sweep. One whose image is not finite matches
    /// nothing and is left out.
    void add(std::int32_t place, const FloatVec3& image);

    /// REQUIRES: called once, after the last add and before all that follows.
    void finish();

    /// No effect for a place that is not in it.
    void remove(std::int32_t place);

    /// The candidate at the highest place whose squared distance is below `squaredReach`; -1 if
    /// there is none.
    [[nodiscard]] std::int32_t highestWithin(const Search& search, float squaredReach);

    /// The nearest of these candidates, the one at the highest place among equals.
    [[nodiscard]] std::int32_t nearestWithin(const Search& search, float squaredReach);

    /// Nodes and candidates that all searches have looked at.
    [[nodiscard]] std::uint64_t lookCount() const { return lookCount_; }

private:
    struct Entry {
        FloatVec3 image;
        std::int32_t place;
    };
    /// What remains of a part of the entries: the box around them and their highest place.
    struct Node {
        FloatVec3 low;
        FloatVec3 high;
        std::int32_t highestPlace;
    };
    /// The best so far of a search for the nearest. Its place is above all others until there is
    /// one, so that a distance equal to the reach is never better.
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

    std::vector<Entry> entries_;
    std::vector<std::int32_t> entryAt_;  // by place; -1 for a place that is not in the tree
    // A complete binary tree, the root first and the children of node i at 2i + 1 and 2i + 2. The
    // leaves share the entries out evenly.
    std::vector<Node> nodes_;
    std::uint64_t lookCount_ = 0;
};

}  // namespace korvalite
