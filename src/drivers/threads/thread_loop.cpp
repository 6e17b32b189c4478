// SPDX-License-Identifier: MIT
#include "drivers/threads/thread_loop.h"

#include "collapse/carry_color.h"
#include "collapse/uv_update.h"
#include "drivers/pair_collapse.h"
#include "drivers/threads/deferred_changes.h"
#include "drivers/threads/reservations.h"
#include "metric/metric.h"
#include "ranking/neighbour_costs.h"

#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

/// The hooks of PairCollapse.
template <typename LoopMetric>
class ThreadDriver {
public:
    using Metric = LoopMetric;

    ThreadDriver(ProgressiveMesh& pm, ThreadContext& context, CriticalSections& sections)
        : pm_(pm), context_(context), sections_(sections) {}

    [[nodiscard]] EdgeEvaluation place(std::int32_t v, std::int32_t u,
                                       KeptQuadrics<Metric>& keptQuadrics) const {
        return evaluateCollapse(pm_.mesh, pm_, v, u, keptQuadrics);
    }

    void carryAttributes(CollapseRecord& collapse, std::int32_t removed, std::int32_t kept,
                         const EdgeEvaluation& evaluation) {
        carryColor<Metric>(pm_.mesh, collapse.split, kept, evaluation);
        if (pm_.m_handleUVs_internal) {
            UpdateUVsAfterCollapse_MT(pm_.mesh, removed, kept, collapse.split, uvScratch_,
                                      sections_);
        }
    }

    void updateCosts(std::int32_t kept, const CollapseRecord& collapse) {
        UpdateNeighbourCosts_MT(pm_, kept, collapse.ringCorners, collapse.neighbours,
                                context_.workRecord, context_.marks, scratch_, sections_);
    }
    void refreshCosts(const CollapseRecord& collapse) {
        RefreshRingCosts_MT<Metric>(pm_, collapse.split.vertex, context_.workRecord);
    }

    void rankFreedSlave(std::int32_t vertex) {
        float cost = kNotCollapsible;
        std::int32_t partner = kNone;
        ComputeVertexCost_MT<Metric>(pm_, vertex, cost, partner, ring_);
        if (cost != kNotCollapsible) context_.workRecord.appendUpdate(vertex, cost, partner);
    }

private:
    ProgressiveMesh& pm_;
    ThreadContext& context_;
    CriticalSections& sections_;
    IndexList uvScratch_;
    IndexList ring_;
    NeighbourhoodScratch<Metric> scratch_;
};

template <typename Metric>
class ThreadLoop {
public:
    ThreadLoop(ProgressiveMesh& pm, ThreadContext& context, SharedRun& run)
        : pm_(pm), mesh_(pm.mesh), context_(context), run_(run), record_(context.workRecord),
          reservations_(pm.mesh, pm.threads->lockedVertices), driver_(pm, context, run.sections),
          changes_(pm, record_, run.sections),
          pair_(pm, driver_, changes_, record_.splitRecord, record_.mirrorSplitRecord) {}

    void run() {
        const TimeTaken inLoop(timeOf(&ThreadStatistics::secondsInLoop));
        try {
            std::optional<Turn> done;
            while (takeTurn(done))
                done = work();
        } catch (const std::bad_alloc&) {
            const std::lock_guard lock(run_.sections.csQueue);
            run_.outOfMemory = true;
            reservations_.releaseAll();
        }
    }

private:
    enum class Turn {
        Stands,   // a collapse or a mirrored pair was made
        Dropped,  // the picked vertex left the queue, was refused, or ended the pass
    };

    /// Ends the previous turn, if there was one, and starts the next. False if the loop is over.
    bool takeTurn(std::optional<Turn> done) {
        const bool goesOn = commitAndPick(done);
        // Without csQueue, so no other thread waits for the disk.
        if (std::exchange(tookFullPage_, false)) pm_.vsplitList.storeFullPage();
        return goesOn;
    }

    /// Does both in one critical section.
    bool commitAndPick(std::optional<Turn> done) {
        const auto lock = enterQueue();
        const TimeTaken inQueue(timeOf(&ThreadStatistics::secondsInQueue));
        try {
            if (done) commit(*done);
            return pick();
        } catch (const std::bad_alloc&) {
            // Set before any other thread can enter: the queue may be left half poured.
            run_.outOfMemory = true;
            throw;
        }
    }

    [[nodiscard]] std::unique_lock<CriticalSection> enterQueue() {
        const TimeTaken waiting(timeOf(&ThreadStatistics::secondsWaiting));
        return std::unique_lock(run_.sections.csQueue);
    }

    /// Null if times are not measured.
    [[nodiscard]] double* timeOf(double ThreadStatistics::*part) {
        return pm_.measureThreads ? &(context_.statistics.*part) : nullptr;
    }

    [[nodiscard]] bool goesOn() const { return !pm_.monitor->stopRequested(); }

    bool pick() {
        if (run_.outOfMemory || !goesOn()) return false;
        if (pm_.activeCount() <= pm_.TargetNumItem) return false;
        if (pm_.costQueue.vertexCount() == 0) return false;
        record_.clear();
        reservations_.beginPick();
        record_.pickedVertex = pm_.costQueue.FirstAccepted(
            [this](std::int32_t vertex) { return reserve(vertex); }, [this] { return goesOn(); });
        if (record_.pickedVertex == kNone && !goesOn()) return false;
        if (!endsPass(record_.pickedVertex)) return true;
        // Commits at once: while this thread holds vertices, another could find everything that is
        // left held, and end too.
        commit(Turn::Dropped);
        return false;
    }

