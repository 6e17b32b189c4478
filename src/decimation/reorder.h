// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Closes a decimation: releases all its working state and, with `reorder`, renumbers vertices and
/// triangles so that each lower level is a prefix of the arrays: first what survives, in its old
/// order, then what each split brings back, the last collapse first.
/// Takes 4 bytes a vertex and 4 a triangle beside the mesh, for the two maps.
void ReorderAndClean(ProgressiveMesh& pm, bool reorder);

}  // namespace korvalite
