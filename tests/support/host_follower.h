// SPDX-License-Identifier: MIT
#pragma once

#include "host/host_monitor.h"

namespace korvalite::core::test {

// Passes everything on to the host's channel, as a job's monitor does. Tests derive from it to see
// the steps of a run.
class HostFollower : public RunMonitor {
public:
    void BeginMainTask() override { hostMonitor().BeginMainTask(); }
    void EndMainTask() override { hostMonitor().EndMainTask(); }
    void BeginSubTask(const char* text, std::int32_t total) override {
        hostMonitor().BeginSubTask(text, total);
    }
    void EndSubTask() override { hostMonitor().EndSubTask(); }
    void SetSubTaskText(const HeapString& text) override { hostMonitor().SetSubTaskText(text); }
    void SetSubTaskProgress(std::int32_t done) override { hostMonitor().SetSubTaskProgress(done); }
    void raiseFirstStageFlag() override { hostMonitor().raiseFirstStageFlag(); }
    void raiseStageFlags() override { hostMonitor().raiseStageFlags(); }
    [[nodiscard]] bool stopRequested() const override { return hostMonitor().stopRequested(); }
};

}  // namespace korvalite::core::test
