// SPDX-License-Identifier: MIT
//
// Costs of edges in lanes, as in evaluateEdge where the edge may go to the quadric's minimum. What
// the plain routine decides by branches is computed for all lanes, and each takes its own.
#pragma once

#include "lanes/inverses.h"
#include "lanes/kernels.h"

#include <cstddef>
#include <cstdint>

namespace korvalite::core::lanes {

/// Quadrics of as many edges as there are lanes, in the order of PlaneQuadric.
template <typename Lanes>
struct EdgeQuadrics {
    typename Lanes::Doubles q[10];
};

/// In the order of evaluateQuadric.
template <typename Lanes>
typename Lanes::Doubles errorAt(const EdgeQuadrics<Lanes>& quadrics, typename Lanes::Doubles x,
                                typename Lanes::Doubles y, typename Lanes::Doubles z) {
    const typename Lanes::Doubles* const q = quadrics.q;
    const typename Lanes::Doubles two = Lanes::splat(2.0);
    return q[0] * x * x + two * q[1] * x * y + two * q[2] * x * z + q[3] * y * y +
           two * q[4] * y * z + q[5] * z * z + two * q[6] * x + two * q[7] * y + two * q[8] * z +
           q[9];
}

/// The minima of quadrics by the elimination of invert3, and whether there is one.
template <typename Lanes>
struct Minima {
    typename Lanes::Doubles x, y, z;  // not rounded to float
    typename Lanes::Mask isSingular;
};

template <typename Lanes>
Minima<Lanes> minimaOf(const EdgeQuadrics<Lanes>& quadrics) {
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    const Doubles* const q = quadrics.q;
    const Doubles matrix[9] = {q[0], q[1], q[2], q[1], q[3], q[4], q[2], q[4], q[5]};
    EliminationRow<Lanes, 3> rows[3];
    const Mask isSingular = eliminateAll<Lanes, 3>(matrix, rows);
    Doubles columns[3][3];
    solveColumns<Lanes, 3>(rows, columns);

    // Each column belongs to the row of its pivot. A product with the linear part is summed in the
    // order of the rows; of the first two terms either may come first, but the third is the last.
    const Doubles zero = Lanes::splat(0.0);
    const Doubles two = Lanes::splat(2.0);
    const Mask thirdIsFirst = Lanes::equal(rows[0].source, two);
    const Mask thirdIsLast = Lanes::equal(rows[2].source, two);
    const Mask inOrder =
        Lanes::equal(Lanes::select(thirdIsFirst, rows[1].source, rows[0].source), zero);
    const Doubles linearA = Lanes::select(inOrder, q[6], q[7]);
    const Doubles linearB = Lanes::select(inOrder, q[7], q[6]);
    const auto coordinate = [&](std::size_t i) {
        const Doubles v0 = columns[0][i];
        const Doubles v1 = columns[1][i];
        const Doubles v2 = columns[2][i];
        const Doubles a = Lanes::select(thirdIsFirst, v1, v0);
        const Doubles b = Lanes::select(thirdIsLast, v1, v2);
        const Doubles c = Lanes::select(thirdIsLast, v2, Lanes::select(thirdIsFirst, v0, v1));
        return -(a * linearA + b * linearB + c * q[8]);
    };
    return {coordinate(0), coordinate(1), coordinate(2), isSingular};
}

/// In the order of degeneracy().
template <typename Lanes>
typename Lanes::Mask areNearlySingular(const EdgeQuadrics<Lanes>& quadrics) {
    const typename Lanes::Doubles* const q = quadrics.q;
    const typename Lanes::Doubles degeneracy = q[0] * q[3] * q[5] - q[4] * q[4] -
                                               q[1] * q[1] * q[5] - q[2] * q[4] +
                                               q[1] * q[2] * q[4] - q[2] * q[3];
    return Lanes::greater(Lanes::splat(0.001), Lanes::absolute(degeneracy));
}

template <typename Lanes>
typename Lanes::Mask areFinite(typename Lanes::Doubles values) {
    return Lanes::greater(Lanes::splat(__builtin_inf()), Lanes::absolute(values));
}

/// As in searchAlongEdge, for the lanes of `search`; `best` are their costs so far. Returns whether
/// the plain routine has to decide one of them.
template <typename Lanes>
[[gnu::noinline]] bool searchAlongEdges(const EdgeQuadrics<Lanes>& quadrics,
                                        typename Lanes::Mask search, const Positions& positions,
                                        const std::uint32_t* ends, const EdgeSettings& settings,
                                        typename Lanes::Doubles best, float* costs) {
    using Floats = typename Lanes::Floats;
    const typename Lanes::FloatPoints a = Lanes::template gatherFloats<2>(positions, ends);
    const typename Lanes::FloatPoints b = Lanes::template gatherFloats<2>(positions, ends + 1);
    for (std::int32_t i = 0; i <= settings.numPositionSamples; ++i) {
        const float t = static_cast<float>(i) / static_cast<float>(settings.numPositionSamples);
        const Floats atB = Lanes::splatFloat(t);
        const Floats atA = Lanes::splatFloat(1.0F - t);
        const typename Lanes::Doubles error = errorAt<Lanes>(
            quadrics, Lanes::toDoubles(atA * a.x + atB * b.x),
            Lanes::toDoubles(atA * a.y + atB * b.y), Lanes::toDoubles(atA * a.z + atB * b.z));
        best = Lanes::select(Lanes::both(search, Lanes::greater(best, error)),
                             Lanes::toDoubles(Lanes::toFloats(error)), best);
    }
    // Below all floats: the plain routine makes such an edge not collapsible.
    const typename Lanes::Mask isFinite = areFinite<Lanes>(best);
    best = Lanes::select(isFinite, best, Lanes::splat(__builtin_nan("")));
    Lanes::store(costs, Lanes::atLeastZero(Lanes::toFloats(best)));
    return Lanes::any(Lanes::negated(isFinite));
}

template <typename Lanes>
bool evaluateEdges(const Positions& ends, const LaneQuadric* quadrics, const EdgeList& edges,
                   const EdgeSettings& settings, float* costs) {
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    bool isUndecided = false;
    for (std::size_t i = 0; i < edges.count; i += Lanes::kWidth) {
        const std::uint32_t* const pair = edges.ends + 2 * i;
        const EdgeQuadrics<Lanes> sum = Lanes::sumOfEnds(quadrics, pair);
        const Minima<Lanes> minima = minimaOf<Lanes>(sum);
        const Doubles x = Lanes::toDoubles(Lanes::toFloats(minima.x));
        const Doubles y = Lanes::toDoubles(Lanes::toFloats(minima.y));
        const Doubles z = Lanes::toDoubles(Lanes::toFloats(minima.z));
        const typename Lanes::Floats atMinimum =
            Lanes::atLeastZero(Lanes::toFloats(errorAt<Lanes>(sum, x, y, z)));
        const Doubles cost = Lanes::toDoubles(atMinimum);
        const Mask isFinite = Lanes::both(Lanes::both(areFinite<Lanes>(x), areFinite<Lanes>(y)),
                                          Lanes::both(areFinite<Lanes>(z), areFinite<Lanes>(cost)));
        const Mask hasNone = Lanes::either(minima.isSingular, Lanes::negated(isFinite));
        const Mask search = settings.useDegeneracySearch
                                ? Lanes::either(hasNone, areNearlySingular<Lanes>(sum))
                                : hasNone;
        Lanes::store(costs + i, atMinimum);
        if (!Lanes::any(search)) continue;
        const Doubles none = Lanes::splat(static_cast<double>(settings.notCollapsible));
        isUndecided |= searchAlongEdges<Lanes>(sum, search, ends, pair, settings,
                                               Lanes::select(hasNone, none, cost), costs + i);
    }
    return isUndecided;
}

}  // namespace korvalite::core::lanes
