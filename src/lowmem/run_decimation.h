// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

struct ProgressiveMesh;

/// Runs the driver of MemSpeedTradeOff, then closes the decimation. 0 for success, 2 when memory is
/// exhausted, which leaves the mesh as it stands. Main thread only.
int RunDecimation(ProgressiveMesh& pm);

}  // namespace korvalite
