// SPDX-License-Identifier: MIT
#include "progressive/progressive_mesh.h"

namespace korvalite::core {

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

void ResetProgressiveMeshSettings(ProgressiveMesh& pm) {
    pm.mesh = DMesh{};
    static_cast<MetricSettings&>(pm) = {};
    static_cast<CollapseSettings&>(pm) = {};
    static_cast<CostFormSettings&>(pm) = {};
    static_cast<RunSettings&>(pm) = {};
}

void ClearDecimationState(ProgressiveMesh& pm) {
    static_cast<RunResults&>(pm) = {};
    pm.symmetryPaired.Free();
    pm.symmetryInterior.Free();
    pm.symmetrySlaves.Free();
    pm.vsplitList.close();
}

}  // namespace korvalite::core
