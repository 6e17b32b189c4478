// SPDX-License-Identifier: MIT
//
// Moves a decimated mesh up and down its splits without computing costs. Thread safety: none.
#pragma once

#include "progressive/progressive_mesh.h"

#include <cstdint>

namespace korvalite::core {

/// Moves the mesh from its current level, CurVtxSplitPos, until the active count (of vertices or
/// triangles, depending on targetCountsVertices) reaches `target`, or as near as the splits allow;
/// a negative target means the coarsest level. Orphans stay active. Always returns 0. Does not
/// update the corner lists.
int updateMeshAtLevel(ProgressiveMesh& pm, std::int32_t target);

/// Reapplies the record before CurVtxSplitPos: the collapse of `removed` onto `kept`.
void ApplyCollapse(ProgressiveMesh& pm, std::int32_t removed, std::int32_t kept);

}  // namespace korvalite::core
