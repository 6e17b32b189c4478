// SPDX-License-Identifier: MIT
#include "host/host_monitor.h"

#include "host/job_paths.h"
#include "host/progress_channel.h"

namespace korvalite::core {

namespace {

class HostMonitor : public RunMonitor {
public:
    void BeginMainTask() override { progressChannel().BeginMainTask(CurrentMeshName()); }
    void EndMainTask() override { progressChannel().EndMainTask(); }
    void BeginSubTask(const char* text, std::int32_t total) override {
        progressChannel().BeginSubTask(text, total);
    }
    void EndSubTask() override { progressChannel().EndSubTask(); }
    void SetSubTaskText(const HeapString& text) override { progressChannel().SetSubTaskText(text); }
    void SetSubTaskProgress(std::int32_t done) override {
        progressChannel().SetSubTaskProgress(done);
    }
    void raiseFirstStageFlag() override { progressChannel().raiseFirstStageFlag(); }
    void raiseStageFlags() override { progressChannel().raiseStageFlags(); }
    [[nodiscard]] bool stopRequested() const override { return progressChannel().stopRequested(); }
};

}  // namespace

RunMonitor& hostMonitor() {
    static HostMonitor monitor;
    return monitor;
}

}  // namespace korvalite::core
