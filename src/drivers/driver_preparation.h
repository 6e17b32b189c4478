// SPDX-License-Identifier: MIT
//
// What every driver builds before its first collapse.
#pragma once

#include "progressive/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Builds the corner lists if they are missing, clears the decimation state and computes the border
/// bits.
void prepareAdjacency(ProgressiveMesh& pm);

/// Which vertices a driver does not let collapse in pairs, and whether its metric includes the
/// plane.
struct SymmetryNeeds {
    bool pairsMustShareColors = true;
    bool planeQuadric = true;
};

/// Decides m_handleSymmetry_internal and builds pairing, slaves and plane quadric. Separates pairs
/// with different masks (or colours), whose vertices then collapse independently.
void prepareSymmetry(ProgressiveMesh& pm, const SymmetryNeeds& needs);

/// All of the above for drivers that hold their metric in memory: also begins the main task, and
/// handles neither UVs nor colours.
void prepareInMemoryDriver(ProgressiveMesh& pm, bool planeQuadric);

/// Opens the list of splits if the run records them.
void openVSplitList(ProgressiveMesh& pm, std::uint32_t threadCount = 1);

}  // namespace korvalite
