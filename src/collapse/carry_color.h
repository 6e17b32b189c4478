// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/dmesh.h"
#include "metric/edge_cost.h"
#include "splits/vsplit.h"

#include <cstdint>

namespace korvalite {

/// Sets red, green and blue of the kept vertex and saves the old colour in the split. Does nothing
/// with a metric without colours.
template <typename Metric>
void carryColor(DMesh& mesh, VSplit& split, std::int32_t kept, const EdgeEvaluation& evaluation) {
    if constexpr (Metric::kHasColor) {
        std::uint32_t& color = mesh.vertexColors[kept];
        split.savedColor = color;
        const std::uint32_t fourthByte = color & 0xFF000000U;
        storeRelaxed(color, fourthByte | (static_cast<std::uint32_t>(evaluation.color[2]) << 16U) |
                                (static_cast<std::uint32_t>(evaluation.color[1]) << 8U) |
                                evaluation.color[0]);
    }
}

}  // namespace korvalite
