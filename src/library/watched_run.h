// SPDX-License-Identifier: MIT
#pragma once

#include "base/run_monitor.h"
#include "collapse/working_mesh.h"
#include <korvalite/korvalite.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>

namespace korvalite {

/// Passes the progress of a run in the core on to the caller's monitor, and the monitor's wish to
/// cancel to the run. What the monitor throws must not reach the threads of the core, so it is kept
/// until finish(); only a change of level, which has no threads and asks nobody whether to stop,
/// lets it out at once.
class WatchedRun : public core::RunMonitor {
public:
    /// Watches the mesh's runs until it is destroyed. `left`: how many of the items that the run
    /// counts are meant to be left in the end.
    WatchedRun(core::WorkingMesh& work, const Monitor& monitor, Phase firstPhase,
               std::uint32_t left = 0);
    ~WatchedRun() override { work_.monitor = &core::silentMonitor(); }
    WatchedRun(const WatchedRun&) = delete;
    WatchedRun& operator=(const WatchedRun&) = delete;

    /// Called when the loop has ended by itself, while everything that it worked with still exists.
    std::function<void()> onLoopEnded;

    /// Throws what the monitor has thrown, or Error(Cancelled) if it has cancelled.
    void finish() const;

    void step(core::RunStep step) override;
    void BeginSubTask(const char* text, std::int32_t total) override;
    void SetSubTaskProgress(std::int32_t done) override;
    [[nodiscard]] bool stopRequested() const override;

private:
    void enter(Phase phase);
    void reportNowAndThen() const;
    void report() const;

    core::WorkingMesh& work_;
    const Monitor& monitor_;
    std::int64_t left_;
    Progress progress_;
    // The core asks from const functions, one thread at a time.
    mutable std::chrono::steady_clock::time_point lastReport_;
    mutable std::uint32_t questions_ = 0;
    mutable bool stopped_ = false;
    mutable std::exception_ptr thrown_;
};

}  // namespace korvalite
