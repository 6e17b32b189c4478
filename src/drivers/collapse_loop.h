// SPDX-License-Identifier: MIT
//
// The loop that all single-threaded drivers share: takes the cheapest vertex, collapses it together
// with its mirror image or refuses, lets the driver re-rank what has changed, and records the
// splits.
//
// Invariants: numActiveVertices and numActiveTriangles equal the number of set bits; a turn ends
// with its collapse complete and recorded, or with the mesh unchanged.
#pragma once

#include "collapse/sharing.h"
#include "collapse/work_record.h"
#include "drivers/pair_collapse.h"
#include "progressive/progressive_mesh.h"

#include <concepts>
#include <cstdint>

namespace korvalite::core {

/// What a driver adds to the loop, besides the hooks of a turn.
template <typename Driver>
concept LoopDriver = PairDriver<Driver> && requires(Driver& driver, std::int32_t vertex) {
    { Driver::kRecordsSplits } -> std::convertible_to<bool>;
    driver.rankForFinishStep(vertex);  // cost and partner of one vertex, not queued
    driver.showProgress(vertex);       // the count so far, every 200 successful turns
};

template <LoopDriver Driver>
class CollapseLoop {
public:
    CollapseLoop(ProgressiveMesh& pm, Driver& driver, Alone& alone)
        : pm_(pm), mesh_(pm.mesh), driver_(driver), alone_(alone),
          startCount_(static_cast<double>(pm.activeCount()) + 0.2) {}

    void run() {
        pm_.monitor->step(RunStep::LoopBegins);
        pm_.finishStepStarted = false;
        pm_.inFinishStep = false;
        pm_.monitor->BeginSubTask("processing", static_cast<std::int32_t>(startCount_));
        while (takeTurn() == Turn::Next) {
        }
    }

private:
    enum class Turn { Next, Stop };

    Turn takeTurn() {
        if (pm_.monitor->stopRequested()) return Turn::Stop;
        if (pm_.activeCount() <= pm_.TargetNumItem) return Turn::Stop;
        if (pm_.costQueue.vertexCount() == 0) return Turn::Stop;
        const std::int32_t removed = pm_.costQueue.Top();
        if (removed == kNone) return Turn::Stop;
        const std::int32_t kept = mesh_.vertices[removed].partner;
        if (kept == kNone || !mesh_.vertexActive.Test(kept)) {
            pm_.costQueue.Remove(removed);
            return Turn::Next;
        }
        const float cost = mesh_.vertices[removed].cost;
        if (cost >= kPenalizedCost) return onlyRefusedLeft(cost);
        if (pair_.collapse(removed, kept)) {
            pair_.rankAgain(removed, kept);
            record();
            showProgress();
        }
        return Turn::Next;
    }

    /// Every queued vertex has been refused at least once. The finish step would give them a second
    /// chance without symmetry.
    // COMPAT: it requires a flag that no run sets, so the run ends here; outputs depend on it.
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

    /// The only place that appends to the list, so an undone collapse leaves no record.
    void record() {
        if (pm_.recordVSplits) {
            if constexpr (Driver::kRecordsSplits) {
                pm_.vsplitList.append(first_.split);
                if (pair_.hasMirror()) pm_.vsplitList.append(second_.split);
            }
            pm_.vsplitList.spillIfFull();
        }
    }

    void showProgress() {
        constexpr std::uint32_t kTurnsBetweenReports = 200;
        if (++turns_ % kTurnsBetweenReports != 0) return;
        const auto left = static_cast<double>(pm_.activeCount());
        driver_.showProgress(static_cast<std::int32_t>(startCount_ - left));
        pm_.monitor->step(RunStep::TurnsTaken);
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    Driver& driver_;
    Alone& alone_;
    double startCount_;
    std::uint32_t turns_ = 0;

    CollapseRecord first_;
    CollapseRecord second_;
    PairCollapse<Driver, Alone> pair_{pm_, driver_, alone_, first_, second_};
};

}  // namespace korvalite::core
