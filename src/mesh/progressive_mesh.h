// SPDX-License-Identifier: MIT
//
// The central object: the mesh being decimated, the settings of its job and all working state of
// the decimation. The batch driver builds one per entry and destroys it when the entry is done.
//
// Plain data; every member is owned by value. Built and destroyed on the main thread.
#pragma once

#include "decimation/cost_queue.h"
#include "decimation/quadric3d.h"
#include "decimation/symmetry_plane_quadric.h"
#include "formats/vsplit_list.h"
#include "lowmem/thread_context.h"
#include "mesh/bit_array.h"
#include "mesh/dmesh.h"
#include "mesh/step_observer.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace korvalite {

enum BorderModeValue : std::int32_t {
    BORDER_MODE_NONE = 0,
    BORDERMODE_PROTECT = 1,
    BORDERMODE_FREEZE = 2,
};

enum MemSpeedTradeOffValue : std::int32_t {
    MEMSPEED_TRADEOFF_HIGH_SPEED = 0,
    MEMSPEED_TRADEOFF_LOW_MEM = 1,
    MEMSPEED_TRADEOFF_LOW_MEM_MT = 2,
    MEMSPEED_TRADEOFF_HEC = 3,
    MEMSPEED_TRADEOFF_MELAX = 4,
    MEMSPEED_TRADEOFF_AUTO = 5,
};

/// Names for the log.
const char* memSpeedTradeOffText(std::int32_t value);
const char* borderModeText(std::int32_t value);

/// Settings of the job. Those without a job key are for direct users of the drivers.
struct DecimationSettings {
    bool UseAreaWeighting = true;
    std::uint32_t TargetNumItem = 4;   // the target count
    bool targetCountsVertices = true;  // else triangles
    bool AvoidNormalReverse = true;
    bool ProtectTopology = true;
    bool handleSymmetry = false;  // as requested; see m_handleSymmetry_internal
    bool AllowFinishStep = false;
    float colorWeight = 1.0F;
    bool DoReorder = true;
    bool useDegeneracySearch = true;      // see EvaluateEdgeCost
    std::int32_t numPositionSamples = 8;  // see EvaluateEdgeCost; at least 1
    bool recordVSplits = false;
    bool tryStoreDoubleMat = true;  // see InitVerticesCost_LM
    bool tryStoreFloatMat = true;
    std::int32_t BorderMode = BORDERMODE_PROTECT;
    std::int32_t MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
    std::int32_t NumThread = 2;
};

struct ProgressiveMesh : DecimationSettings {
    ProgressiveMesh() = default;
    ProgressiveMesh(const ProgressiveMesh&) = delete;
    ProgressiveMesh& operator=(const ProgressiveMesh&) = delete;

    DMesh mesh;

    // What the run actually handles.
    bool m_handleSymmetry_internal = false;
    bool m_handleUVs_internal = false;
    bool m_useVertexColors_internal = false;
    double colorScale = 0;  // a colour byte times this is a length

    bool finishStepStarted = false;
    bool inFinishStep = false;

    alignas(kCacheLine) CostQueue costQueue{mesh};

    // State of the high-speed driver.
    alignas(kCacheLine) std::vector<Quadric3D> triangleQuadrics;
    std::vector<Quadric3D> vertexQuadrics;
    std::vector<FloatVec3> bestPositions;  // per vertex, computed together with its cost
    BitArray hasBestPosition;              // whether an evaluation has written it
    // State of the Melax driver: unit normals.
    std::vector<FloatVec3> triangleNormals;
    BitArray symmetryPaired;
    BitArray symmetryInterior;
    BitArray symmetrySlaves;
    SymmetryPlaneQuadric symmetryPlaneQuadric;

    // State of the multi-threaded driver. The contexts are kept for the next run.
    bool measureThreads = false;               // measure the times in their statistics
    BitArray lockedVertices;                   // reserved by a thread for its turn; under csQueue
    std::deque<ThreadContext> threadContexts;  // a deque keeps references valid as it grows

    // Results.
    alignas(kCacheLine) VSplitList vsplitList;
    // The number of records applied to the mesh in its current state.
    alignas(kCacheLine) std::int32_t CurVtxSplitPos = kNone;
    std::int32_t askedNumItem = kNone;
    std::int32_t finalDecimNumItem = kNone;
    std::int32_t decimationFinishTriangleCount = kNone;
    bool IsReordered = false;  // each lower level is a prefix of the arrays
    bool IsCleaned = false;    // the working state has been released

    StepObserver* observer = nullptr;  // not owned
    void reportStep(int number) const {
        if (observer != nullptr) observer->step(number);
    }

    /// numActiveVertices or numActiveTriangles, depending on targetCountsVertices.
    [[nodiscard]] std::uint32_t activeCount() const {
        return loadRelaxed(targetCountsVertices ? mesh.numActiveVertices : mesh.numActiveTriangles);
    }
    [[nodiscard]] bool isSymmetrySlave(std::int32_t vertex) const {
        return m_handleSymmetry_internal && symmetrySlaves.Test(vertex);
    }
};

/// Clears the DMesh and resets every setting to its default.
void ResetProgressiveMeshSettings(ProgressiveMesh& pm);

/// Clears the results of an earlier run: sets counters to -1 and result flags to false, frees the
/// symmetry bits and empties the splits.
void ClearDecimationState(ProgressiveMesh& pm);

}  // namespace korvalite
