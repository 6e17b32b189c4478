// SPDX-License-Identifier: MIT
//
// UVs per corner become UVs per index, and the vertices on a seam become known. A seam is where one
// vertex has several UV coordinates; a seam corner is where a seam ends, branches or bends.
#pragma once

#include "mesh/dmesh.h"

namespace korvalite {

/// Turns one UV record per corner into records shared by the corners of a vertex whose UVs lie
/// closer than sqrt(1e-5); the first in ascending corner order is kept.
/// UVs that fit neither form (not one record per corner, no complete index) are dropped.
/// REQUIRES: the vertex corner lists.
void WeldCornerUVs(DMesh& mesh);

/// Sets uvSeamCoords, uvSeamVertices and uvSeamCorners anew.
/// REQUIRES: the UV corner lists; indicesUV complete.
void ComputeUVSeams(DMesh& mesh);

}  // namespace korvalite
