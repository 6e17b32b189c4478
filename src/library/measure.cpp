// SPDX-License-Identifier: MIT
#include "library/mesh_view.h"
#include "library/one_way_distances.h"
#include "library/option_range.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace korvalite {

namespace {

constexpr double kPercentile = 0.95;

double percentileOfOne(OneWay& way) {
    const double share = percentileOf(way.samples, kPercentile);
    return std::min(share * way.unit, way.distances.largest);
}

/// Each direction counts by the area of its surface. The unit is the same for both.
double percentileOfBoth(OneWay& there, OneWay& back, double shareOfA) {
    const auto weigh = [](std::vector<WeighedDistance>& samples, double share) {
        double whole = 0;
        for (const WeighedDistance& sample : samples)
            whole += static_cast<double>(sample.weight);
        const auto factor = static_cast<float>(whole > 0 ? share / whole : 0);
        for (WeighedDistance& sample : samples)
            sample.weight *= factor;
    };
    weigh(there.samples, shareOfA);
    weigh(back.samples, 1 - shareOfA);
    there.samples.insert(there.samples.end(), back.samples.begin(), back.samples.end());
    back.samples = {};
    return percentileOf(there.samples, kPercentile) * there.unit;
}

Measurement combine(OneWay there, OneWay back, double areaA, double areaB) {
    Measurement result;
    there.distances.percentile95 = percentileOfOne(there);
    back.distances.percentile95 = percentileOfOne(back);
    result.fromAToB = there.distances;
    result.fromBToA = back.distances;
    const Distances& a = there.distances;
    const Distances& b = back.distances;
    result.largest = std::max(a.largest, b.largest);
    result.atMost = std::max(a.atMost, b.atMost);
    const double shareOfA = areaA + areaB > 0 ? areaA / (areaA + areaB) : 0.5;
    const double squares = shareOfA * a.rms * a.rms + (1 - shareOfA) * b.rms * b.rms;
    result.rms = std::min(std::sqrt(squares), result.largest);
    result.percentile95 = std::min(percentileOfBoth(there, back, shareOfA), result.largest);
    return result;
}

}  // namespace

Measurement measure(const Surface& a, const Surface& b, const MeasureOptions& options,
                    const Monitor& monitor) {
    requireBetween<std::uint64_t>("samples", options.samples, 1, 1'000'000'000);
    requireThreads(options.threads);
    const SurfaceTree& treeA = SurfaceInside::treeOf(a);
    const SurfaceTree& treeB = SurfaceInside::treeOf(b);
    const Pieces piecesA(treeA, options.samples);
    const Pieces piecesB(treeB, options.samples);
    const std::vector<std::uint32_t> verticesA = usedVertices(treeA);
    const std::vector<std::uint32_t> verticesB = usedVertices(treeB);
    WorkReport report(monitor, Phase::Measuring,
                      verticesA.size() + piecesA.itemCount() + verticesB.size() +
                          piecesB.itemCount());
    OneWay there = distancesFrom(treeA, piecesA, verticesA, treeB, options.threads, report);
    OneWay back = distancesFrom(treeB, piecesB, verticesB, treeA, options.threads, report);
    Measurement result = combine(std::move(there), std::move(back), a.area(), b.area());
    result.areaA = a.area();
    result.areaB = b.area();
    result.volumeA = a.volume();
    result.volumeB = b.volume();
    result.diagonalA = a.diagonal();
    return result;
}

Measurement measure(const MeshView& a, const MeshView& b, const MeasureOptions& options,
                    const Monitor& monitor) {
    const Surface surfaceA(a, monitor);
    const Surface surfaceB(b, monitor);
    return measure(surfaceA, surfaceB, options, monitor);
}

std::vector<float> vertexDistances(const MeshView& mesh, const Surface& surface, int threads,
                                   const Monitor& monitor) {
    requireThreads(threads);
    requireFittingSizes(mesh);
    const std::size_t count = mesh.vertexCount();
    for (std::size_t vertex = 0; vertex < count; ++vertex)
        requireFinite(mesh, vertex);
    constexpr std::size_t kPerChunk = 4096;
    const SurfaceTree& tree = SurfaceInside::treeOf(surface);
    WorkReport report(monitor, Phase::Measuring, count);
    std::vector<float> distances(count);
    forEachChunk((count + kPerChunk - 1) / kPerChunk, threads, [&](std::size_t chunk) {
        const std::size_t end = std::min((chunk + 1) * kPerChunk, count);
        std::uint32_t triangle = 0;
        for (std::size_t vertex = chunk * kPerChunk; vertex < end; ++vertex) {
            const float* p = &mesh.positions[3 * vertex];
            const SurfaceTree::Hit hit =
                tree.nearest(toDouble(core::FloatVec3{p[0], p[1], p[2]}), triangle);
            triangle = hit.triangle;
            constexpr double kMost = std::numeric_limits<float>::max();
            distances[vertex] = static_cast<float>(std::min(std::sqrt(hit.square), kMost));
        }
        report.add(end - chunk * kPerChunk);
    });
    return distances;
}

}  // namespace korvalite
