// SPDX-License-Identifier: MIT
#include "lowmem/low_memory_driver.h"

#include "decimation/collapse.h"
#include "decimation/symmetric_collapse.h"
#include "decimation/vertex_cost.h"
#include "lowmem/driver_init.h"
#include "lowmem/neighbour_costs.h"
#include "lowmem/uv_update.h"
#include "lowmem/vertex_cost_init.h"
#include "mesh/borders.h"
#include "shell/base/debug_log.h"
#include "shell/base/job_paths.h"
#include "shell/base/progress_channel.h"

#include <algorithm>

namespace korvalite {

namespace {

constexpr std::uint32_t kTurnsBetweenReports = 200;

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

enum class Turn { Next, Stop };

template <typename Metric>
class LowMemoryLoop {
public:
    explicit LowMemoryLoop(ProgressiveMesh& pm)
        : pm_(pm), mesh_(pm.mesh), startCount_(static_cast<double>(pm.activeCount()) + 0.2) {
        neighbourhood_.prepare(mesh_);
    }

    void run() {
        pm_.finishStepStarted = false;
        pm_.inFinishStep = false;
        progressChannel().BeginSubTask("processing", static_cast<std::int32_t>(startCount_));
        while (takeTurn() == Turn::Next) {
        }
        progressChannel().EndSubTask();
    }

private:
    Turn takeTurn() {
        if (progressChannel().stopRequested()) return Turn::Stop;
        if (pm_.activeCount() <= pm_.TargetNumItem) return Turn::Stop;
        if (pm_.costQueue.vertexCount() == 0) return Turn::Stop;
        const std::int32_t v = pm_.costQueue.Top();
        if (v == kNone) return Turn::Stop;
        const std::int32_t u = mesh_.vertices[at(v)].partner;
        if (u == kNone || !mesh_.vertexActive.Test(u)) {
            pm_.costQueue.Remove(v);
            return Turn::Next;
        }
        const float cost = mesh_.vertices[at(v)].cost;
        if (cost >= kPenalizedCost) return onlyRefusedLeft(cost);
        if (collapsePair(v, u)) {
            updateCosts(v, u);
            record();
        }
        return Turn::Next;
    }

    /// All that is queued has been refused once. The finish step would give it a second chance
    /// without symmetry, but it asks for a flag that no run sets: a run ends here.
    Turn onlyRefusedLeft(float cost) {
        if (!pm_.AllowFinishStep || cost == kNotCollapsible || !pm_.finishStepStarted) {
            return Turn::Stop;
        }
        pm_.decimationFinishTriangleCount = static_cast<std::int32_t>(mesh_.numActiveTriangles);
        pm_.finishStepStarted = true;
        pm_.inFinishStep = true;
        pm_.m_handleSymmetry_internal = false;
        pm_.symmetrySlaves.Reset(pm_.symmetrySlaves.count());
        pm_.costQueue.Clear();
        for (std::int32_t vertex = 0; vertex < mesh_.vertexCount(); ++vertex) {
            if (!mesh_.vertexActive.Test(vertex)) continue;
            RecomputeVertexCost(pm_, vertex, ring_);
            pm_.costQueue.Insert(vertex);
        }
        return Turn::Next;
    }

    bool refuse(std::int32_t v) {
        Penalize(mesh_, pm_.costQueue, v);
        return false;
    }

    /// Collapses v onto u and, if it must be accompanied, its mirror image: both or neither.
    bool collapsePair(std::int32_t v, std::int32_t u) {
        // The cost is not looked at, whatever it is: the stored one has decided.
        EdgeEvaluation evaluation = evaluateCollapse<Metric>(pm_, v, u);
        mirror_ = {};
        if (pm_.m_handleSymmetry_internal &&
            !CheckSymmetricCollapse<Metric>(pm_, v, u, evaluation, mirror_)) {
            return refuse(v);
        }
        first_.clear();
        second_.clear();
        if (CollapseEdge(pm_, v, u, evaluation.position, first_, collapseScratch_) !=
            CollapseResult::Done) {
            return refuse(v);
        }
        if (mirror_.doMirror && !collapseMirror(v, u)) return refuse(v);
        carryAttributes(first_, v, u, evaluation);
        if (mirror_.doMirror) {
            carryAttributes(second_, mirror_.mirrorV, mirror_.mirrorW, mirror_.evaluation);
        }
        return true;
    }

    /// The mirror image of a collapse that stands; a refusal takes back the first one too.
    bool collapseMirror(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mirror_.mirrorV;
        mesh_.vertices[at(mv)].partner = mirror_.mirrorW;
        if (CollapseEdge(pm_, mv, mirror_.mirrorW, mirror_.evaluation.position, second_,
                         collapseScratch_) != CollapseResult::Done) {
            Penalize(mesh_, pm_.costQueue, mv);
            UndoCollapse(pm_, v, u, first_.split, first_.flags);
            return false;
        }
        const auto gone = std::find(first_.neighbours.begin(), first_.neighbours.end(), mv);
        if (gone != first_.neighbours.end()) first_.neighbours.erase(gone);
        return true;
    }

