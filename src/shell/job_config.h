// SPDX-License-Identifier: MIT
//
// A parsed job. Fields are named after their job keys, which docs/job-file.md describes.
#pragma once

#include "base/heap_string.h"

#include <cstdint>
#include <forward_list>

namespace korvalite::core {

enum BatchKind : std::int32_t {
    kBatchKindUnset = 0,  // inferred from the suffixes of the files
    kBuildProgressiveMesh = 1,
    kDecimateMesh = 2,
    kDecimateProgressiveMesh = 3,
};

enum SymmetryChoice : std::int32_t {
    kSymmetryNone = 0,
    kSymmetryX = 1,
    kSymmetryY = 2,
    kSymmetryZ = 3,
    kSymmetryAuto = 4,
};

/// DecimationTargetPourcent if the job does not set it.
inline constexpr float kNoPercent = -1.0F;

/// The settings of a job for one mesh.
// COMPAT: keys without effect are still read, and "Pourcent" is spelled so; old jobs have them.
struct BatchSettings {
    HeapString InputFile = "";
    HeapString OutputFile = "";
    bool DeleteInputFile = false;
    std::int32_t Symmetry = kSymmetryNone;
    bool FreezeBorder = false;
    bool UseMask = false;                         // no effect: a mask always counts
    std::int32_t ProgressiveMeshMinNum = 4;       // vertices
    std::int32_t DecimationTargetNum = 4;         // vertices
    float DecimationTargetPourcent = kNoPercent;  // of the vertices; overrides the number if set
    std::int32_t MemSpeedTradeOff = 1;            // no effect: NumThread decides
    bool AvoidNormalReverse = true;
    bool ProtectTopology = true;
    bool AllowFinishStep = false;
    bool UseAreaWeighting = false;
    bool IFlipX = false;  // no effect, like the next five fields
    bool IFlipY = false;
    bool IFlipZ = false;
    bool ISwitchYZ = false;
    bool KeepUVs = false;
    bool UseVtxColors = false;
    float UseVtxColorsCoef = 50.0F;  // see colorWeightOf
    std::int32_t NumThread = 1;
    bool DoReorder = true;
};

/// One mesh of the batch.
// COMPAT: it starts from the defaults, not from the job's own settings; old jobs rely on it.
struct BatchEntry {
    std::int32_t kind = kBatchKindUnset;
    BatchSettings settings;
};

struct JobConfig {
    bool DeleteConfigFile = false;
    std::int32_t AppMode = 4;
    std::int32_t DisplayMode = 2;
    bool UseProgressBar = false;
    bool KeepTempFiles = false;
    BatchSettings settings;  // from keys outside StartBatch..EndBatch; not used
    std::int32_t MessageChannelId = 0;
    std::int32_t MessageReaderId = 0;
    std::int32_t ProcessId = 0;
    std::int32_t QueueId = 0;
    std::int32_t versionCode = 0;  // 0, 1, 310, 312, 320 or 401; see FennikVersion

    std::forward_list<BatchEntry> batchList;  // in reverse order after parsing
    BatchEntry* currentEntry = nullptr;       // the open entry in batchList
};

}  // namespace korvalite::core
