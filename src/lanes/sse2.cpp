// SPDX-License-Identifier: MIT
//
// Two lanes, which every 64-bit x86 processor has.
#include "lanes/edge_costs.h"
#include "lanes/kernel_table.h"
#include "lanes/quadric_sums.h"

#include <emmintrin.h>

namespace korvalite::core::lanes {

namespace {

struct Sse2 {
    static constexpr std::size_t kWidth = 2;
    using Doubles = __m128d;
    using Floats = __m128;  // the lower half
    using Ints = __m128i;   // the lower half
    using Mask = __m128d;
    struct FloatPoints {
        Floats x, y, z;
    };
    /// aa bb, cc dd, ab bc, cd ad, ac bd
    struct Quadric {
        __m128d pairs[5];
    };

    static Doubles splat(double x) { return _mm_set1_pd(x); }
    static Floats splatFloat(float x) { return _mm_set1_ps(x); }
    static Doubles absolute(Doubles x) { return _mm_andnot_pd(splat(-0.0), x); }
    static Doubles squareRoot(Doubles x) { return _mm_sqrt_pd(x); }
    static Floats toFloats(Doubles x) { return _mm_cvtpd_ps(x); }
    static Doubles toDoubles(Floats x) { return _mm_cvtps_pd(x); }
    /// Keeps NaN and -0.
    static Floats atLeastZero(Floats x) { return _mm_max_ps(_mm_setzero_ps(), x); }
    static void store(float* to, Floats x) { _mm_storel_pi(reinterpret_cast<__m64*>(to), x); }

    static Doubles loadDoubles(const double* from) { return _mm_load_pd(from); }
    static void storeDoubles(double* to, Doubles x) { _mm_store_pd(to, x); }

    static Mask greater(Doubles a, Doubles b) { return _mm_cmpgt_pd(a, b); }
    static Mask equal(Doubles a, Doubles b) { return _mm_cmpeq_pd(a, b); }
    static Mask both(Mask a, Mask b) { return _mm_and_pd(a, b); }
    static Mask either(Mask a, Mask b) { return _mm_or_pd(a, b); }
    static Mask butNot(Mask a, Mask b) { return _mm_andnot_pd(b, a); }
    static Mask negated(Mask a) { return _mm_xor_pd(a, _mm_castsi128_pd(_mm_set1_epi32(-1))); }
    static bool any(Mask a) { return _mm_movemask_pd(a) != 0; }
    static Doubles select(Mask mask, Doubles yes, Doubles no) {
        return _mm_or_pd(_mm_and_pd(mask, yes), _mm_andnot_pd(mask, no));
    }

    static Floats record(const Positions& positions, std::uint32_t index) {
        const char* const first = static_cast<const char*>(positions.first);
        return _mm_loadu_ps(reinterpret_cast<const float*>(first + positions.stride * index));
    }
    /// The points of every kStep-th index.
    template <std::size_t kStep>
    static FloatPoints gatherFloats(const Positions& positions, const std::uint32_t* indices) {
        const Floats r0 = record(positions, indices[0]);
        const Floats r1 = record(positions, indices[kStep]);
        const Floats xy = _mm_unpacklo_ps(r0, r1);
        return {xy, _mm_movehl_ps(xy, xy), _mm_unpackhi_ps(r0, r1)};
    }
    template <std::size_t kStep>
    static Points<Sse2> gather(const Positions& positions, const std::uint32_t* indices) {
        const FloatPoints p = gatherFloats<kStep>(positions, indices);
        return {toDoubles(p.x), toDoubles(p.y), toDoubles(p.z)};
    }

    template <std::size_t kStep>
    static Ints gatherInts(const std::uint32_t* items, const std::uint32_t* indices) {
        return _mm_setr_epi32(static_cast<std::int32_t>(items[indices[0]]),
                              static_cast<std::int32_t>(items[indices[kStep]]), 0, 0);
    }
    static Doubles byteOf(Ints items, int byte) {
        return _mm_cvtepi32_pd(
            _mm_and_si128(_mm_srli_epi32(items, 8 * byte), _mm_set1_epi32(0xFF)));
    }

