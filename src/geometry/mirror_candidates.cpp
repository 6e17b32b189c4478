// SPDX-License-Identifier: MIT
#include "geometry/mirror_candidates.h"

#include <algorithm>
#include <cmath>

namespace korvalite {

namespace {

// Farther apart than this the squared distance overflows a float, and nothing matches.
constexpr double kFarthestReach = 1.9e19;

// Wide enough that a vertex mostly sees one cell, and four at the most.
constexpr double kCellsPerReach = 4.0;

// Covers the rounding of position +- reach.
constexpr double kReachMargin = 1.001;

// Coordinates beyond this many cells share the outermost one.
constexpr double kOutermostCell = 4611686018427387904.0;  // 2^62

}  // namespace

MirrorCandidates::MirrorCandidates(float reach)
    : reach_(std::min(static_cast<double>(reach), kFarthestReach) * kReachMargin),
      cellSize_(reach_ * kCellsPerReach) {}

void MirrorCandidates::add(std::int32_t place, const PlanePosition& position) {
    if (!position.isFinite()) return;
    entries_.push_back({cellKey(cellIndex(position.a), cellIndex(position.b)), place});
}

void MirrorCandidates::finish() {
    std::sort(entries_.begin(), entries_.end(), [](const Entry& x, const Entry& y) {
        return x.cell != y.cell ? x.cell < y.cell : x.place < y.place;
    });
    remaining_.emplace(entries_.size());
}

std::int64_t MirrorCandidates::cellIndex(double coordinate) const {
    const double index = std::floor(coordinate / cellSize_);
    return static_cast<std::int64_t>(std::clamp(index, -kOutermostCell, kOutermostCell));
}

std::uint32_t MirrorCandidates::cellKey(std::int64_t a, std::int64_t b) {
    // Multipliers of a common 64-bit mixer; cells that share a key only cost a longer visit.
    std::uint64_t h = static_cast<std::uint64_t>(a) * 0x9E3779B97F4A7C15ULL;
    h = (h ^ (h >> 32U) ^ static_cast<std::uint64_t>(b)) * 0xBF58476D1CE4E5B9ULL;
    return static_cast<std::uint32_t>(h >> 32U);
}

std::int32_t MirrorCandidates::lastEntry(std::uint32_t cell, std::int32_t highest) const {
    const auto end = std::partition_point(entries_.begin(), entries_.end(), [&](const Entry& e) {
        return e.cell != cell ? e.cell < cell : e.place <= highest;
    });
    return static_cast<std::int32_t>(end - entries_.begin()) - 1;
}

}  // namespace korvalite
