// SPDX-License-Identifier: MIT
#include "stage_times.h"

#include "drivers/low_memory_driver.h"
#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "host/job_paths.h"
#include "job_settings.h"
#include "metric/metric.h"
#include "progressive/progressive_mesh.h"
#include "progressive/reorder.h"

#include <cstdio>
#include <ctime>

namespace korvalite::core::bench {

namespace {

/// Prints the processor time of a stage when it ends.
class Stage {
public:
    explicit Stage(const char* name) : name_(name) {}
    ~Stage() {
        const double taken = static_cast<double>(std::clock() - begin_) / CLOCKS_PER_SEC;
        std::printf(" %s=%.4f", name_, taken);
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

private:
    const char* name_;
    std::clock_t begin_ = std::clock();
};

void decimateInStages(ProgressiveMesh& pm) {
    {
        const Stage stage("analyse");
        doDecimationInit_LM<PlainMetric>(pm);
    }
    {
        const Stage stage("collapse");
        doDecimationLoop_LM<PlainMetric>(pm);
    }
    {
        const Stage stage("reorder");
        ReorderAndClean(pm, pm.DoReorder);
    }
}

}  // namespace

bool printStageTimes(const char* input, const char* output, float percent) {
    SetJobDirectory(".");
    ProgressiveMesh pm;
    {
        const Stage stage("read");
        if (!importDMesh(input, pm.mesh)) return false;
    }
    askForPercent(pm, percent);
    std::printf(" vertices=%d triangles=%d", pm.mesh.vertexCount(), pm.mesh.triangleCount());
    decimateInStages(pm);
    std::printf(" collapses=%u", pm.vsplitList.NumVtxSplit());
    bool written = false;
    {
        const Stage stage("write");
        written = exportDMesh(output, pm.mesh);
    }
    std::printf("\n");
    return written;
}

}  // namespace korvalite::core::bench
