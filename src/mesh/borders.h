// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/dmesh.h"

namespace korvalite {

/// Recomputes `borderVertices`: a vertex is on a border if its number of distinct neighbours
/// differs from its number of corners. A closed fan has as many of each, an open fan has one more
/// neighbour; a non-manifold vertex may have fewer neighbours and also counts as border.
/// REQUIRES: the corner lists.
void ComputeBorderVertices(DMesh& mesh);

}  // namespace korvalite
