// SPDX-License-Identifier: MIT
#include "korva/measured_levels.h"

#include "korva/work_fraction.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace korva {

namespace {

using korvalite::Target;

// How many times the range is halved if it spans three powers of ten.
constexpr int kUsualSteps = 11;

/// A number between both, at the same ratio to each.
std::uint32_t geometricMean(std::uint32_t low, std::uint32_t high) {
    const double mean = std::sqrt(static_cast<double>(low) * static_cast<double>(high));
    return std::clamp(static_cast<std::uint32_t>(mean), low + 1, high - 1);
}

/// Nothing if the mesh has no triangles.
std::optional<korvalite::Surface> surfaceOf(const korvalite::Mesh& mesh,
                                            const korvalite::Monitor& monitor) {
    if (mesh.triangles.empty()) return {};
    return korvalite::Surface(mesh.view(), monitor);
}

}  // namespace

MeasuredLevels::MeasuredLevels(korvalite::Mesh mesh, const korvalite::Options& options,
                               const korvalite::Monitor& monitor)
    : original_(std::move(mesh)), surface_(surfaceOf(original_, shareOf(monitor, 0, 0.05))),
      progressive_(
          korvalite::ProgressiveMesh::build(original_.view(), options, shareOf(monitor, 0.05, 1))),
      coarsest_(progressive_.vertexCount()), measuring_{.samples = kErrorSamples,
                                                        .threads = options.threads} {}

MeasuredLevels::Level MeasuredLevels::level(const Target& target,
                                            const korvalite::Monitor& monitor) {
    Level result{progressive_.level(target, shareOf(monitor, 0, 0.1)), {}};
    if (!surface_) return result;
    const auto surface = surfaceOf(result.mesh, shareOf(monitor, 0.1, 0.2));
    if (surface) {
        result.measurement =
            korvalite::measure(*surface_, *surface, measuring_, shareOf(monitor, 0.2, 1));
    } else {
        // Nothing is left that could be near.
        result.measurement.largest = result.measurement.atMost =
            std::numeric_limits<double>::infinity();
    }
    return result;
}

MeasuredLevels::Level MeasuredLevels::coarsestWithin(double limit, const MonitorMaker& monitorFor) {
    int step = 0;
    const auto next = [&](std::uint32_t vertices) {
        const double from = 1.0 * std::min(step, kUsualSteps) / (kUsualSteps + 1);
        ++step;
        const double to = 1.0 * std::min(step, kUsualSteps) / (kUsualSteps + 1);
        return level(Target::vertices(vertices), monitorFor(from, to));
    };
    Level best = next(coarsest_);
    if (best.measurement.atMost <= limit) return best;
    std::uint32_t low = coarsest_;
    std::uint32_t high = progressive_.finestVertexCount();
    bool isFound = false;
    while (high - low > std::max(high / 100, 1U)) {
        const std::uint32_t middle = geometricMean(low, high);
        Level tried = next(middle);
        if (tried.measurement.atMost <= limit) {
            high = middle;
            best = std::move(tried);
            isFound = true;
        } else {
            low = middle;
        }
    }
    return isFound ? std::move(best) : next(high);
}

}  // namespace korva
