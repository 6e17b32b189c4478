// SPDX-License-Identifier: MIT
#include "drivers/threads/multi_thread_driver.h"

#include "base/debug_log.h"
#include "drivers/preparation.h"
#include "drivers/threads/thread_context.h"
#include "drivers/threads/thread_loop.h"
#include "drivers/threads/thread_messages.h"

#include <algorithm>
#include <memory>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace korvalite::core {

namespace {

/// The threads besides the main one. Each waits for its start message, runs the loop once and waits
/// for its end message, which the destructor sends.
template <typename Metric>
class Workers {
public:
    Workers(ProgressiveMesh& pm, SharedRun& run) : pm_(pm), run_(run) {}
    ~Workers() {
        for (const auto& worker : workers_)
            worker->messages.post(WM_LOOP_DONE);
        for (const auto& worker : workers_)
            worker->thread.join();
    }
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// False if the system refuses to start another thread.
    bool add(ThreadContext& context) {
        auto worker = std::make_unique<Worker>();
        workers_.reserve(workers_.size() + 1);
        try {
            worker->thread = std::thread(
                [this, &context, inbox = &worker->messages] { serve(context, *inbox); });
        } catch (const std::system_error&) {
            return false;
        }
        workers_.push_back(std::move(worker));
        return true;
    }

    [[nodiscard]] std::size_t count() const { return workers_.size(); }
    void waitUntilUp() { mainMessages_.waitFor(WM_LOOP_START, workers_.size()); }
    void startLoops() {
        for (const auto& worker : workers_)
            worker->messages.post(WM_LOOP_START);
    }
    void waitUntilDone() { mainMessages_.waitFor(WM_LOOP_DONE, workers_.size()); }

private:
    struct Worker {
        ThreadMessageQueue messages;
        std::thread thread;
    };

    void serve(ThreadContext& context, ThreadMessageQueue& inbox) {
        mainMessages_.post(WM_LOOP_START);
        while (inbox.read() == WM_LOOP_START) {
            doDecimationLoop_LM_MT<Metric>(pm_, context, run_);
            mainMessages_.post(WM_LOOP_DONE);
        }
    }

    ProgressiveMesh& pm_;
    SharedRun& run_;
    ThreadMessageQueue mainMessages_;
    std::vector<std::unique_ptr<Worker>> workers_;
};

/// The context of a thread, ready for a run. Reuses that of an earlier run.
ThreadContext& contextOf(ProgressiveMesh& pm, std::int32_t threadIndex) {
    const auto index = static_cast<std::size_t>(threadIndex);
    if (index == pm.threads->threadContexts.size()) pm.threads->threadContexts.emplace_back();
    ThreadContext& context = pm.threads->threadContexts[index];
    context.threadIndex = threadIndex;
    context.marks.prepare(pm.mesh);
    context.statistics = {};
    return context;
}

}  // namespace

template <typename Metric>
void doDecimationInit_LM_MT(ProgressiveMesh& pm) {
    DebugLog("  starting doDecimationInit_LM_MT()...");
    pm.NumThread = std::max(pm.NumThread, 1);  // -1 means one
    prepareLowMemoryRun<Metric>(pm, {.raiseStageFlags = false, .logCostForms = true});
    openVSplitList(pm, static_cast<std::uint32_t>(pm.NumThread));
    if (!pm.threads) pm.threads = std::make_shared<ThreadsState>();
    pm.threads->lockedVertices.Free();
    pm.threads->lockedVertices.Reset(pm.mesh.vertexCount());
}

template <typename Metric>
int doDecimationLaunchThreadLoops_LM_MT(ProgressiveMesh& pm) {
    DebugLog("  starting doDecimationLaunchThreadLoops_LM_MT()...");
    SharedRun run;
    {
        Workers<Metric> workers(pm, run);
        ThreadContext& mainContext = contextOf(pm, 0);
        for (std::int32_t i = 1; i < pm.NumThread && workers.add(contextOf(pm, i)); ++i) {
        }
        pm.threads->threadContexts.resize(workers.count() + 1);
        workers.waitUntilUp();
        pm.monitor->step(RunStep::LoopBegins);
        pm.monitor->raiseFirstStageFlag();
        pm.monitor->BeginSubTask("processing", pm.mesh.vertexCount());
        pm.finishStepStarted = false;
        pm.inFinishStep = false;
        workers.startLoops();
        DebugLog("    MainThread starting the DecimationLoop...");
        doDecimationLoop_LM_MT<Metric>(pm, mainContext, run);
        workers.waitUntilDone();
    }
    // COMPAT: the main task stays open until the result is written; hosts see that.
    pm.monitor->EndSubTask();
    if (run.outOfMemory) throw std::bad_alloc();
    pm.monitor->step(RunStep::LoopEnded);
    pm.threads->lockedVertices.Free();
    return 0;
}

template <typename Metric>
int doDecimation_LM_MT(ProgressiveMesh& pm) {
    DebugLog(" starting doDecimation_LM_MT()  <%s> ...", Metric::kId);
    doDecimationInit_LM_MT<Metric>(pm);
    return doDecimationLaunchThreadLoops_LM_MT<Metric>(pm);
}

template int doDecimation_LM_MT<PlainMetric>(ProgressiveMesh&);
template int doDecimation_LM_MT<ColorMetric>(ProgressiveMesh&);
template void doDecimationInit_LM_MT<PlainMetric>(ProgressiveMesh&);
template void doDecimationInit_LM_MT<ColorMetric>(ProgressiveMesh&);
template int doDecimationLaunchThreadLoops_LM_MT<PlainMetric>(ProgressiveMesh&);
template int doDecimationLaunchThreadLoops_LM_MT<ColorMetric>(ProgressiveMesh&);

}  // namespace korvalite::core
