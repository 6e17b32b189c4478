// SPDX-License-Identifier: MIT
#include "mesh/progressive_mesh.h"

namespace korvalite {

const char* memSpeedTradeOffText(std::int32_t value) {
    switch (value) {
    case MEMSPEED_TRADEOFF_HIGH_SPEED: return "MEMSPEED_TRADEOFF_HIGH_SPEED";
    case MEMSPEED_TRADEOFF_LOW_MEM: return "MEMSPEED_TRADEOFF_LOW_MEM (SingleThread)";
    case MEMSPEED_TRADEOFF_LOW_MEM_MT: return "MEMSPEED_TRADEOFF_LOW_MEM_MT";
    case MEMSPEED_TRADEOFF_HEC: return "MEMSPEED_TRADEOFF_HEC";
    case MEMSPEED_TRADEOFF_MELAX: return "MEMSPEED_TRADEOFF_MELAX";
    case MEMSPEED_TRADEOFF_AUTO: return "MEMSPEED_TRADEOFF_AUTO";
    default: return "MEMSPEED_TRADEOFF_UNKNOWN";
    }
}

const char* borderModeText(std::int32_t value) {
    switch (value) {
    case BORDER_MODE_NONE: return "BORDER_MODE_NONE";
    case BORDERMODE_PROTECT: return "BORDERMODE_PROTECT";
    case BORDERMODE_FREEZE: return "BORDERMODE_FREEZE";
    default: return "BORDER_MODE_UNKNOWN";
    }
}

void ResetProgressiveMeshSettings(ProgressiveMesh& pm) {
    pm.mesh = DMesh{};
    static_cast<DecimationSettings&>(pm) = DecimationSettings{};
}

void ClearDecimationState(ProgressiveMesh& pm) {
    pm.CurVtxSplitPos = kNone;
    pm.askedNumItem = kNone;
    pm.finalDecimNumItem = kNone;
    pm.decimationFinishTriangleCount = kNone;
    pm.IsReordered = false;
    pm.IsCleaned = false;
    pm.symmetryPaired.Free();
    pm.symmetryInterior.Free();
    pm.symmetrySlaves.Free();
    pm.triangleQuadrics.clear();
    pm.vertexQuadrics.clear();
    pm.bestPositions.clear();
    pm.hasBestPosition.Free();
    pm.triangleNormals.clear();
    pm.vsplitList.close();
}

}  // namespace korvalite
