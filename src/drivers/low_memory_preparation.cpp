// SPDX-License-Identifier: MIT
#include "drivers/low_memory_preparation.h"

#include "drivers/attribute_preparation.h"
#include "drivers/driver_preparation.h"
#include "metric/metric.h"
#include "ranking/vertex_cost_init.h"

namespace korvalite {

template <typename Metric>
void prepareLowMemoryRun(ProgressiveMesh& pm, const LowMemoryPreparation& preparation) {
    RunMonitor& progress = *pm.monitor;
    progress.BeginMainTask();
    prepareAdjacency(pm);
    pm.monitor->step(RunStep::CornerListsBuilt);
    if (preparation.raiseStageFlags) progress.raiseStageFlags();
    pm.monitor->step(RunStep::BordersFound);
    prepareSymmetry(pm, {.pairsMustShareColors = true, .planeQuadric = true});
    pm.monitor->step(RunStep::SymmetryDecided);
    prepareUVs(pm);
    if (pm.m_useVertexColors_internal) computeColorScale(pm);
    pm.monitor->step(RunStep::AttributesDecided);
    progress.BeginSubTask("analysing mesh", -1);
    InitVerticesCost_LM<Metric>(pm, pm, preparation.logCostForms);
    progress.EndSubTask();
    pm.monitor->step(RunStep::VerticesQueued);
}

template void prepareLowMemoryRun<PlainMetric>(ProgressiveMesh&, const LowMemoryPreparation&);
template void prepareLowMemoryRun<ColorMetric>(ProgressiveMesh&, const LowMemoryPreparation&);

}  // namespace korvalite
