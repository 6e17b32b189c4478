// SPDX-License-Identifier: MIT
//
// The loop that all single-threaded drivers share: takes the cheapest vertex, collapses it with its
// mirror image or refuses, lets the driver rank what changed, and records the splits.
//
// A driver is a class of hooks:
//
//   using Metric                            of the mirror image's position
//   static constexpr bool kRecordsSplits
//   EdgeEvaluation place(v, u)              where u goes, and its colour
//   void carryAttributes(record, removed, kept, evaluation)
//   void updateCosts(kept, record)          after a collapse onto a vertex that is still active
//   void refreshCosts(record)               ... that is not
//   void rankFreedSlave(vertex)             cost and partner of one vertex, not queued
//   void rankForFinishStep(vertex)          the same
//   void showProgress(done)                 every 200 successful turns; a mirrored pair counts once
//
// Invariants: numActiveVertices and numActiveTriangles equal the set bits; a turn ends with its
// collapse complete and recorded, or with the mesh as before it.
#pragma once

#include "decimation/collapse.h"
#include "decimation/edge_cost.h"
#include "decimation/symmetric_collapse.h"
#include "mesh/progressive_mesh.h"
#include "shell/base/progress_channel.h"

#include <algorithm>
#include <cstdint>

namespace korvalite {

template <typename Driver>
class CollapseLoop {
public:
    CollapseLoop(ProgressiveMesh& pm, Driver& driver)
        : pm_(pm), mesh_(pm.mesh), driver_(driver),
          startCount_(static_cast<double>(pm.activeCount()) + 0.2) {}

    void run() {
        pm_.reportStep(10);
        pm_.finishStepStarted = false;
        pm_.inFinishStep = false;
        progressChannel().BeginSubTask("processing", static_cast<std::int32_t>(startCount_));
        while (takeTurn() == Turn::Next) {
        }
    }

private:
    enum class Turn { Next, Stop };

    static std::size_t at(std::int32_t index) { return static_cast<std::size_t>(index); }

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
            rankAgain(v, u);
            record();
            showProgress();
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
            driver_.rankForFinishStep(vertex);
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
        // The cost of the evaluation is not looked at: the stored one has decided.
        EdgeEvaluation evaluation = driver_.place(v, u);
        mirror_ = {};
        if (pm_.m_handleSymmetry_internal &&
            !CheckSymmetricCollapse<typename Driver::Metric>(pm_, v, u, evaluation, mirror_)) {
            return refuse(v);
        }
        first_.clear();
        second_.clear();
        if (CollapseEdge(pm_, v, u, evaluation.position, first_, scratch_) !=
            CollapseResult::Done) {
            return refuse(v);
        }
        if (mirror_.doMirror && !collapseMirror(v, u)) return refuse(v);
        driver_.carryAttributes(first_, v, u, evaluation);
        if (mirror_.doMirror) {
            driver_.carryAttributes(second_, mirror_.mirrorV, mirror_.mirrorW, mirror_.evaluation);
        }
        return true;
    }

    /// The mirror image of a collapse that stands; a refusal takes back the first one too.
    bool collapseMirror(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mirror_.mirrorV;
        if (!mesh_.vertexActive.Test(mirror_.mirrorW)) {
            // The first collapse has taken its last triangle: there is nothing to collapse onto.
            mirror_.doMirror = false;
            return true;
        }
        mesh_.vertices[at(mv)].partner = mirror_.mirrorW;
        if (CollapseEdge(pm_, mv, mirror_.mirrorW, mirror_.evaluation.position, second_,
                         scratch_) != CollapseResult::Done) {
            Penalize(mesh_, pm_.costQueue, mv);
            UndoCollapse(pm_, v, u, first_.split, first_.flags);
            return false;
        }
        const auto gone = std::find(first_.neighbours.begin(), first_.neighbours.end(), mv);
        if (gone != first_.neighbours.end()) first_.neighbours.erase(gone);
        return true;
    }

    void rankAgain(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mirror_.mirrorV;
        pm_.costQueue.Remove(v);
        if (mirror_.doMirror) pm_.costQueue.Remove(mv);
        if (pm_.m_handleSymmetry_internal && u == mv) {
            // v fell onto its own mirror image, which now stands on the plane.
            mesh_.symmetryCache.pairing[at(u)] = u;
            pm_.symmetrySlaves.Clear(u);
        }
        rankAround(u, first_);
        if (mirror_.doMirror) rankAround(mirror_.mirrorW, second_);
        if (pm_.m_handleSymmetry_internal && !mirror_.doMirror && mv != kNone) freeSlave(mv);
    }

    void rankAround(std::int32_t kept, const CollapseRecord& record) {
        if (mesh_.vertexActive.Test(kept)) {
            driver_.updateCosts(kept, record);
        } else {
            driver_.refreshCosts(record);
        }
    }

    /// A slave whose master has collapsed alone must fend for itself.
    void freeSlave(std::int32_t slave) {
        if (!pm_.symmetrySlaves.Test(slave) || !mesh_.vertexActive.Test(slave) ||
            pm_.costQueue.isQueued(slave)) {
            return;
        }
        pm_.symmetrySlaves.Clear(slave);
        driver_.rankFreedSlave(slave);
        pm_.costQueue.Insert(slave);
    }

    /// The only moment at which a collapse reaches the list: one that was undone leaves no record.
    void record() {
        if (pm_.recordVSplits) {
            if constexpr (Driver::kRecordsSplits) {
                pm_.vsplitList.append(first_.split);
                if (mirror_.doMirror) pm_.vsplitList.append(second_.split);
            }
            pm_.vsplitList.spillIfFull();
        }
    }

    void showProgress() {
        constexpr std::uint32_t kTurnsBetweenReports = 200;
        if (++turns_ % kTurnsBetweenReports != 0) return;
        const auto left = static_cast<double>(pm_.activeCount());
        driver_.showProgress(static_cast<std::int32_t>(startCount_ - left));
        pm_.reportStep(11);
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    Driver& driver_;
    double startCount_;
    std::uint32_t turns_ = 0;

    CollapseRecord first_;
    CollapseRecord second_;
    SymmetricCollapse mirror_;
    CollapseScratch scratch_;
};

}  // namespace korvalite
