// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"

namespace korvalite {

/// Decides m_handleUVs_internal and builds the UV indices, UV corner lists and seam bits.
/// REQUIRES: the vertex corner lists.
void prepareUVs(ProgressiveMesh& pm);

/// Computes colorScale: a colour byte times this scale is a length that the metric can compare with
/// distances.
void computeColorScale(ProgressiveMesh& pm);

}  // namespace korvalite
