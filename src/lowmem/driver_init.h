// SPDX-License-Identifier: MIT
//
// The preparation that the drivers share: adjacency, borders, symmetry, UVs and the colour scale.
#pragma once

#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Decides m_handleSymmetry_internal and builds pairing, slaves and plane quadric. Pairs whose
/// masks or colours differ are taken apart, so that they collapse on their own.
void prepareSymmetry(ProgressiveMesh& pm);

/// Decides m_handleUVs_internal and builds UV index, UV corner lists and seam bits.
/// REQUIRES: the vertex corner lists.
void prepareUVs(ProgressiveMesh& pm);

/// A colour byte times this scale is a length that the metric can compare with distances.
void computeColorScale(ProgressiveMesh& pm);

}  // namespace korvalite
