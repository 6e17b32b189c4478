// SPDX-License-Identifier: MIT
#pragma once

#include "base/heap_string.h"

#include <cstdint>

namespace korvalite::core {

/// How far a run has come. The drivers for one thread and for many report the same steps, except
/// that only a loop on one thread reports TurnsTaken.
enum class RunStep : std::int32_t {
    CornerListsBuilt = 4,
    BordersFound = 5,
    SymmetryDecided = 7,
    AttributesDecided = 8,  // UVs and colours
    VerticesQueued = 9,     // all ranked; not reported by the driver by curvature
    LoopBegins = 10,
    TurnsTaken = 11,  // every 200 successful turns
    LoopEnded = 12,
    LevelReached = 14,
};

/// Follows a run and may stop it. This one ignores everything and never stops; derive from it to
/// override what is of interest.
///
/// Everything is called on the main thread, except that with several threads stopRequested and
/// SetSubTaskProgress may be called by any of them, one at a time.
class RunMonitor {
public:
    virtual ~RunMonitor() = default;

    virtual void step(RunStep /*step*/) {}

    /// The main task is named after the mesh. It may have one sub-task at a time, of `total` units,
    /// or -1 if their number is unknown.
    virtual void BeginMainTask() {}
    virtual void EndMainTask() {}
    virtual void BeginSubTask(const char* /*text*/, std::int32_t /*total*/) {}
    virtual void EndSubTask() {}
    virtual void SetSubTaskText(const HeapString& /*text*/) {}
    virtual void SetSubTaskProgress(std::int32_t /*done*/) {}

    /// The decimation of the mesh has started: the first flag alone if several threads share it,
    /// both if not.
    virtual void raiseFirstStageFlag() {}
    virtual void raiseStageFlags() {}

    /// Whether the decimation should end with what it has reached so far.
    [[nodiscard]] virtual bool stopRequested() const { return false; }
};

/// For a run that nobody follows.
inline RunMonitor& silentMonitor() {
    static RunMonitor monitor;
    return monitor;
}

}  // namespace korvalite::core
