// SPDX-License-Identifier: MIT
//
// Moves a decimated mesh up and down its splits, with no cost work. Thread safety: none.
#pragma once

#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Brings the active count (vertices or triangles, as targetCountsVertices says) to `target`, or as
/// near as the splits reach, from wherever CurVtxSplitPos stands; a negative target means the
/// coarsest level. A collapse that leaves a vertex without triangles leaves it active. Always 0.
/// The corner lists are not kept up to date.
int updateMeshAtLevel(ProgressiveMesh& pm, std::int32_t target);

/// Applies again the record in front of CurVtxSplitPos: the collapse of v onto w.
void ApplyCollapse(ProgressiveMesh& pm, std::int32_t v, std::int32_t w);

}  // namespace korvalite
