// SPDX-License-Identifier: MIT
//
// The bits of vertices that a collapse must treat with care: on a border or on a UV seam.
//
// A UV seam is where one vertex has several UV coordinates; a seam corner is where a seam ends,
// branches or bends.
#pragma once

#include "mesh/dmesh.h"

namespace korvalite::core {

/// Recomputes `borderVertices`: a vertex is on a border if its number of distinct neighbours
/// differs from its number of corners. A closed fan has as many of each, an open fan has one more
/// neighbour; a non-manifold vertex may have fewer neighbours and also counts as border.
/// REQUIRES: the corner lists.
void ComputeBorderVertices(DMesh& mesh);

/// Turns one UV record per corner into records shared by corners of the same vertex whose UVs are
/// closer than sqrt(1e-5); the first in ascending corner order is kept. Drops UVs in neither form,
/// that is without one record per corner and without a complete index.
/// REQUIRES: the vertex corner lists.
void WeldCornerUVs(DMesh& mesh);

/// Recomputes uvSeamCoords, uvSeamVertices and uvSeamCorners.
/// REQUIRES: the UV corner lists; indicesUV complete.
void ComputeUVSeams(DMesh& mesh);

}  // namespace korvalite::core
