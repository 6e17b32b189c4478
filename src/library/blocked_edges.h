// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"
#include <korvalite/korvalite.h>

#include <string>

namespace korvalite {

/// Why no more edges of a run collapse. REQUIRES: its loop has just ended. Collapses edges to see
/// what happens, and undoes it, which changes only the order of corner lists and the queue.
[[nodiscard]] BlockedEdges countBlockedEdges(core::ProgressiveMesh& pm);

/// What would let the run go on.
[[nodiscard]] std::string adviceFor(const BlockedEdges& blocked, const core::ProgressiveMesh& pm);

}  // namespace korvalite
