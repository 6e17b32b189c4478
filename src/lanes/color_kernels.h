// SPDX-License-Identifier: MIT
//
// Quadrics with colours, and the costs of edges by them, in lanes: ComputeTriangleColorQuadric and
// evaluateColorEdge off borders and seams.
#pragma once

#include "lanes/edge_costs.h"
#include "lanes/inverses.h"
#include "lanes/kernels.h"
#include "lanes/quadric_sums.h"

#include <cstddef>
#include <cstdint>

namespace korvalite::core::lanes {

/// A colour quadric in each lane, in the order of ColorQuadric.
template <typename Lanes>
struct ColorQuadrics {
    typename Lanes::Doubles A[6];
    typename Lanes::Doubles G[9];
    typename Lanes::Doubles C;
    typename Lanes::Doubles b1[3];
    typename Lanes::Doubles b2[3];
    typename Lanes::Doubles c;
};

/// Coefficients of one channel's linear function in each lane, as in linearFunction.
template <typename Lanes>
struct LinearFunctions {
    typename Lanes::Doubles gradient[3];
    typename Lanes::Doubles offset;
};

template <typename Lanes>
void addChannel(ColorQuadrics<Lanes>& quadrics, std::size_t channel,
                const LinearFunctions<Lanes>& f) {
    const typename Lanes::Doubles* const g = f.gradient;
    quadrics.A[0] += g[0] * g[0];
    quadrics.A[1] += g[0] * g[1];
    quadrics.A[2] += g[0] * g[2];
    quadrics.A[3] += g[1] * g[1];
    quadrics.A[4] += g[1] * g[2];
    quadrics.A[5] += g[2] * g[2];
    for (std::size_t r = 0; r < 3; ++r) {
        quadrics.G[r + 3 * channel] = -g[r];
        quadrics.b1[r] += f.offset * g[r];
    }
    quadrics.b2[channel] = -f.offset;
    quadrics.c += f.offset * f.offset;
}

/// The linear functions through the corners of each triangle.
template <typename Lanes>
class ColorFunctions {
public:
    using Doubles = typename Lanes::Doubles;

    ColorFunctions(const Points<Lanes>& p, const Points<Lanes>& q, const Points<Lanes>& r,
                   const Points<Lanes>& normal) {
        const Doubles one = Lanes::splat(1.0);
        const Doubles matrix[16] = {p.x, q.x, r.x, normal.x, p.y, q.y, r.y, normal.y,
                                    p.z, q.z, r.z, normal.z, one, one, one, Lanes::splat(0.0)};
        isSingular = eliminateAll<Lanes, 4>(matrix, rows_);
        solveColumns<Lanes, 4>(rows_, columns_);
    }

    /// With the values `w` at the three corners.
    [[nodiscard]] LinearFunctions<Lanes> through(const Doubles* w) const {
        Doubles values[4];
        for (std::size_t k = 0; k < 4; ++k) {
            const Doubles* const column = columns_[k];
            values[k] = w[0] * column[0] + w[1] * column[1] + w[2] * column[2] +
                        Lanes::splat(0.0) * column[3];
        }
        Doubles sorted[4];
        sortBySource<Lanes, 4>(rows_, values, sorted);
        return {{sorted[0], sorted[1], sorted[2]}, sorted[3]};
    }

