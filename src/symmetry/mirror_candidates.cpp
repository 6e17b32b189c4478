// SPDX-License-Identifier: MIT
#include "symmetry/mirror_candidates.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace korvalite::core {

namespace {

constexpr std::int32_t kNoPlace = -1;
constexpr std::int32_t kAboveAllPlaces = std::numeric_limits<std::int32_t>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

constexpr std::size_t kLargestLeaf = 8;

float nearestBetween(float low, float high, float value) {
    return value < low ? low : value > high ? high : value;
}

int widestAxis(const FloatVec3& low, const FloatVec3& high) {
    const DoubleVec3 extent = toDouble(high) - toDouble(low);
    const int wider = extent.x >= extent.y ? 0 : 1;
    return component(extent, wider) >= extent.z ? wider : 2;
}

}  // namespace

MirrorCandidates::Node MirrorCandidates::emptyNode() {
    return {{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}, kNoPlace};
}

MirrorCandidates::Node MirrorCandidates::nodeOf(const Entry& entry) {
    return {entry.image, entry.image, entry.place};
}

void MirrorCandidates::enclose(Node& node, const Node& other) {
    for (int axis = 0; axis < 3; ++axis) {
        setComponent(node.low, axis,
                     std::min(component(node.low, axis), component(other.low, axis)));
        setComponent(node.high, axis,
                     std::max(component(node.high, axis), component(other.high, axis)));
    }
    node.highestPlace = std::max(node.highestPlace, other.highestPlace);
}

/// The squared distance to the nearest point of the box, in the same arithmetic as distances to
/// candidates. Rounding is monotonic, so no candidate in the box is nearer, not even by the last
/// bit.
float MirrorCandidates::distanceToBox(const FloatVec3& from, const Node& box) {
    const FloatVec3 nearest{nearestBetween(box.low.x, box.high.x, from.x),
                            nearestBetween(box.low.y, box.high.y, from.y),
                            nearestBetween(box.low.z, box.high.z, from.z)};
    return squaredDistance(from, nearest);
}

void MirrorCandidates::add(std::int32_t place, const FloatVec3& image) {
    if (!std::isfinite(image.x) || !std::isfinite(image.y) || !std::isfinite(image.z)) return;
    entries_.push_back({image, place});
}

void MirrorCandidates::finish() {
    if (entries_.empty()) return;
    std::size_t leaves = 1;
    while (leaves * kLargestLeaf < entries_.size())
        leaves *= 2;
    nodes_.resize(2 * leaves - 1);
    split(0, 0, leaves);

    std::int32_t highest = 0;
    for (const Entry& entry : entries_)
        highest = std::max(highest, entry.place);
    entryAt_.assign(static_cast<std::size_t>(highest) + 1, -1);
    for (std::size_t i = 0; i < entries_.size(); ++i)
        entryAt_[entries_[i].place] = static_cast<std::int32_t>(i);
}

std::size_t MirrorCandidates::firstEntry(std::size_t leaf) const {
    return static_cast<std::size_t>(std::uint64_t{leaf} * entries_.size() / leafCount());
}

/// The last leaf whose first entry is not after this one.
std::size_t MirrorCandidates::leafOf(std::size_t entry) const {
    return static_cast<std::size_t>((std::uint64_t{entry + 1} * leafCount() - 1) / entries_.size());
}

/// Orders the entries of a range of leaves so that each half of the leaves covers its own part of
/// the box.
void MirrorCandidates::split(std::size_t node, std::size_t firstLeaf, std::size_t endLeaf) {
    if (isLeaf(node)) {
        nodes_[node] = leafNode(firstLeaf);
        return;
    }
    const auto place = [this](std::size_t leaf) {
        return entries_.begin() + static_cast<std::ptrdiff_t>(firstEntry(leaf));
    };
    Node box = emptyNode();
    for (auto entry = place(firstLeaf); entry != place(endLeaf); ++entry)
        enclose(box, nodeOf(*entry));
    const int axis = widestAxis(box.low, box.high);
    const std::size_t middle = (firstLeaf + endLeaf) / 2;
    std::nth_element(place(firstLeaf), place(middle), place(endLeaf),
                     [axis](const Entry& a, const Entry& b) {
                         return component(a.image, axis) < component(b.image, axis);
                     });
    split(2 * node + 1, firstLeaf, middle);
    split(2 * node + 2, middle, endLeaf);
    nodes_[node] = box;
}

