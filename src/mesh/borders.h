// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/dmesh.h"

namespace korvalite {

/// Sets `borderVertices` anew: a vertex is a border vertex when its distinct neighbours and its
/// corners differ in number. A closed fan has as many of each, an open one a neighbour more; a
/// non-manifold vertex may differ the other way and counts as border too.
/// REQUIRES: the corner lists.
void ComputeBorderVertices(DMesh& mesh);

}  // namespace korvalite
