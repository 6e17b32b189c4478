// SPDX-License-Identifier: MIT
//
// Colours and UVs, carried along after a successful collapse.
#pragma once

#include "collapse/sharing.h"
#include "mesh/corner_lists.h"
#include "mesh/dmesh.h"
#include "metric/edge_cost.h"
#include "splits/vsplit.h"

#include <cstdint>

namespace korvalite::core {

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

/// Updates the UVs after a successful collapse of `removed` onto `kept`: merges the UV indices of
/// the removed vertex into those of the kept one, places the surviving UVs, and fills the UV lists
/// of `split` so that everything can be reversed. In `triangles` the corners of `removed` are
/// already `kept`, but the record of `removed` still holds its position. `scratch` is any list.
/// REQUIRES: UVs are handled, so the UV corner lists and seam bits exist.
///
/// Shared, it moves a seam corner mark only together with a seam.
template <SharingPolicy Sharing>
void UpdateUVsAfterCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                            IndexList& scratch, const Sharing& sharing);

}  // namespace korvalite::core
