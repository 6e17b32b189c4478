// SPDX-License-Identifier: MIT
//
// What every driver builds before its first collapse.
#pragma once

#include "progressive/progressive_mesh.h"

#include <cstdint>

namespace korvalite::core {

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

/// Decides m_handleUVs_internal and builds the UV indices, UV corner lists and seam bits.
/// REQUIRES: the vertex corner lists.
void prepareUVs(ProgressiveMesh& pm);

/// Computes colorScale: a colour byte times this scale is a length that the metric can compare with
/// distances.
void computeColorScale(ProgressiveMesh& pm);

/// Adjacency and symmetry for drivers that hold their metric in memory: also begins the main task,
/// and handles neither UVs nor colours.
void prepareInMemoryDriver(ProgressiveMesh& pm, bool planeQuadric);

/// The differences between the preparation for one thread and for several.
struct LowMemoryPreparation {
    bool raiseStageFlags;  // now; if false, only the first, once all threads have started
    bool logCostForms;
};

/// Builds everything that both low-memory drivers need before the first collapse: adjacency,
/// symmetry, UVs, colour scale, costs and the queue. Main thread only.
template <typename Metric>
void prepareLowMemoryRun(ProgressiveMesh& pm, const LowMemoryPreparation& preparation);

/// Opens the list of splits if the run records them.
void openVSplitList(ProgressiveMesh& pm, std::uint32_t threadCount = 1);

}  // namespace korvalite::core
