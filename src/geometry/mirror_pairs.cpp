// SPDX-License-Identifier: MIT
//
// A sweep along the axis. The vertices below the plane are taken from the outside in, and the
// places where their mirror images are looked for move from the other end towards them. A place is
// a position in the sorted order.
#include "geometry/mirror_pairs.h"

#include "geometry/mirror_candidates.h"
#include "geometry/remaining_places.h"
#include "mesh/dmesh.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace korvalite {

namespace {

constexpr float kNearExactDivisor = 200.0F;

// Candidates that a search walks one by one before it turns to MirrorCandidates.
constexpr int kWalkedCandidates = 64;

struct SortedVertex {
    float key;  // the coordinate on the axis
    std::int32_t vertex;
};

struct SortedVertices {
    std::vector<SortedVertex> places;
    std::int32_t numberedCount = 0;  // places whose coordinate is a number
};

/// Ascending by coordinate, then by index. Coordinates that are not a number have no place in an
/// order of numbers and stand at the end.
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

/// The candidate that a walk down the places would take: the first near-exact one, else the
/// nearest within tolerance, the first of equals. Candidates may be offered in any order.
struct BestCandidate {
    float nearExact;  // squared distances
    float distance;
    std::int32_t place = kNone;
    bool isNearExact = false;

    /// Whether nothing below this place can be better.
    [[nodiscard]] bool isFinalBelow(std::int32_t candidate) const {
        return isNearExact && candidate <= place;
    }

    void offer(std::int32_t candidate, float squaredDistance) {
        if (nearExact > squaredDistance) {
            if (!isNearExact || candidate > place) place = candidate;
            isNearExact = true;
        } else if (!isNearExact &&
                   (distance > squaredDistance ||
                    (distance == squaredDistance && place != kNone && candidate > place))) {
            distance = squaredDistance;
            place = candidate;
        }
    }
};

class Sweep {
public:
    Sweep(MirrorPairs& pairs, const DMesh& mesh, int axis, float centre, float tolerance)
        : pairs_(pairs), vertices_(mesh.vertices), axis_(axis), centre_(centre),
          tolerance_(tolerance), sorted_(sortAlong(mesh.vertices, axis)),
          unpaired_(mesh.vertices.size()), high_(sorted_.numberedCount - 1) {}

    void run() {
        const auto placeCount = static_cast<std::int32_t>(sorted_.places.size());
        std::int32_t firstAbove = placeCount;
        // Places without a number stay unpaired: no comparison with them holds.
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
            // Beyond the band of the plane: the lower side has been used up.
            if (key > centre_ + tolerance_) break;
            take(place, place);
        }
        for (std::int32_t place = firstAbove; place < placeCount; ++place) {
            pairs_.secondSide.Set(at(place).vertex);
        }
    }

private:
    [[nodiscard]] const SortedVertex& at(std::int32_t place) const {
        return sorted_.places[static_cast<std::size_t>(place)];
    }
    [[nodiscard]] FloatVec3 position(std::int32_t vertex) const {
        return vertices_[static_cast<std::size_t>(vertex)].position();
    }
    [[nodiscard]] std::int32_t& pairing(std::int32_t vertex) {
        return pairs_.pairing[static_cast<std::size_t>(vertex)];
    }
    [[nodiscard]] float mirrored(float key) const { return 2.0F * centre_ - key; }

    void take(std::int32_t place, std::int32_t mirror) {
        pairing(at(place).vertex) = at(mirror).vertex;
        pairing(at(mirror).vertex) = at(place).vertex;
        unpaired_.remove(place);
        unpaired_.remove(mirror);
        pairs_.pairedCount += place == mirror ? 1 : 2;
    }

    [[nodiscard]] std::int32_t findMirror(std::int32_t place) {
        const float target = mirrored(at(place).key);
        // No distance to such a target is below any tolerance, nor any distance below 0.
        if (!std::isfinite(target) || !(tolerance_ > 0.0F)) return kNone;

        // Targets fall as the sweep rises, so what is passed here is passed for good.
        high_ = unpaired_.atOrBelow(high_);
        while (high_ >= 0 && at(high_).key > target + tolerance_) {
            high_ = unpaired_.atOrBelow(high_ - 1);
        }

        const float nearExact = tolerance_ / kNearExactDivisor;
        BestCandidate best{nearExact * nearExact, tolerance_ * tolerance_};
        const FloatVec3 from = position(at(place).vertex);
        const float lowest = target - tolerance_;

        std::int32_t candidate = high_;
        for (int walked = 0; walked < kWalkedCandidates; ++walked) {
            if (candidate < 0 || lowest > at(candidate).key) return best.place;
            best.offer(candidate, squaredDistance(from, at(candidate)));
            if (best.isNearExact) return best.place;
            candidate = unpaired_.atOrBelow(candidate - 1);
        }
        if (candidate < 0 || !planePosition(from).isFinite()) return best.place;
        candidates().visit(planePosition(from), candidate, [&](std::int32_t w) {
            if (lowest > at(w).key) return CandidateVerdict::Leave;
            if (pairing(at(w).vertex) != kNone) return CandidateVerdict::Remove;
            best.offer(w, squaredDistance(from, at(w)));
            return best.isFinalBelow(w) ? CandidateVerdict::Leave : CandidateVerdict::Keep;
        });
        return best.place;
    }

    [[nodiscard]] float squaredDistance(const FloatVec3& from, const SortedVertex& w) const {
        FloatVec3 image = position(w.vertex);
        setComponent(image, axis_, mirrored(w.key));
        const FloatVec3 offset = from - image;
        return dot(offset, offset);
    }

    [[nodiscard]] PlanePosition planePosition(const FloatVec3& p) const {
        return {static_cast<double>(component(p, (axis_ + 1) % 3)),
                static_cast<double>(component(p, (axis_ + 2) % 3))};
    }

    /// Built when first needed: most meshes never do. Only what later searches can reach is in it.
    MirrorCandidates& candidates() {
        if (!candidates_) {
            candidates_.emplace(tolerance_);
            for (std::int32_t place = high_; place >= 0; place = unpaired_.atOrBelow(place - 1)) {
                if (centre_ - tolerance_ > at(place).key) break;
                candidates_->add(place, planePosition(position(at(place).vertex)));
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
    SortedVertices sorted_;
    RemainingPlaces unpaired_;
    std::int32_t high_;  // no candidate stands above this place
    std::optional<MirrorCandidates> candidates_;
};

}  // namespace

bool pairVertices(MirrorPairs& pairs, const DMesh& mesh, int axis, const FloatVec3& centre,
                  float tolerance) {
    if (mesh.vertices.empty()) return false;
    pairs.pairing.assign(mesh.vertices.size(), kNone);
    pairs.secondSide.Reset(mesh.vertexCount());
    pairs.pairedCount = 0;
    Sweep(pairs, mesh, axis, component(centre, axis), tolerance).run();
    return true;
}

}  // namespace korvalite