    typename Lanes::Mask isSingular;

private:
    EliminationRow<Lanes, 4> rows_[4];
    Doubles columns_[4][4];
};

/// Takes the values of `other` where the mask is set.
template <typename Lanes, std::size_t kCount>
void replaceWhere(typename Lanes::Mask mask, typename Lanes::Doubles (&values)[kCount],
                  const typename Lanes::Doubles (&other)[kCount]) {
    for (std::size_t i = 0; i < kCount; ++i)
        values[i] = Lanes::select(mask, other[i], values[i]);
}

template <typename Lanes>
ColorQuadrics<Lanes> planeQuadricsOf(const Planes<Lanes>& plane) {
    const typename Lanes::Doubles zero = Lanes::splat(0.0);
    return {{plane.a * plane.a, plane.a * plane.b, plane.a * plane.c, plane.b * plane.b,
             plane.b * plane.c, plane.c * plane.c},
            {zero, zero, zero, zero, zero, zero, zero, zero, zero},
            zero,
            {plane.a * plane.d, plane.b * plane.d, plane.c * plane.d},
            {zero, zero, zero},
            plane.d * plane.d};
}

template <typename Lanes>
ColorQuadrics<Lanes> colorQuadricsOf(const Positions& vertices, const Colors& colors,
                                     const std::uint32_t* corners) {
    using Doubles = typename Lanes::Doubles;
    const Planes<Lanes> plane = planesOf<Lanes>(vertices, corners);
    // What is left where no linear function exists.
    const ColorQuadrics<Lanes> planes = planeQuadricsOf<Lanes>(plane);
    ColorQuadrics<Lanes> quadrics = planes;
    const ColorFunctions<Lanes> functions(Lanes::template gather<3>(vertices, corners),
                                          Lanes::template gather<3>(vertices, corners + 1),
                                          Lanes::template gather<3>(vertices, corners + 2),
                                          {plane.a, plane.b, plane.c});
    const typename Lanes::Ints packed[3] = {
        Lanes::template gatherInts<3>(colors.first, corners),
        Lanes::template gatherInts<3>(colors.first, corners + 1),
        Lanes::template gatherInts<3>(colors.first, corners + 2)};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        Doubles w[3];
        for (std::size_t k = 0; k < 3; ++k)
            w[k] = Lanes::byteOf(packed[k], static_cast<int>(channel)) * Lanes::splat(colors.scale);
        addChannel<Lanes>(quadrics, channel, functions.through(w));
    }
    const typename Lanes::Mask none = functions.isSingular;
    replaceWhere<Lanes>(none, quadrics.A, planes.A);
    replaceWhere<Lanes>(none, quadrics.G, planes.G);
    quadrics.C = Lanes::select(none, planes.C, Lanes::splat(1.0));
    replaceWhere<Lanes>(none, quadrics.b1, planes.b1);
    replaceWhere<Lanes>(none, quadrics.b2, planes.b2);
    quadrics.c = Lanes::select(none, planes.c, quadrics.c);
    return quadrics;
}

// In memory, a quadric is its 23 coefficients and one place that is not used.
inline constexpr std::size_t kColorPlaces = 24;

template <typename Lanes>
void copyOut(const ColorQuadrics<Lanes>& quadrics, typename Lanes::Doubles* values) {
    for (std::size_t i = 0; i < 6; ++i)
        values[i] = quadrics.A[i];
    for (std::size_t i = 0; i < 9; ++i)
        values[6 + i] = quadrics.G[i];
    values[15] = quadrics.C;
    for (std::size_t i = 0; i < 3; ++i) {
        values[16 + i] = quadrics.b1[i];
        values[19 + i] = quadrics.b2[i];
    }
    values[22] = quadrics.c;
    values[23] = Lanes::splat(0.0);
}

template <typename Lanes>
ColorQuadrics<Lanes> copyIn(const typename Lanes::Doubles* v) {
    return {{v[0], v[1], v[2], v[3], v[4], v[5]},
            {v[6], v[7], v[8], v[9], v[10], v[11], v[12], v[13], v[14]},
            v[15],
            {v[16], v[17], v[18]},
            {v[19], v[20], v[21]},
            v[22]};
}

/// Calls add(lane, parts) for each lane, with its quadric in registers of consecutive coefficients.
template <typename Lanes, typename Add>
void forEachColorQuadric(const ColorQuadrics<Lanes>& quadrics, Add add) {
    typename Lanes::Doubles values[kColorPlaces];
    copyOut<Lanes>(quadrics, values);
    for (std::size_t i = 0; i < kColorPlaces; i += Lanes::kWidth)
        Lanes::transpose(values + i);
    for (std::size_t lane = 0; lane < Lanes::kWidth; ++lane) {
        typename Lanes::Doubles parts[kColorPlaces / Lanes::kWidth];
        for (std::size_t part = 0; part < kColorPlaces / Lanes::kWidth; ++part)
            parts[part] = values[Lanes::kWidth * part + lane];
        add(lane, parts);
    }
}