    /// Of two rows.
    static void transpose(Doubles* rows) {
        const __m128d first = _mm_unpacklo_pd(rows[0], rows[1]);
        rows[1] = _mm_unpackhi_pd(rows[0], rows[1]);
        rows[0] = first;
    }

    /// Calls add(lane, quadric) for the quadric of each plane.
    template <bool kAreaWeighted, typename Add>
    static void forEachQuadric(const Planes<Sse2>& planes, Add add) {
        const __m128d ab[2] = {_mm_unpacklo_pd(planes.a, planes.b),
                               _mm_unpackhi_pd(planes.a, planes.b)};
        const __m128d cd[2] = {_mm_unpacklo_pd(planes.c, planes.d),
                               _mm_unpackhi_pd(planes.c, planes.d)};
        alignas(16) double weights[2];
        _mm_store_pd(weights, planes.weight);
        for (std::size_t lane = 0; lane < 2; ++lane) {
            const __m128d bc = _mm_shuffle_pd(ab[lane], cd[lane], 1);
            const __m128d da = _mm_shuffle_pd(cd[lane], ab[lane], 1);
            Quadric quadric{{ab[lane] * ab[lane], cd[lane] * cd[lane], ab[lane] * bc, cd[lane] * da,
                             ab[lane] * cd[lane]}};
            if constexpr (kAreaWeighted) {
                const __m128d weight = _mm_set1_pd(weights[lane]);
                for (__m128d& pair : quadric.pairs)
                    pair *= weight;
            }
            add(lane, quadric);
        }
    }
    static void add(LaneQuadric& sum, const Quadric& quadric) {
        for (std::size_t i = 0; i < 5; ++i) {
            double* const pair = sum.q + 2 * i;
            _mm_store_pd(pair, _mm_load_pd(pair) + quadric.pairs[i]);
        }
    }

    /// The sums of the quadrics of both ends of each edge, in the order of PlaneQuadric.
    static EdgeQuadrics<Sse2> sumOfEnds(const LaneQuadric* quadrics, const std::uint32_t* ends) {
        __m128d first[5];
        __m128d second[5];
        for (std::size_t i = 0; i < 5; ++i) {
            const auto pair = [&](std::size_t end) {
                return _mm_load_pd(quadrics[ends[end]].q + 2 * i);
            };
            const __m128d edge0 = pair(0) + pair(1);
            const __m128d edge1 = pair(2) + pair(3);
            first[i] = _mm_unpacklo_pd(edge0, edge1);
            second[i] = _mm_unpackhi_pd(edge0, edge1);
        }
        return {{first[0], first[2], first[4], second[0], second[2], first[1], second[3], second[4],
                 first[3], second[1]}};
    }

    /// A bit for each of 16 items that is the first of its kind.
    static unsigned firstOccurrences(const std::int32_t* items) {
        unsigned seen = 0;
        for (int quarter = 0; quarter < 4; ++quarter) {
            const __m128i four =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(items + 4 * quarter));
            const __m128i places =
                _mm_add_epi32(_mm_setr_epi32(0, 1, 2, 3), _mm_set1_epi32(4 * quarter));
            __m128i fourSeen = _mm_setzero_si128();
            for (int place = 0; place < 4 * quarter + 3; ++place) {
                const __m128i equal = _mm_cmpeq_epi32(four, _mm_set1_epi32(items[place]));
                const __m128i after = _mm_cmpgt_epi32(places, _mm_set1_epi32(place));
                fourSeen = _mm_or_si128(fourSeen, _mm_and_si128(equal, after));
            }
            seen |= static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(fourSeen)))
                    << (4U * static_cast<unsigned>(quarter));
        }
        return ~seen;
    }
};

}  // namespace

constinit const Kernels kSse2Kernels = kernelsOf<Sse2>("sse2");

}  // namespace korvalite::core::lanes
