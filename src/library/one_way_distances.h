// SPDX-License-Identifier: MIT
//
// The distances of the samples of one surface from another.
#pragma once

#include "library/surface_pieces.h"

#include <span>
#include <vector>

namespace korvalite {

/// What a sample adds to the percentile.
struct WeighedDistance {
    float distance;  // as a share of `unit`
    float weight;    // any unit
};

struct OneWay {
    Distances distances;  // except the percentile
    double unit = 1;
    std::vector<WeighedDistance> samples;
};

/// The vertices that triangles use, in an order in which neighbours are mostly near each other.
[[nodiscard]] std::vector<std::uint32_t> usedVertices(const SurfaceTree& surface);

/// `vertices` are the used ones of `from`.
[[nodiscard]] OneWay distancesFrom(const SurfaceTree& from, const Pieces& pieces,
                                   std::span<const std::uint32_t> vertices, const SurfaceTree& to,
                                   int threads, WorkReport& report);

/// The distance that `share` of the weight does not exceed. Sorts the samples.
[[nodiscard]] double percentileOf(std::vector<WeighedDistance>& samples, double share);

}  // namespace korvalite