template <typename Lanes>
void addColorParts(LaneColorQuadric& sum, const typename Lanes::Doubles* parts) {
    for (std::size_t part = 0; part < kColorPlaces / Lanes::kWidth; ++part) {
        double* const place = sum.q + Lanes::kWidth * part;
        Lanes::storeDoubles(place, Lanes::loadDoubles(place) + parts[part]);
    }
}

template <typename Lanes>
void sumTriangleColorQuadrics(const Positions& vertices, const Colors& colors,
                              const TriangleList& triangles, LaneColorQuadric* sums) {
    for (std::size_t i = 0; i < triangles.count; i += Lanes::kWidth) {
        const std::uint32_t* const places = triangles.sums + 3 * i;
        forEachColorQuadric<Lanes>(
            colorQuadricsOf<Lanes>(vertices, colors, triangles.vertices + 3 * i),
            [&](std::size_t lane, const typename Lanes::Doubles* parts) {
                for (std::size_t k = 0; k < 3; ++k)
                    addColorParts<Lanes>(sums[places[3 * lane + k]], parts);
            });
    }
}

template <typename Lanes>
void sumVertexColorQuadric(const Positions& vertices, const Colors& colors,
                           const TriangleList& triangles, LaneColorQuadric* sum) {
    for (std::size_t i = 0; i < triangles.count; i += Lanes::kWidth) {
        forEachColorQuadric<Lanes>(
            colorQuadricsOf<Lanes>(vertices, colors, triangles.vertices + 3 * i),
            [&](std::size_t lane, const typename Lanes::Doubles* parts) {
                if (i + lane < triangles.count) addColorParts<Lanes>(*sum, parts);
            });
    }
}

/// The sums of the quadrics of both ends of each edge.
template <typename Lanes>
ColorQuadrics<Lanes> colorSumsOfEnds(const LaneColorQuadric* quadrics, const std::uint32_t* ends) {
    typename Lanes::Doubles values[kColorPlaces];
    for (std::size_t lane = 0; lane < Lanes::kWidth; ++lane) {
        const double* const a = quadrics[ends[2 * lane]].q;
        const double* const b = quadrics[ends[2 * lane + 1]].q;
        for (std::size_t i = 0; i < kColorPlaces; i += Lanes::kWidth)
            values[i + lane] = Lanes::loadDoubles(a + i) + Lanes::loadDoubles(b + i);
    }
    for (std::size_t i = 0; i < kColorPlaces; i += Lanes::kWidth)
        Lanes::transpose(values + i);
    return copyIn<Lanes>(values);
}

/// a . b of 3x3 matrices, row-major; each element is summed from left to right.
template <typename Lanes>
void multiply(const typename Lanes::Doubles* a, const typename Lanes::Doubles* b,
              typename Lanes::Doubles* result) {
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            result[3 * r + c] = a[3 * r] * b[c] + a[3 * r + 1] * b[3 + c] + a[3 * r + 2] * b[6 + c];
        }
    }
}

