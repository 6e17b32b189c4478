// SPDX-License-Identifier: MIT
//
// What every driver builds before its first collapse.
#pragma once

#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Corner lists if they are not there, a clean decimation state, border bits.
void prepareAdjacency(ProgressiveMesh& pm);

/// Which vertices a driver keeps from collapsing in pairs, and whether its metric knows the plane.
struct SymmetryNeeds {
    bool pairsMustShareColors = true;
    bool planeQuadric = true;
};

/// Decides m_handleSymmetry_internal and builds pairing, slaves and plane quadric. Pairs whose
/// masks (or colours) differ are taken apart, so that they collapse on their own.
void prepareSymmetry(ProgressiveMesh& pm, const SymmetryNeeds& needs);

/// All of the above, as the drivers that hold their metric in memory begin: with the main task, and
/// with neither UVs nor colours.
void prepareInMemoryDriver(ProgressiveMesh& pm, bool planeQuadric);

/// Opens the list of splits, if the run records them.
void openVSplitList(ProgressiveMesh& pm, std::uint32_t threadCount = 1);

}  // namespace korvalite
