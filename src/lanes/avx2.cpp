// SPDX-License-Identifier: MIT
//
// Four lanes. Compiled with AVX2 and without fused multiplication, which would round once less.
#include "lanes/edge_costs.h"
#include "lanes/kernel_table.h"
#include "lanes/quadric_sums.h"

#include <immintrin.h>

namespace korvalite::core::lanes {

namespace {

struct Avx2 {
    static constexpr std::size_t kWidth = 4;
    using Doubles = __m256d;
    using Floats = __m128;
    using Ints = __m128i;
    using Mask = __m256d;
    struct FloatPoints {
        Floats x, y, z;
    };
    /// aa bb cc dd, ab bc cd ad, ac bd
    struct Quadric {
        __m256d squares;
        __m256d neighbours;
        __m128d rest;
    };

    static Doubles splat(double x) { return _mm256_set1_pd(x); }
    static Floats splatFloat(float x) { return _mm_set1_ps(x); }
    static Doubles absolute(Doubles x) { return _mm256_andnot_pd(splat(-0.0), x); }
    static Doubles squareRoot(Doubles x) { return _mm256_sqrt_pd(x); }
    static Floats toFloats(Doubles x) { return _mm256_cvtpd_ps(x); }
    static Doubles toDoubles(Floats x) { return _mm256_cvtps_pd(x); }
    /// Keeps NaN and -0.
    static Floats atLeastZero(Floats x) { return _mm_max_ps(_mm_setzero_ps(), x); }
    static void store(float* to, Floats x) { _mm_storeu_ps(to, x); }

    static Doubles loadDoubles(const double* from) { return _mm256_load_pd(from); }
    static void storeDoubles(double* to, Doubles x) { _mm256_store_pd(to, x); }

    static Mask greater(Doubles a, Doubles b) { return _mm256_cmp_pd(a, b, _CMP_GT_OQ); }
    static Mask equal(Doubles a, Doubles b) { return _mm256_cmp_pd(a, b, _CMP_EQ_OQ); }
    static Mask both(Mask a, Mask b) { return _mm256_and_pd(a, b); }
    static Mask either(Mask a, Mask b) { return _mm256_or_pd(a, b); }
    static Mask butNot(Mask a, Mask b) { return _mm256_andnot_pd(b, a); }
    static Mask negated(Mask a) {
        return _mm256_xor_pd(a, _mm256_castsi256_pd(_mm256_set1_epi32(-1)));
    }
    static bool any(Mask a) { return _mm256_movemask_pd(a) != 0; }
    static Doubles select(Mask mask, Doubles yes, Doubles no) {
        return _mm256_blendv_pd(no, yes, mask);
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
        const Floats r2 = record(positions, indices[2 * kStep]);
        const Floats r3 = record(positions, indices[3 * kStep]);
        const Floats xy01 = _mm_unpacklo_ps(r0, r1);
        const Floats xy23 = _mm_unpacklo_ps(r2, r3);
        return {_mm_movelh_ps(xy01, xy23), _mm_movehl_ps(xy23, xy01),
                _mm_movelh_ps(_mm_unpackhi_ps(r0, r1), _mm_unpackhi_ps(r2, r3))};
    }
    template <std::size_t kStep>
    static Points<Avx2> gather(const Positions& positions, const std::uint32_t* indices) {
        const FloatPoints p = gatherFloats<kStep>(positions, indices);
        return {toDoubles(p.x), toDoubles(p.y), toDoubles(p.z)};
    }

    template <std::size_t kStep>
    static Ints gatherInts(const std::uint32_t* items, const std::uint32_t* indices) {
        const auto item = [&](std::size_t lane) {
            return static_cast<std::int32_t>(items[indices[kStep * lane]]);
        };
        return _mm_setr_epi32(item(0), item(1), item(2), item(3));
    }
    static Doubles byteOf(Ints items, int byte) {
        return _mm256_cvtepi32_pd(
            _mm_and_si128(_mm_srli_epi32(items, 8 * byte), _mm_set1_epi32(0xFF)));
    }

