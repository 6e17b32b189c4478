// SPDX-License-Identifier: MIT
#include "support/surface_distance.h"

#include "formats/active_items.h"
#include "support/triangle_grid.h"

#include <algorithm>
#include <cmath>

namespace korvalite::core::test {

namespace {

double areaOf(const Corners& corners) {
    const DoubleVec3 normal = cross(corners[1] - corners[0], corners[2] - corners[0]);
    return std::sqrt(dot(normal, normal)) / 2;
}

// Points that fill a triangle evenly: steps by two numbers that are badly approximated by
// fractions, folded at the diagonal of the square.
class Places {
public:
    DoubleVec3 next(const Corners& corners) {
        u_ = std::fmod(u_ + 0.7548776662466927, 1.0);
        v_ = std::fmod(v_ + 0.5698402909980532, 1.0);
        const bool isFolded = u_ + v_ > 1;
        const double u = isFolded ? 1 - u_ : u_;
        const double v = isFolded ? 1 - v_ : v_;
        const DoubleVec3 e = corners[1] - corners[0];
        const DoubleVec3 f = corners[2] - corners[0];
        return corners[0] + DoubleVec3{u * e.x + v * f.x, u * e.y + v * f.y, u * e.z + v * f.z};
    }

private:
    double u_ = 0.5;
    double v_ = 0.5;
};

struct OneWay {
    double rms = 0;
    double maximum = 0;
};

OneWay distancesFrom(const DMesh& from, const DMesh& to, std::size_t samples) {
    const TriangleGrid grid(to);
    const std::vector<DoubleVec3> points = samplesOf(from, samples);
    OneWay result;
    double squares = 0;
    for (const DoubleVec3& point : points) {
        const double distance = grid.distanceTo(point);
        squares += distance * distance;
        result.maximum = std::max(result.maximum, distance);
    }
    if (!points.empty()) result.rms = std::sqrt(squares / static_cast<double>(points.size()));
    return result;
}

}  // namespace

std::vector<DoubleVec3> samplesOf(const DMesh& mesh, std::size_t count) {
    double area = 0;
    forEachActiveTriangle(mesh,
                          [&](std::size_t corner) { area += areaOf(cornersAt(mesh, corner)); });
    std::vector<DoubleVec3> samples;
    if (!(area > 0) || count == 0) return samples;
    samples.reserve(count);
    Places places;
    const double step = area / static_cast<double>(count);
    double covered = 0;
    double next = step / 2;
    forEachActiveTriangle(mesh, [&](std::size_t corner) {
        const Corners corners = cornersAt(mesh, corner);
        covered += areaOf(corners);
        for (; next < covered; next += step)
            samples.push_back(places.next(corners));
    });
    return samples;
}

SurfaceDistance surfaceDistance(const DMesh& first, const DMesh& second, std::size_t samples) {
    const OneWay there = distancesFrom(first, second, samples);
    const OneWay back = distancesFrom(second, first, samples);
    return {there.rms, std::max(there.maximum, back.maximum)};
}

}  // namespace korvalite::core::test
