// SPDX-License-Identifier: MIT
#include "drivers/run_decimation.h"

#include "base/debug_log.h"
#include "drivers/in_memory_drivers.h"
#include "drivers/low_memory_driver.h"
#include "drivers/threads/multi_thread_driver.h"
#include "progressive/progressive_mesh.h"
#include "progressive/reorder.h"

#include <new>

namespace korvalite::core {

namespace {

constexpr int kSuccess = 0;
constexpr int kOutOfMemory = 2;

template <typename Metric>
int runLowMemoryDriver(ProgressiveMesh& pm) {
    return pm.MemSpeedTradeOff == MEMSPEED_TRADEOFF_LOW_MEM_MT ? doDecimation_LM_MT<Metric>(pm)
                                                               : doDecimation_LM<Metric>(pm);
}

int runLowMemoryDriver(ProgressiveMesh& pm) {
    // COMPAT: also true without any vertices; a flag in .kvm files, and comments in .obj files.
    pm.m_useVertexColors_internal = pm.mesh.vertexColors.size() == pm.mesh.vertices.size();
    return pm.m_useVertexColors_internal ? runLowMemoryDriver<ColorMetric>(pm)
                                         : runLowMemoryDriver<PlainMetric>(pm);
}

int runDriver(ProgressiveMesh& pm) {
    switch (pm.MemSpeedTradeOff) {
    case MEMSPEED_TRADEOFF_HIGH_SPEED: return doDecimation_HS(pm);
    case MEMSPEED_TRADEOFF_LOW_MEM:
    case MEMSPEED_TRADEOFF_LOW_MEM_MT: return runLowMemoryDriver(pm);
    case MEMSPEED_TRADEOFF_MELAX: return doDecimation_Melax(pm);
    // COMPAT: other values decimate nothing and succeed; programs that use the library rely on it.
    default: return kSuccess;
    }
}

}  // namespace

int RunDecimation(ProgressiveMesh& pm) {
    try {
        pm.askedNumItem = static_cast<std::int32_t>(pm.TargetNumItem);
        const int result = runDriver(pm);
        pm.finalDecimNumItem = static_cast<std::int32_t>(pm.activeCount());
        DebugLog("    m_handleSymmetry_internal=%s", trueOrFalse(pm.m_handleSymmetry_internal));
        DebugLog("    m_handleUVs_internal=%s", trueOrFalse(pm.m_handleUVs_internal));
        DebugLog("    m_useVertexColors_internal=%s", trueOrFalse(pm.m_useVertexColors_internal));
        DebugLog("    useMask=%s", trueOrFalse(pm.mesh.hasMask()));
        DebugLog("  EdgeCollapse step done : %d vtx -> %d vtx !", pm.mesh.vertexCount(),
                 pm.mesh.numActiveVertices);
        DebugLog("  starting reordering step");
        pm.monitor->BeginSubTask("reordering", -1);
        ReorderAndClean(pm, pm.DoReorder);
        pm.monitor->EndSubTask();
        DebugLog("  reordering done");
        return result;
    } catch (const std::bad_alloc&) {
        DebugLog(" *** NOT_ENOUGH_MEMORY ERROR !!! *****");
        pm.monitor->EndMainTask();
        return kOutOfMemory;
    }
}

}  // namespace korvalite::core
