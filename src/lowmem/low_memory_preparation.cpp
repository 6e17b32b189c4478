// SPDX-License-Identifier: MIT
#include "lowmem/low_memory_preparation.h"

#include "decimation/driver_preparation.h"
#include "decimation/metric.h"
#include "lowmem/attribute_preparation.h"
#include "lowmem/vertex_cost_init.h"
#include "shell/base/job_paths.h"
#include "shell/base/progress_channel.h"

namespace korvalite {

template <typename Metric>
void prepareLowMemoryRun(ProgressiveMesh& pm, const LowMemoryPreparation& preparation) {
    ProgressChannel& progress = progressChannel();
    progress.BeginMainTask(CurrentMeshName());
    prepareAdjacency(pm);
    pm.reportStep(4);
    if (preparation.raiseStageFlags) progress.raiseStageFlags();
    pm.reportStep(5);
    prepareSymmetry(pm, {.pairsMustShareColors = true, .planeQuadric = true});
    pm.reportStep(7);
    prepareUVs(pm);
    if (pm.m_useVertexColors_internal) computeColorScale(pm);
    pm.reportStep(8);
    progress.BeginSubTask("analysing mesh", -1);
    InitVerticesCost_LM<Metric>(pm, preparation.logCostForms);
    progress.EndSubTask();
    pm.reportStep(9);
}

template void prepareLowMemoryRun<PlainMetric>(ProgressiveMesh&, const LowMemoryPreparation&);
template void prepareLowMemoryRun<ColorMetric>(ProgressiveMesh&, const LowMemoryPreparation&);

}  // namespace korvalite
