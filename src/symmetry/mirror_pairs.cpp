// SPDX-License-Identifier: MIT
//
// A sweep along the axis. It takes the vertices below the plane from the outside in, and the places
// to search for their mirror images move towards them from the other end. A place is a position in
// the sorted order.
#include "symmetry/mirror_pairs.h"

#include "mesh/dmesh.h"
#include "symmetry/mirror_candidates.h"
#include "symmetry/remaining_places.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace korvalite::core {

namespace {

constexpr float kNearExactDivisor = 200.0F;

// The number of candidates that a search walks one by one before it turns to MirrorCandidates.
constexpr int kWalkedCandidates = 64;

struct SortedVertex {
    float key;  // the coordinate on the axis
    std::int32_t vertex;
};

struct SortedVertices {
    IndexedArray<SortedVertex> places;
    std::int32_t numberedCount = 0;  // places whose coordinate is not NaN
};

/// Ascending by coordinate, then by index. NaN coordinates have no order and come last.
SortedVertices sortAlong(const VertexRecords& vertices, int axis) {
    SortedVertices sorted;
    sorted.places.reserve(vertices.size());
    const auto append = [&](bool numbers) {
        std::int32_t vertex = 0;
        for (const VertexRecord& record : vertices) {
            const float key = component(record.position(), axis);
            if (std::isnan(key) != numbers) sorted.places.push_back({key, vertex});
            ++vertex;
        }
    };
    append(true);
    std::sort(sorted.places.begin(), sorted.places.end(),
              [](const SortedVertex& a, const SortedVertex& b) {
                  return a.key != b.key ? a.key < b.key : a.vertex < b.vertex;
              });
    sorted.numberedCount = static_cast<std::int32_t>(sorted.places.size());
    append(false);
    return sorted;
}

class Sweep {
public:
    Sweep(MirrorPairs& pairs, const DMesh& mesh, int axis, float centre, float tolerance)
        : pairs_(pairs), vertices_(mesh.vertices), axis_(axis), centre_(centre),
          tolerance_(tolerance), squaredTolerance_(tolerance * tolerance),
          sorted_(sortAlong(mesh.vertices, axis)), unpaired_(mesh.vertices.size()),
          high_(sorted_.numberedCount - 1) {
        const float nearExact = tolerance / kNearExactDivisor;
        squaredNearExact_ = nearExact * nearExact;
    }

    void run() {
        const auto placeCount = static_cast<std::int32_t>(sorted_.places.size());
        std::int32_t firstAbove = placeCount;
        // Places with NaN stay unpaired: every comparison with them is false.
        for (std::int32_t place = 0; place < sorted_.numberedCount; ++place) {
            const float key = at(place).key;
            const bool unpaired = pairing(at(place).vertex) == kNone;
            if (!(key > centre_)) {
                const std::int32_t mirror = unpaired ? findMirror(place) : kNone;
                if (mirror != kNone) take(place, mirror);
                continue;
            }
            firstAbove = std::min(firstAbove, place);
            if (!unpaired) continue;
            // Past the band around the plane: the lower side is done.
            // COMPAT: unpaired vertices in the band become their own mirrors; pairs depend on it.
            if (key > centre_ + tolerance_) break;
            take(place, place);
        }
        for (std::int32_t place = firstAbove; place < placeCount; ++place) {
            pairs_.secondSide.Set(at(place).vertex);
        }
        if (candidates_) pairs_.lookCount += candidates_->lookCount();
    }

private:
    [[nodiscard]] const SortedVertex& at(std::int32_t place) const { return sorted_.places[place]; }
    [[nodiscard]] FloatVec3 position(std::int32_t vertex) const {
        return vertices_[vertex].position();
    }
    [[nodiscard]] std::int32_t& pairing(std::int32_t vertex) { return pairs_.pairing[vertex]; }
    [[nodiscard]] float mirrored(float key) const { return 2.0F * centre_ - key; }

    void take(std::int32_t place, std::int32_t mirror) {
        pairing(at(place).vertex) = at(mirror).vertex;
        pairing(at(mirror).vertex) = at(place).vertex;
        for (const std::int32_t gone : {place, mirror}) {
            unpaired_.remove(gone);
            if (candidates_) candidates_->remove(gone);
        }
        pairs_.pairedCount += place == mirror ? 1 : 2;
    }