    void carryAttributes(CollapseRecord& collapse, std::int32_t removed, std::int32_t kept,
                         const EdgeEvaluation& evaluation) {
        if constexpr (Metric::kHasColor) {
            std::uint32_t& color = mesh_.vertexColors[at(kept)];
            collapse.split.savedColor = color;
            const std::uint32_t fourthByte = color & 0xFF000000U;
            color = fourthByte | (static_cast<std::uint32_t>(evaluation.color[2]) << 16U) |
                    (static_cast<std::uint32_t>(evaluation.color[1]) << 8U) | evaluation.color[0];
        }
        if (pm_.m_handleUVs_internal) {
            UpdateUVsAfterCollapse(mesh_, removed, kept, collapse.split, uvScratch_);
        }
    }

    void updateCosts(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mirror_.mirrorV;
        pm_.costQueue.Remove(v);
        if (mirror_.doMirror) pm_.costQueue.Remove(mv);
        if (pm_.m_handleSymmetry_internal && u == mv) {
            // v fell onto its own mirror image, which now stands on the plane.
            mesh_.symmetryCache.pairing[at(u)] = u;
            pm_.symmetrySlaves.Clear(u);
        }
        updateCostsAround(u, first_);
        if (mirror_.doMirror) updateCostsAround(mirror_.mirrorW, second_);
        if (pm_.m_handleSymmetry_internal && !mirror_.doMirror && mv != kNone) freeSlave(mv);
    }

    void updateCostsAround(std::int32_t kept, const CollapseRecord& collapse) {
        if (mesh_.vertexActive.Test(kept)) {
            UpdateNeighbourCosts_LM(pm_, kept, collapse.ringCorners, collapse.neighbours,
                                    neighbourhood_);
        } else {
            RefreshRingCosts_LM(pm_, collapse.split);
        }
    }

    /// A slave whose master has collapsed alone must fend for itself. Ranked by the plain metric
    /// for now, with colours too.
    void freeSlave(std::int32_t slave) {
        if (!pm_.symmetrySlaves.Test(slave) || !mesh_.vertexActive.Test(slave) ||
            pm_.costQueue.isQueued(slave)) {
            return;
        }
        pm_.symmetrySlaves.Clear(slave);
        RecomputeVertexCost(pm_, slave, ring_);
        pm_.costQueue.Insert(slave);
    }

    /// The only moment at which a collapse reaches the list: one that was undone leaves no record.
    void record() {
        if (pm_.recordVSplits) {
            pm_.vsplitList.append(first_.split);
            if (mirror_.doMirror) pm_.vsplitList.append(second_.split);
            pm_.vsplitList.spillIfFull();
        }
        if (++turns_ % kTurnsBetweenReports == 0) {
            progressChannel().SetSubTaskProgress(
                static_cast<std::int32_t>(startCount_ - static_cast<double>(pm_.activeCount())));
        }
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    double startCount_;
    std::uint32_t turns_ = 0;  // successful ones; a mirrored pair counts once

    CollapseRecord first_;
    CollapseRecord second_;
    SymmetricCollapse mirror_;
    CollapseScratch collapseScratch_;
    IndexList uvScratch_;
    IndexList ring_;
    NeighbourhoodScratch<Metric> neighbourhood_;
};

}  // namespace

template <typename Metric>
int doDecimationInit_LM(ProgressiveMesh& pm) {
    DebugLog("   starting doDecimationInit_LM()...");
    ProgressChannel& progress = progressChannel();
    DMesh& mesh = pm.mesh;
    progress.BeginMainTask(CurrentMeshName());
    progress.BeginSubTask("analysing mesh", -1);
    if (mesh.cornerNext.size() != mesh.triangles.size()) BuildVertexCorners(mesh);
    progress.EndSubTask();
    ClearDecimationState(pm);
    progress.BeginSubTask("analysing mesh", -1);
    ComputeBorderVertices(mesh);
    progress.EndSubTask();
    progress.raiseStageFlags();
    prepareSymmetry(pm);
    prepareUVs(pm);
    if (pm.m_useVertexColors_internal) computeColorScale(pm);
    progress.BeginSubTask("analysing mesh", -1);
    InitVerticesCost_LM<Metric>(pm);
    progress.EndSubTask();
    if (pm.recordVSplits) {
        constexpr std::uint32_t kAppendsPerTurn = 2;
        pm.vsplitList.open({pm.m_useVertexColors_internal, pm.m_handleUVs_internal},
                           static_cast<std::uint32_t>(mesh.vertices.size()), kAppendsPerTurn);
    }
    return 0;
}

template <typename Metric>
int doDecimationLoop_LM(ProgressiveMesh& pm) {
    LowMemoryLoop<Metric>(pm).run();
    progressChannel().EndMainTask();
    return 0;
}

template <typename Metric>
int doDecimation_LM(ProgressiveMesh& pm) {
    DebugLog(" starting doDecimation_LM()  <%s> ...");
    doDecimationInit_LM<Metric>(pm);
    return doDecimationLoop_LM<Metric>(pm);
}

template int doDecimation_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimation_LM<ColorMetric>(ProgressiveMesh&);
template int doDecimationInit_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimationInit_LM<ColorMetric>(ProgressiveMesh&);
template int doDecimationLoop_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimationLoop_LM<ColorMetric>(ProgressiveMesh&);

}  // namespace korvalite