/// The blocks of ColorQuadric::InvertBlocks. Returns where there are none.
template <typename Lanes>
typename Lanes::Mask invertBlocks(const ColorQuadrics<Lanes>& q, typename Lanes::Doubles* P,
                                  typename Lanes::Doubles* R, typename Lanes::Doubles* T) {
    using Doubles = typename Lanes::Doubles;
    const Doubles a[9] = {q.A[0], q.A[1], q.A[2], q.A[1], q.A[3], q.A[4], q.A[2], q.A[4], q.A[5]};
    Doubles inverseA[9];
    const typename Lanes::Mask isSingular = invert3<Lanes>(a, inverseA);
    const Doubles* const gTransposed = q.G;
    const Doubles g[9] = {q.G[0], q.G[3], q.G[6], q.G[1], q.G[4], q.G[7], q.G[2], q.G[5], q.G[8]};
    Doubles B[9];
    Doubles S[9];
    multiply<Lanes>(inverseA, g, B);
    multiply<Lanes>(gTransposed, B, S);
    for (std::size_t i = 0; i < 9; ++i)
        S[i] = (i % 4 == 0 ? q.C : Lanes::splat(0.0)) - S[i];
    const typename Lanes::Mask isComplementSingular = invert3<Lanes>(S, T);
    Doubles BT[9];
    Doubles BTG[9];
    multiply<Lanes>(B, T, BT);
    for (std::size_t i = 0; i < 9; ++i)
        R[i] = -BT[i];
    multiply<Lanes>(BT, gTransposed, BTG);
    multiply<Lanes>(BTG, inverseA, P);
    for (std::size_t i = 0; i < 9; ++i)
        P[i] = inverseA[i] + P[i];
    return Lanes::either(isSingular, isComplementSingular);
}

template <typename Lanes>
typename Lanes::Doubles dot3(const typename Lanes::Doubles* a, const typename Lanes::Doubles* b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// As in ColorQuadric::Evaluate.
template <typename Lanes>
typename Lanes::Doubles colorErrorAt(const ColorQuadrics<Lanes>& q,
                                     const typename Lanes::Doubles* x,
                                     const typename Lanes::Doubles* s) {
    using Doubles = typename Lanes::Doubles;
    const Doubles two = Lanes::splat(2.0);
    const Doubles Ax[3] = {q.A[0] * x[0] + q.A[1] * x[1] + q.A[2] * x[2],
                           q.A[1] * x[0] + q.A[3] * x[1] + q.A[4] * x[2],
                           q.A[2] * x[0] + q.A[4] * x[1] + q.A[5] * x[2]};
    const Doubles Gs[3] = {q.G[0] * s[0] + q.G[3] * s[1] + q.G[6] * s[2],
                           q.G[1] * s[0] + q.G[4] * s[1] + q.G[7] * s[2],
                           q.G[2] * s[0] + q.G[5] * s[1] + q.G[8] * s[2]};
    return dot3<Lanes>(x, Ax) + two * dot3<Lanes>(x, Gs) + q.C * dot3<Lanes>(s, s) +
           two * (dot3<Lanes>(q.b1, x) + dot3<Lanes>(q.b2, s)) + q.c;
}

template <typename Lanes>
void evaluateColorEdges(const LaneColorQuadric* quadrics, const EdgeList& edges,
                        float notCollapsible, float* costs) {
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    const Doubles none = Lanes::splat(static_cast<double>(notCollapsible));
    for (std::size_t i = 0; i < edges.count; i += Lanes::kWidth) {
        const ColorQuadrics<Lanes> q = colorSumsOfEnds<Lanes>(quadrics, edges.ends + 2 * i);
        Doubles P[9];
        Doubles R[9];
        Doubles T[9];
        Mask isWithout = invertBlocks<Lanes>(q, P, R, T);
        Doubles x[3];
        Doubles s[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const Doubles column[3] = {R[k], R[3 + k], R[6 + k]};
            x[k] = -(dot3<Lanes>(P + 3 * k, q.b1) + dot3<Lanes>(R + 3 * k, q.b2));
            s[k] = -(dot3<Lanes>(column, q.b1) + dot3<Lanes>(T + 3 * k, q.b2));
        }
        const Doubles cost =
            Lanes::toDoubles(Lanes::atLeastZero(Lanes::toFloats(colorErrorAt<Lanes>(q, x, s))));
        Mask isFinite = areFinite<Lanes>(cost);
        for (const Doubles& coordinate : x) {
            const Doubles rounded = Lanes::toDoubles(Lanes::toFloats(coordinate));
            isFinite = Lanes::both(isFinite, areFinite<Lanes>(rounded));
        }
        isWithout = Lanes::either(isWithout, Lanes::negated(isFinite));
        Lanes::store(costs + i, Lanes::toFloats(Lanes::select(isWithout, none, cost)));
    }
}

}  // namespace korvalite::core::lanes
