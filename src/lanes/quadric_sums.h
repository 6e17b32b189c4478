// SPDX-License-Identifier: MIT
//
// Quadrics of triangles in lanes. `Lanes` is a width: its types and what depends on them.
#pragma once

#include "lanes/kernels.h"

#include <cstddef>
#include <cstdint>

namespace korvalite::core::lanes {

/// Three coordinates of as many points as there are lanes.
template <typename Lanes>
struct Points {
    typename Lanes::Doubles x, y, z;
};

template <typename Lanes>
struct Planes {
    typename Lanes::Doubles a, b, c, d;
    typename Lanes::Doubles weight;
};

/// The planes of as many triangles as there are lanes, as in ComputeTriangleQuadric.
template <typename Lanes>
[[gnu::always_inline]] inline Planes<Lanes> planesOf(const Positions& vertices,
                                                     const std::uint32_t* corners) {
    using Doubles = typename Lanes::Doubles;
    const Points<Lanes> p = Lanes::template gather<3>(vertices, corners);
    const Points<Lanes> q = Lanes::template gather<3>(vertices, corners + 1);
    const Points<Lanes> r = Lanes::template gather<3>(vertices, corners + 2);
    const Points<Lanes> u{q.x - p.x, q.y - p.y, q.z - p.z};
    const Points<Lanes> v{r.x - p.x, r.y - p.y, r.z - p.z};
    const Points<Lanes> n{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
    const Doubles length = Lanes::squareRoot(n.x * n.x + n.y * n.y + n.z * n.z);
    const Doubles tiny = Lanes::splat(1e-24);
    // Divided by one, a normal keeps its bits.
    const auto hasNoArea = Lanes::both(Lanes::greater(length, -tiny), Lanes::greater(tiny, length));
    const Doubles weight = Lanes::select(hasNoArea, Lanes::splat(1.0), length);
    const Doubles a = n.x / weight;
    const Doubles b = n.y / weight;
    const Doubles c = n.z / weight;
    return {a, b, c, -(a * p.x + b * p.y + c * p.z), weight};
}

template <typename Lanes>
void sumTriangleQuadrics(const Positions& vertices, const TriangleList& triangles,
                         bool areaWeighted, LaneQuadric* sums) {
    for (std::size_t i = 0; i < triangles.count; i += Lanes::kWidth) {
        const Planes<Lanes> planes = planesOf<Lanes>(vertices, triangles.vertices + 3 * i);
        const std::uint32_t* const places = triangles.sums + 3 * i;
        const auto add = [&](std::size_t lane, const typename Lanes::Quadric& quadric) {
            for (std::size_t k = 0; k < 3; ++k)
                Lanes::add(sums[places[3 * lane + k]], quadric);
        };
        areaWeighted ? Lanes::template forEachQuadric<true>(planes, add)
                     : Lanes::template forEachQuadric<false>(planes, add);
    }
}

template <typename Lanes>
void sumVertexQuadric(const Positions& vertices, const TriangleList& triangles, bool areaWeighted,
                      LaneQuadric* sum) {
    for (std::size_t i = 0; i < triangles.count; i += Lanes::kWidth) {
        const Planes<Lanes> planes = planesOf<Lanes>(vertices, triangles.vertices + 3 * i);
        const auto add = [&](std::size_t lane, const typename Lanes::Quadric& quadric) {
            if (i + lane < triangles.count) Lanes::add(*sum, quadric);
        };
        areaWeighted ? Lanes::template forEachQuadric<true>(planes, add)
                     : Lanes::template forEachQuadric<false>(planes, add);
    }
}

}  // namespace korvalite::core::lanes
