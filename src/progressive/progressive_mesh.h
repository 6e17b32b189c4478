// SPDX-License-Identifier: MIT
//
// The central object: the mesh being decimated, the settings of its job and the state and results
// of its run. The batch driver builds one per entry and destroys it when the entry is done.
//
// Plain data; every member is owned by value. Built and destroyed on the main thread.
#pragma once

#include "base/cache.h"
#include "collapse/working_mesh.h"
#include "ranking/vertex_cost_init.h"
#include "splits/vsplit_list.h"

#include <cstdint>
#include <memory>

namespace korvalite::core {

struct ThreadsState;

enum MemSpeedTradeOffValue : std::int32_t {
    MEMSPEED_TRADEOFF_HIGH_SPEED = 0,
    MEMSPEED_TRADEOFF_LOW_MEM = 1,
    MEMSPEED_TRADEOFF_LOW_MEM_MT = 2,
    MEMSPEED_TRADEOFF_HEC = 3,
    MEMSPEED_TRADEOFF_MELAX = 4,
    MEMSPEED_TRADEOFF_AUTO = 5,
};

/// A name for the log.
const char* memSpeedTradeOffText(std::int32_t value);

/// Settings of the job, besides those of the metric and of collapses. Those without a job key are
/// for direct users of the drivers.
struct RunSettings {
    std::uint32_t TargetNumItem = 4;   // the target count
    bool targetCountsVertices = true;  // else triangles
    bool AllowFinishStep = false;
    float colorWeight = 1.0F;
    bool DoReorder = true;
    bool recordVSplits = false;
    // COMPAT: two threads, while a job has one; programs that use the library rely on it.
    std::int32_t MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
    std::int32_t NumThread = 2;
};

/// What a run leaves behind besides the mesh.
struct RunResults {
    // The number of records applied to the mesh in its current state.
    std::int32_t CurVtxSplitPos = kNone;
    std::int32_t askedNumItem = kNone;
    std::int32_t finalDecimNumItem = kNone;
    std::int32_t decimationFinishTriangleCount = kNone;
    bool IsReordered = false;  // each lower level is a prefix of the arrays
    bool IsCleaned = false;    // the working state has been released
};

struct ProgressiveMesh : WorkingMesh, CostFormSettings, RunSettings, RunResults {
    // Of the multi-threaded driver, made by its first run and kept for the next.
    std::shared_ptr<ThreadsState> threads;
    bool measureThreads = false;  // measure the times in their statistics

    alignas(kCacheLine) VSplitList vsplitList;

    /// numActiveVertices or numActiveTriangles, depending on targetCountsVertices.
    [[nodiscard]] std::uint32_t activeCount() const {
        return loadRelaxed(targetCountsVertices ? mesh.numActiveVertices : mesh.numActiveTriangles);
    }
};

/// Clears the DMesh and resets every setting to its default.
void ResetProgressiveMeshSettings(ProgressiveMesh& pm);

/// Clears the results of an earlier run: sets counters to -1 and result flags to false, frees the
/// symmetry bits and empties the splits.
void ClearDecimationState(ProgressiveMesh& pm);

}  // namespace korvalite::core