    /// Whether nothing could be picked, or only a vertex that has been refused before. There is no
    /// finish step here: whatever the settings, each thread then ends.
    [[nodiscard]] bool endsPass(std::int32_t v) const {
        if (v == kNone) return true;
        const VertexRecord& vertex = mesh_.vertices[at(v)];
        return vertex.cost >= kPenalizedCost && vertex.partner != kNone &&
               mesh_.vertexActive.Test(vertex.partner);
    }

    /// Reserves everything that a collapse of the vertex may touch; false if others hold part of
    /// it.
    bool reserve(std::int32_t v) {
        ++context_.statistics.candidates;
        // Checked before reading its record, which is in the cache of the thread that holds it.
        if (reservations_.isHeld(v)) return false;
        const std::int32_t u = mesh_.vertices[at(v)].partner;
        if (u == kNone) return reservations_.hold({v});
        if (!reservations_.gather({v, u})) return false;
        if (pm_.m_handleSymmetry_internal && !gatherMirror(v, u)) return false;
        reservations_.holdGathered();
        return true;
    }

    /// REQUIRES: both vertices are free, because a thread that holds a vertex may change its
    /// pairing.
    bool gatherMirror(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mesh_.symmetryCache.pairing[at(v)];
        const std::int32_t mu = mesh_.symmetryCache.pairing[at(u)];
        return mv == kNone || mu == kNone || reservations_.gather({mv, mu});
    }

    Turn work() {
        const Turn turn = collapsePicked();
        prepareUpdates();
        return turn;
    }

    Turn collapsePicked() {
        const std::int32_t v = record_.pickedVertex;
        const std::int32_t u = mesh_.vertices[at(v)].partner;
        if (u == kNone || !mesh_.vertexActive.Test(u)) {
            record_.removedVertices.push_back(v);
            return Turn::Dropped;
        }
        if (!pair_.collapse(v, u)) return Turn::Dropped;
        pair_.rankAgain(v, u);
        return Turn::Stands;
    }

    void commit(Turn turn) {
        ++context_.statistics.turns;
        if (turn == Turn::Stands) recordSplits();
        applyUpdates();
        for (const std::int32_t vertex : record_.removedVertices)
            pm_.costQueue.Remove(vertex);
        tookFullPage_ = pm_.vsplitList.takeFullPage() || tookFullPage_;
        reservations_.releaseAll();
        showProgress();
    }

    void recordSplits() {
        if (!pm_.vsplitList.isOpen()) return;
        pm_.vsplitList.append(record_.splitRecord.split);
        if (pair_.hasMirror()) pm_.vsplitList.append(record_.mirrorSplitRecord.split);
    }

    /// Does the part of the commit that does not need csQueue.
    void prepareUpdates() {
        const CostQueue& queue = pm_.costQueue;
        queue.prefetchLinks(record_.updateVertices);
        queue.prefetchLinks(record_.removedVertices);
        for (std::size_t i = 0; i < record_.updateVertices.size(); ++i) {
            const bool staysOut = record_.updateCosts[i] == kNotCollapsible ||
                                  pm_.isSymmetrySlave(record_.updateVertices[i]);
            record_.updateBuckets.push_back(staysOut ? kNone
                                                     : queue.bucketOf(record_.updateCosts[i]));
        }
        queue.prefetchBuckets(record_.updateBuckets);
    }

    /// Applies the entries in order: if a vertex has two, the later one counts.
    void applyUpdates() {
        for (std::size_t i = 0; i < record_.updateVertices.size(); ++i) {
            const std::int32_t x = record_.updateVertices[i];
            pm_.costQueue.Remove(x);
            mesh_.vertices[at(x)].cost = record_.updateCosts[i];
            mesh_.vertices[at(x)].partner = record_.updatePartners[i];
            pm_.costQueue.Insert(x, record_.updateBuckets[i]);
        }
    }

    void showProgress() {
        constexpr std::uint32_t kTurnsBetweenReports = 5000;
        if (++run_.progressCount % kTurnsBetweenReports != 0) return;
        const auto left = static_cast<std::int32_t>(loadRelaxed(mesh_.numActiveVertices));
        pm_.monitor->SetSubTaskProgress(mesh_.vertexCount() - left);
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    ThreadContext& context_;
    SharedRun& run_;
    ThreadWorkRecord& record_;
    Reservations reservations_;
    ThreadDriver<Metric> driver_;
    DeferredChanges changes_;
    PairCollapse<ThreadDriver<Metric>, DeferredChanges> pair_;
    bool tookFullPage_ = false;  // and must store it
};

}  // namespace

template <typename Metric>
void doDecimationLoop_LM_MT(ProgressiveMesh& pm, ThreadContext& context, SharedRun& run) {
    ThreadLoop<Metric>(pm, context, run).run();
}

template void doDecimationLoop_LM_MT<PlainMetric>(ProgressiveMesh&, ThreadContext&, SharedRun&);
template void doDecimationLoop_LM_MT<ColorMetric>(ProgressiveMesh&, ThreadContext&, SharedRun&);

}  // namespace korvalite
