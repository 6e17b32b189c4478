// SPDX-License-Identifier: MIT
#include "drivers/threads/thread_loop.h"

#include "collapse/sharing.h"
#include "drivers/low_memory_hooks.h"
#include "drivers/pair_collapse.h"
#include "drivers/threads/reservations.h"
#include "metric/metric.h"

#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace korvalite::core {

namespace {

template <typename Metric>
class ThreadLoop {
public:
    ThreadLoop(ProgressiveMesh& pm, ThreadContext& context, SharedRun& run)
        : pm_(pm), mesh_(pm.mesh), context_(context), run_(run), record_(context.workRecord),
          reservations_(pm.mesh, pm.threads->lockedVertices), shared_(pm, record_, run.sections),
          driver_(pm, context.marks, shared_),
          pair_(pm, driver_, shared_, record_.splitRecord, record_.mirrorSplitRecord) {}

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

    /// Whether nothing could be picked, or only a vertex that has been refused before.
    // COMPAT: no finish step here, whatever the settings, so each thread then ends.
    [[nodiscard]] bool endsPass(std::int32_t removed) const {
        if (removed == kNone) return true;
        const VertexRecord& vertex = mesh_.vertices[removed];
        return vertex.cost >= kPenalizedCost && vertex.partner != kNone &&
               mesh_.vertexActive.Test(vertex.partner);
    }

    /// Reserves everything that a collapse of the vertex may touch; false if others hold part of
    /// it.
    bool reserve(std::int32_t removed) {
        ++context_.statistics.candidates;
        // Checked before reading its record, which is in the cache of the thread that holds it.
        if (reservations_.isHeld(removed)) return false;
        const std::int32_t kept = mesh_.vertices[removed].partner;
        if (kept == kNone) return reservations_.hold({removed});
        if (!reservations_.gather({removed, kept})) return false;
        if (pm_.m_handleSymmetry_internal && !gatherMirror(removed, kept)) return false;
        reservations_.holdGathered();
        return true;
    }

    /// REQUIRES: both vertices are free, because a thread that holds a vertex may change its
    /// pairing.
    bool gatherMirror(std::int32_t removed, std::int32_t kept) {
        const std::int32_t mirrorRemoved = mesh_.symmetryCache.pairing[removed];
        const std::int32_t mirrorKept = mesh_.symmetryCache.pairing[kept];
        return mirrorRemoved == kNone || mirrorKept == kNone ||
               reservations_.gather({mirrorRemoved, mirrorKept});
    }

    Turn work() {
        const Turn turn = collapsePicked();
        prepareUpdates();
        return turn;
    }

    Turn collapsePicked() {
        const std::int32_t removed = record_.pickedVertex;
        const std::int32_t kept = mesh_.vertices[removed].partner;
        if (kept == kNone || !mesh_.vertexActive.Test(kept)) {
            record_.removedVertices.push_back(removed);
            return Turn::Dropped;
        }
        if (!pair_.collapse(removed, kept)) return Turn::Dropped;
        pair_.rankAgain(removed, kept);
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
            mesh_.vertices[x].cost = record_.updateCosts[i];
            mesh_.vertices[x].partner = record_.updatePartners[i];
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
    Shared shared_;
    LowMemoryHooks<Metric, Shared> driver_;
    PairCollapse<LowMemoryHooks<Metric, Shared>, Shared> pair_;
    bool tookFullPage_ = false;  // and must store it
};

}  // namespace

template <typename Metric>
void doDecimationLoop_LM_MT(ProgressiveMesh& pm, ThreadContext& context, SharedRun& run) {
    ThreadLoop<Metric>(pm, context, run).run();
}

template void doDecimationLoop_LM_MT<PlainMetric>(ProgressiveMesh&, ThreadContext&, SharedRun&);
template void doDecimationLoop_LM_MT<ColorMetric>(ProgressiveMesh&, ThreadContext&, SharedRun&);

}  // namespace korvalite::core