    [[nodiscard]] std::int32_t findMirror(std::int32_t place) {
        const float target = mirrored(at(place).key);
        // Nothing is within tolerance of a target that is not finite, nor within a tolerance of 0.
        if (!std::isfinite(target) || !(tolerance_ > 0.0F)) return kNone;

        dropAbove(target + tolerance_);
        const FloatVec3 from = position(at(place).vertex);
        const float lowest = target - tolerance_;
        const std::optional<std::int32_t> walked = walkToMirror(from, lowest);
        return walked ? *walked : lookUpMirror(from, lowest);
    }

    /// Targets fall as the sweep rises, so candidates dropped here are never needed again.
    void dropAbove(float key) {
        high_ = unpaired_.atOrBelow(high_);
        while (high_ >= 0 && at(high_).key > key) {
            if (candidates_) candidates_->remove(high_);
            high_ = unpaired_.atOrBelow(high_ - 1);
        }
    }

    /// The first near-exact candidate wins, else the nearest within tolerance, the first of equals.
    /// Gives up with nullopt if there are too many candidates.
    // COMPAT: a near-exact candidate wins even if a nearer one follows; pairs depend on it.
    [[nodiscard]] std::optional<std::int32_t> walkToMirror(const FloatVec3& from, float lowest) {
        std::int32_t best = kNone;
        float bestDistance = squaredTolerance_;
        std::int32_t candidate = high_;
        for (int walked = 0; candidate >= 0 && !(lowest > at(candidate).key); ++walked) {
            if (walked == kWalkedCandidates) return std::nullopt;
            ++pairs_.lookCount;
            const float distance = squaredDistance(from, imageOf(candidate));
            if (squaredNearExact_ > distance) return candidate;
            if (bestDistance > distance) {
                bestDistance = distance;
                best = candidate;
            }
            candidate = unpaired_.atOrBelow(candidate - 1);
        }
        return best;
    }

    /// The same for any number of candidates.
    [[nodiscard]] std::int32_t lookUpMirror(const FloatVec3& from, float lowest) {
        const MirrorCandidates::Search search{from, firstNotBelow(lowest)};
        const std::int32_t nearExact = candidates().highestWithin(search, squaredNearExact_);
        return nearExact != kNone ? nearExact
                                  : candidates().nearestWithin(search, squaredTolerance_);
    }

    [[nodiscard]] FloatVec3 imageOf(std::int32_t place) const {
        FloatVec3 image = position(at(place).vertex);
        setComponent(image, axis_, mirrored(at(place).key));
        return image;
    }

    /// The lowest place whose coordinate is not below `key`.
    [[nodiscard]] std::int32_t firstNotBelow(float key) const {
        const auto begin = sorted_.places.begin();
        const auto first =
            std::partition_point(begin, begin + sorted_.numberedCount,
                                 [key](const SortedVertex& w) { return key > w.key; });
        return static_cast<std::int32_t>(first - begin);
    }

    /// Built on first use; most meshes never need it. Holds only what later searches can reach.
    MirrorCandidates& candidates() {
        if (!candidates_) {
            const std::int32_t lowest = firstNotBelow(centre_ - tolerance_);
            candidates_.emplace(static_cast<std::size_t>(std::max(high_ - lowest + 1, 0)));
            for (std::int32_t place = high_; place >= lowest;) {
                candidates_->add(place, imageOf(place));
                place = unpaired_.atOrBelow(place - 1);
            }
            candidates_->finish();
        }
        return *candidates_;
    }

    MirrorPairs& pairs_;
    const VertexRecords& vertices_;
    int axis_;
    float centre_;
    float tolerance_;
    float squaredTolerance_;
    float squaredNearExact_ = 0.0F;
    SortedVertices sorted_;
    RemainingPlaces unpaired_;
    std::int32_t high_;  // there are no candidates above this place
    std::optional<MirrorCandidates> candidates_;
};

}  // namespace

bool pairVertices(MirrorPairs& pairs, const DMesh& mesh, int axis, const FloatVec3& centre,
                  float tolerance) {
    if (mesh.vertices.empty()) return false;
    pairs.pairing.assign(mesh.vertices.size(), kNone);
    pairs.secondSide.Reset(mesh.vertexCount());
    pairs.pairedCount = 0;
    pairs.lookCount = 0;
    Sweep(pairs, mesh, axis, component(centre, axis), tolerance).run();
    return true;
}

}  // namespace korvalite::core
