// SPDX-License-Identifier: MIT
//
// Costs of edges in lanes, as in evaluateEdge where the edge may go to the quadric's minimum. What
// the plain routine decides by branches is computed for all lanes, and each takes its own.
#pragma once

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
void swapWhere(typename Lanes::Mask swaps, typename Lanes::Doubles& a, typename Lanes::Doubles& b) {
    const typename Lanes::Doubles kept = a;
    a = Lanes::select(swaps, b, a);
    b = Lanes::select(swaps, kept, b);
}

template <typename Lanes>
Minima<Lanes> minimaOf(const EdgeQuadrics<Lanes>& quadrics) {
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    const Doubles* const q = quadrics.q;
    const Doubles zero = Lanes::splat(0.0);
    const Doubles one = Lanes::splat(1.0);
    const auto isLarger = [](Doubles a, Doubles b) {
        return Lanes::greater(Lanes::absolute(a), Lanes::absolute(b));
    };

    // Rows r0, r1, r2 of the symmetric matrix, the largest first element on top.
    Doubles r00 = q[0];
    Doubles r01 = q[1];
    Doubles r02 = q[2];
    Doubles r10 = q[1];
    Doubles r11 = q[3];
    Doubles r12 = q[4];
    Doubles r20 = q[2];
    Doubles r21 = q[4];
    Doubles r22 = q[5];
    const Mask swaps12 = isLarger(r20, r10);
    swapWhere<Lanes>(swaps12, r10, r20);
    swapWhere<Lanes>(swaps12, r11, r21);
    swapWhere<Lanes>(swaps12, r12, r22);
    const Mask swaps01 = isLarger(r10, r00);
    swapWhere<Lanes>(swaps01, r00, r10);
    swapWhere<Lanes>(swaps01, r01, r11);
    swapWhere<Lanes>(swaps01, r02, r12);

    // Rows s1 and s2 without their first element; b is the right half below the diagonal.
    const Doubles factor1 = r10 / r00;
    const Doubles factor2 = r20 / r00;
    Doubles s11 = r11 - factor1 * r01;
    Doubles s12 = r12 - factor1 * r02;
    Doubles s1b = zero - factor1;
    Doubles s21 = r21 - factor2 * r01;
    Doubles s22 = r22 - factor2 * r02;
    Doubles s2b = zero - factor2;
    const Mask swapsS = isLarger(s21, s11);
    swapWhere<Lanes>(swapsS, s11, s21);
    swapWhere<Lanes>(swapsS, s12, s22);
    swapWhere<Lanes>(swapsS, s1b, s2b);

    const Doubles factor = s21 / s11;
    const Doubles pivot2 = s22 - factor * s12;
    const Mask isSingular =
        Lanes::either(Lanes::either(Lanes::equal(r00, zero), Lanes::equal(s11, zero)),
                      Lanes::equal(pivot2, zero));

    const Doubles reciprocal2 = one / pivot2;
    const Doubles reduced = Lanes::select(Lanes::equal(s1b, zero), s2b, s2b - factor * s1b);
    const Doubles z0 = reduced * reciprocal2;
    const Doubles z1 = (zero - factor) * reciprocal2;
    const Doubles z2 = reciprocal2;
    const Doubles reciprocal1 = one / s11;
    const Doubles y0 = (s1b - s12 * z0) * reciprocal1;
    const Doubles y1 = (one - s12 * z1) * reciprocal1;
    const Doubles y2 = (zero - s12 * z2) * reciprocal1;
    const Doubles reciprocal0 = one / r00;
    const Doubles x0 = (one - r02 * z0 - r01 * y0) * reciprocal0;
    const Doubles x1 = (zero - r02 * z1 - r01 * y1) * reciprocal0;
    const Doubles x2 = (zero - r02 * z2 - r01 * y2) * reciprocal0;

    // Column j of the inverse belongs to the matrix row that became pivot j, and a row of it times
    // the linear part is summed in matrix order: sort the columns back.
    const Mask thirdIsFirst = Lanes::both(swaps12, swaps01);  // row 2 became the first pivot
    const Mask thirdIsLast = Lanes::either(Lanes::both(Lanes::butNot(swaps12, swaps01), swapsS),
                                           Lanes::butNot(Lanes::negated(swaps12), swapsS));
    // Of the other two columns, whether row 0's comes before row 1's.
    const Mask inOrder = Lanes::either(Lanes::negated(swaps01), Lanes::butNot(swaps12, swapsS));
    const Doubles linearA = Lanes::select(inOrder, q[6], q[7]);
    const Doubles linearB = Lanes::select(inOrder, q[7], q[6]);
    const auto coordinate = [&](Doubles v0, Doubles v1, Doubles v2) {
        const Doubles a = Lanes::select(thirdIsFirst, v1, v0);
        const Doubles b = Lanes::select(thirdIsLast, v1, v2);
        const Doubles c = Lanes::select(thirdIsLast, v2, Lanes::select(thirdIsFirst, v0, v1));
        return -(a * linearA + b * linearB + c * q[8]);
    };
    return {coordinate(x0, x1, x2), coordinate(y0, y1, y2), coordinate(z0, z1, z2), isSingular};
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
        EdgeQuadrics<Lanes> sum;
        Lanes::sumOfEnds(quadrics, pair, sum.q);
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
