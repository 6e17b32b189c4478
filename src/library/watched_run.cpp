// SPDX-License-Identifier: MIT
#include "library/watched_run.h"

#include <algorithm>

namespace korvalite {

WatchedRun::WatchedRun(core::WorkingMesh& work, const Monitor& monitor, Phase firstPhase,
                       std::uint32_t left)
    : work_(work), monitor_(monitor), left_(left) {
    work.monitor = this;
    enter(firstPhase);
}

void WatchedRun::finish() const {
    if (thrown_) std::rethrow_exception(thrown_);
    if (stopped_) throw Error(ErrorCode::Cancelled, "Cancelled by the caller.");
}

void WatchedRun::step(core::RunStep step) {
    if (step == core::RunStep::LoopBegins) enter(Phase::Simplifying);
    if (step != core::RunStep::LoopEnded) return;
    if (!stopped_ && onLoopEnded) onLoopEnded();
    enter(Phase::Reordering);
}

void WatchedRun::BeginSubTask(const char* /*text*/, std::int32_t total) {
    progress_.total = static_cast<std::uint64_t>(std::max(total - left_, std::int64_t{0}));
}

void WatchedRun::SetSubTaskProgress(std::int32_t done) {
    progress_.done = std::min(static_cast<std::uint64_t>(std::max(done, 0)), progress_.total);
    reportNowAndThen();
    if (progress_.phase == Phase::ChangingLevel) finish();
}

bool WatchedRun::stopRequested() const {
    reportNowAndThen();
    return stopped_;
}

void WatchedRun::enter(Phase phase) {
    progress_ = {.phase = phase, .done = 0, .total = 0};
    report();
}

void WatchedRun::reportNowAndThen() const {
    // The clock takes longer than most of what happens between two questions.
    constexpr std::uint32_t kQuestionsPerLook = 256;
    constexpr auto kInterval = std::chrono::milliseconds(50);
    if (!monitor_ || ++questions_ % kQuestionsPerLook != 0) return;
    if (std::chrono::steady_clock::now() - lastReport_ >= kInterval) report();
}

void WatchedRun::report() const {
    if (!monitor_ || stopped_) return;
    try {
        stopped_ = !monitor_(progress_);
    } catch (...) {
        thrown_ = std::current_exception();
        stopped_ = true;
    }
    lastReport_ = std::chrono::steady_clock::now();
}

}  // namespace korvalite