MirrorCandidates::Node MirrorCandidates::leafNode(std::size_t leaf) const {
    Node node = emptyNode();
    for (std::size_t e = firstEntry(leaf); e < firstEntry(leaf + 1); ++e) {
        if (entries_[e].place != kNoPlace) enclose(node, nodeOf(entries_[e]));
    }
    return node;
}

MirrorCandidates::Node MirrorCandidates::innerNode(std::size_t node) const {
    Node both = nodes_[2 * node + 1];
    enclose(both, nodes_[2 * node + 2]);
    return both;
}

void MirrorCandidates::remove(std::int32_t place) {
    if (static_cast<std::size_t>(place) >= entryAt_.size()) return;
    const std::int32_t entry = std::exchange(entryAt_[place], -1);
    if (entry < 0) return;
    entries_[entry].place = kNoPlace;
    const std::size_t leaf = leafOf(static_cast<std::size_t>(entry));
    std::size_t node = leafCount() - 1 + leaf;
    nodes_[node] = leafNode(leaf);
    while (node != 0) {
        node = (node - 1) / 2;
        nodes_[node] = innerNode(node);
    }
}

template <typename Visit>
void MirrorCandidates::forEachEntry(std::size_t leafNode, Visit visit) {
    const std::size_t leaf = leafNode + 1 - leafCount();
    for (std::size_t e = firstEntry(leaf); e < firstEntry(leaf + 1); ++e) {
        if (entries_[e].place == kNoPlace) continue;
        ++lookCount_;
        visit(entries_[e]);
    }
}

std::int32_t MirrorCandidates::highestWithin(const Search& search, float squaredReach) {
    if (nodes_.empty()) return kNoPlace;
    std::int32_t best = search.lowestPlace - 1;
    findHighest(0, search, squaredReach, best);
    return best < search.lowestPlace ? kNoPlace : best;
}

void MirrorCandidates::findHighest(std::size_t node, const Search& search, float squaredReach,
                                   std::int32_t& best) {
    ++lookCount_;
    if (nodes_[node].highestPlace <= best ||
        !(squaredReach > distanceToBox(search.from, nodes_[node])))
        return;
    if (isLeaf(node)) {
        forEachEntry(node, [&](const Entry& entry) {
            if (entry.place > best && squaredReach > squaredDistance(search.from, entry.image))
                best = entry.place;
        });
        return;
    }
    std::size_t first = 2 * node + 1;
    std::size_t second = 2 * node + 2;
    if (nodes_[second].highestPlace > nodes_[first].highestPlace) std::swap(first, second);
    findHighest(first, search, squaredReach, best);
    findHighest(second, search, squaredReach, best);
}

std::int32_t MirrorCandidates::nearestWithin(const Search& search, float squaredReach) {
    if (nodes_.empty()) return kNoPlace;
    Nearest best{squaredReach, kAboveAllPlaces};
    findNearest(0, search, best);
    return best.place == kAboveAllPlaces ? kNoPlace : best.place;
}

void MirrorCandidates::findNearest(std::size_t node, const Search& search, Nearest& best) {
    ++lookCount_;
    const Node& box = nodes_[node];
    if (box.highestPlace < search.lowestPlace ||
        !best.isWorseThan(distanceToBox(search.from, box), box.highestPlace))
        return;
    if (isLeaf(node)) {
        forEachEntry(node, [&](const Entry& entry) {
            const float distance = squaredDistance(search.from, entry.image);
            if (entry.place >= search.lowestPlace && best.isWorseThan(distance, entry.place))
                best = {distance, entry.place};
        });
        return;
    }
    // Visits the nearer child first, or the one with the higher place if they are equally near.
    std::size_t first = 2 * node + 1;
    std::size_t second = 2 * node + 2;
    const float toFirst = distanceToBox(search.from, nodes_[first]);
    const float toSecond = distanceToBox(search.from, nodes_[second]);
    if (toSecond < toFirst ||
        (toSecond == toFirst && nodes_[second].highestPlace > nodes_[first].highestPlace))
        std::swap(first, second);
    findNearest(first, search, best);
    findNearest(second, search, best);
}

}  // namespace korvalite::core
