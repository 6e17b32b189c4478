// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::core {

struct ProgressiveMesh;

/// Runs the driver selected by MemSpeedTradeOff, then finishes the decimation. Returns 0 on
/// success, 2 if out of memory, with the mesh left in its current state. Main thread only.
int RunDecimation(ProgressiveMesh& pm);

}  // namespace korvalite::core
