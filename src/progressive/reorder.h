// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"

namespace korvalite::core {

/// Finishes a decimation: frees its working state and, with `reorder`, renumbers vertices and
/// triangles so that each lower level is a prefix of the arrays. The survivors come first, in their
/// old order, followed by what each split restores, starting with the last collapse.
/// The two maps take 4 bytes per vertex and 4 per triangle in addition to the mesh.
void ReorderAndClean(ProgressiveMesh& pm, bool reorder);

}  // namespace korvalite::core
