// SPDX-License-Identifier: MIT
#include "level_times.h"

#include "best_time.h"
#include "formats/kvm_reader.h"
#include "formats/vok_writer.h"
#include "progressive/level_update.h"
#include "progressive/progressive_mesh.h"
#include "shell/apply_settings.h"
#include "shell/job_config.h"

#include <cstdio>
#include <limits>

namespace korvalite::core::bench {

namespace {

constexpr int kTurns = 3;
constexpr std::int32_t kInFull = 0;
constexpr std::int32_t kCoarsest = -1;
constexpr std::int32_t kFinest = std::numeric_limits<std::int32_t>::max();

bool loadInFull(ProgressiveMesh& pm, const char* input) {
    return loadProgressiveMesh(pm, input, kInFull) == 0;
}

}  // namespace

bool printLevelTimes(const char* input) {
    ProgressiveMesh pm;
    if (!loadInFull(pm, input)) return false;
    BestTime up;
    BestTime down;
    updateMeshAtLevel(pm, kCoarsest);
    for (int turn = 0; turn < kTurns; ++turn) {
        up.measure([&] { updateMeshAtLevel(pm, kFinest); });
        down.measure([&] { updateMeshAtLevel(pm, kCoarsest); });
    }
    std::printf("vertices=%d splits=%u up=%.6f down=%.6f\n", pm.mesh.vertexCount(),
                pm.vsplitList.NumVtxSplit(), up.seconds(), down.seconds());
    return true;
}

bool writeLevelByFullLoad(const char* input, const char* output, float percent) {
    ProgressiveMesh pm;
    if (!loadInFull(pm, input)) return false;
    BatchSettings settings;
    settings.DecimationTargetPourcent = percent;
    const auto vertexCount = static_cast<std::uint32_t>(pm.mesh.vertices.size());
    updateMeshAtLevel(pm, targetVertexCount(settings, vertexCount));
    return exportDMesh(output, pm.mesh);
}

}  // namespace korvalite::core::bench