    /// Of four rows.
    static void transpose(Doubles* rows) {
        const __m256d ab0 = _mm256_unpacklo_pd(rows[0], rows[1]);
        const __m256d ab1 = _mm256_unpackhi_pd(rows[0], rows[1]);
        const __m256d cd0 = _mm256_unpacklo_pd(rows[2], rows[3]);
        const __m256d cd1 = _mm256_unpackhi_pd(rows[2], rows[3]);
        rows[0] = _mm256_permute2f128_pd(ab0, cd0, 0x20);
        rows[1] = _mm256_permute2f128_pd(ab1, cd1, 0x20);
        rows[2] = _mm256_permute2f128_pd(ab0, cd0, 0x31);
        rows[3] = _mm256_permute2f128_pd(ab1, cd1, 0x31);
    }

    /// Calls add(lane, quadric) for the quadric of each plane.
    template <bool kAreaWeighted, typename Add>
    static void forEachQuadric(const Planes<Avx2>& planes, Add add) {
        __m256d plane[4] = {planes.a, planes.b, planes.c, planes.d};
        transpose(plane);
        alignas(32) double weights[4];
        _mm256_store_pd(weights, planes.weight);
        for (std::size_t lane = 0; lane < 4; ++lane) {
            const __m256d abcd = plane[lane];
            const __m256d bcda = _mm256_permute4x64_pd(abcd, 0x39);
            Quadric quadric{abcd * abcd, abcd * bcda,
                            _mm256_castpd256_pd128(abcd) * _mm256_extractf128_pd(abcd, 1)};
            if constexpr (kAreaWeighted) {
                const __m256d weight = _mm256_set1_pd(weights[lane]);
                quadric.squares *= weight;
                quadric.neighbours *= weight;
                quadric.rest *= _mm256_castpd256_pd128(weight);
            }
            add(lane, quadric);
        }
    }
    static void add(LaneQuadric& sum, const Quadric& quadric) {
        double* const q = sum.q;
        _mm256_store_pd(q, _mm256_load_pd(q) + quadric.squares);
        _mm256_store_pd(q + 4, _mm256_load_pd(q + 4) + quadric.neighbours);
        _mm_store_pd(q + 8, _mm_load_pd(q + 8) + quadric.rest);
    }

    /// The sums of the quadrics of both ends of each edge, in the order of PlaneQuadric.
    static EdgeQuadrics<Avx2> sumOfEnds(const LaneQuadric* quadrics, const std::uint32_t* ends) {
        __m256d squares[4];
        __m256d neighbours[4];
        __m128d rest[4];
        for (std::size_t lane = 0; lane < 4; ++lane) {
            const double* const a = quadrics[ends[2 * lane]].q;
            const double* const b = quadrics[ends[2 * lane + 1]].q;
            squares[lane] = _mm256_load_pd(a) + _mm256_load_pd(b);
            neighbours[lane] = _mm256_load_pd(a + 4) + _mm256_load_pd(b + 4);
            rest[lane] = _mm_load_pd(a + 8) + _mm_load_pd(b + 8);
        }
        transpose(squares);
        transpose(neighbours);
        const __m256d rest02 = _mm256_set_m128d(rest[2], rest[0]);
        const __m256d rest13 = _mm256_set_m128d(rest[3], rest[1]);
        return {{squares[0], neighbours[0], _mm256_unpacklo_pd(rest02, rest13), squares[1],
                 neighbours[1], squares[2], neighbours[3], _mm256_unpackhi_pd(rest02, rest13),
                 neighbours[2], squares[3]}};
    }

    /// A bit for each of 16 items that is the first of its kind.
    static unsigned firstOccurrences(const std::int32_t* items) {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(items));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(items + 8));
        const __m256i lowPlaces = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        const __m256i highPlaces = _mm256_setr_epi32(8, 9, 10, 11, 12, 13, 14, 15);
        __m256i lowSeen = _mm256_setzero_si256();
        __m256i highSeen = _mm256_setzero_si256();
        for (int place = 0; place < 15; ++place) {
            const __m256i item = _mm256_set1_epi32(items[place]);
            const __m256i here = _mm256_set1_epi32(place);
            if (place < 7) lowSeen |= seenAfter(low, lowPlaces, item, here);
            highSeen |= seenAfter(high, highPlaces, item, here);
        }
        const auto seen = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(lowSeen))) |
                          static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(highSeen)))
                              << 8U;
        return ~seen;
    }
    static __m256i seenAfter(__m256i items, __m256i places, __m256i item, __m256i place) {
        return _mm256_and_si256(_mm256_cmpeq_epi32(items, item), _mm256_cmpgt_epi32(places, place));
    }
};

}  // namespace

constinit const Kernels kAvx2Kernels = kernelsOf<Avx2>("avx2");

}  // namespace korvalite::core::lanes
