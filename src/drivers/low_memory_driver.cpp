// SPDX-License-Identifier: MIT
#include "drivers/low_memory_driver.h"

#include "base/debug_log.h"
#include "drivers/collapse_loop.h"
#include "drivers/low_memory_hooks.h"
#include "drivers/preparation.h"

namespace korvalite::core {

template <typename Metric>
int doDecimationInit_LM(ProgressiveMesh& pm) {
    DebugLog("   starting doDecimationInit_LM()...");
    prepareLowMemoryRun<Metric>(pm, {.raiseStageFlags = true, .logCostForms = false});
    openVSplitList(pm);
    return 0;
}

template <typename Metric>
int doDecimationLoop_LM(ProgressiveMesh& pm) {
    NeighbourhoodMarks marks;
    marks.prepare(pm.mesh);
    Alone alone(pm);
    LowMemoryHooks<Metric, Alone> driver(pm, marks, alone);
    CollapseLoop(pm, driver, alone).run();
    pm.monitor->EndSubTask();
    // COMPAT: before the result is reordered and written; hosts see no task from then on.
    pm.monitor->EndMainTask();
    pm.monitor->step(RunStep::LoopEnded);
    return 0;
}

template <typename Metric>
int doDecimation_LM(ProgressiveMesh& pm) {
    DebugLog(" starting doDecimation_LM()  <%s> ...", Metric::kId);
    doDecimationInit_LM<Metric>(pm);
    return doDecimationLoop_LM<Metric>(pm);
}

template int doDecimation_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimation_LM<ColorMetric>(ProgressiveMesh&);
template int doDecimationInit_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimationInit_LM<ColorMetric>(ProgressiveMesh&);
template int doDecimationLoop_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimationLoop_LM<ColorMetric>(ProgressiveMesh&);

}  // namespace korvalite::core
