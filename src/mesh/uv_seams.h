// SPDX-License-Identifier: MIT
//
// Welds per-corner UVs into indexed ones and finds the vertices on seams. A seam is where one
// vertex has several UV coordinates; a seam corner is where a seam ends, branches or bends.
#pragma once

#include "mesh/dmesh.h"

namespace korvalite {

/// Turns one UV record per corner into records shared by corners of the same vertex whose UVs are
/// closer than sqrt(1e-5); the first in ascending corner order is kept. Drops UVs in neither form,
/// that is without one record per corner and without a complete index.
/// REQUIRES: the vertex corner lists.
void WeldCornerUVs(DMesh& mesh);

/// Recomputes uvSeamCoords, uvSeamVertices and uvSeamCorners.
/// REQUIRES: the UV corner lists; indicesUV complete.
void ComputeUVSeams(DMesh& mesh);

}  // namespace korvalite
