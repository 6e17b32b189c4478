// SPDX-License-Identifier: MIT
#pragma once

#include "lanes/color_kernels.h"
#include "lanes/edge_costs.h"
#include "lanes/kernels.h"
#include "lanes/quadric_sums.h"

#include <cstddef>
#include <cstdint>

namespace korvalite::core::lanes {

template <typename Lanes>
std::size_t keepDistinct(const std::int32_t* items, std::size_t count, std::int32_t* distinct) {
    const unsigned keep = Lanes::firstOccurrences(items) & ((1U << count) - 1U);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        distinct[kept] = items[i];
        kept += (keep >> i) & 1U;
    }
    return kept;
}

template <typename Lanes>
constexpr Kernels kernelsOf(const char* name) {
    return {name,
            sumTriangleQuadrics<Lanes>,
            sumVertexQuadric<Lanes>,
            evaluateEdges<Lanes>,
            sumTriangleColorQuadrics<Lanes>,
            sumVertexColorQuadric<Lanes>,
            evaluateColorEdges<Lanes>,
            keepDistinct<Lanes>};
}

#if defined(KORVALITE_HAS_LANES)
extern const Kernels kSse2Kernels;
extern const Kernels kAvx2Kernels;
#endif

}  // namespace korvalite::core::lanes
