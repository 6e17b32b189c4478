// SPDX-License-Identifier: MIT
//
// How a thread that does not hold the queue collapses, penalizes and ranks: it works on the
// vertices it has reserved, and every change of the queue becomes an entry in its work record. The
// thread commits the entries under csQueue at the end of its turn.
//
// All threads may call these at once, each with its own reservation and context.
#pragma once

#include "collapse/collapse.h"
#include "collapse/thread_guards.h"
#include "drivers/threads/thread_context.h"
#include "progressive/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

/// Raises the cost of a refused vertex: at once if it is not queued, else as an update entry.
void PenalizeDeferred(ProgressiveMesh& pm, std::int32_t vertex, ThreadWorkRecord& record);

/// Ranks one vertex against its ring without changing the mesh. `ring` is scratch.
template <typename Metric>
void ComputeVertexCost_MT(const ProgressiveMesh& pm, std::int32_t vertex, float& outCost,
                          std::int32_t& outPartner, IndexList& ring);

/// The update for a kept vertex that is no longer active: re-ranks the remaining vertices around
/// the corners of the record of `removed`. No effect if neither record is of `removed`.
template <typename Metric>
void RefreshRingCosts_MT(const ProgressiveMesh& pm, std::int32_t removed, ThreadWorkRecord& record);

/// The Changes parameter of PairCollapse.
class DeferredChanges {
public:
    static constexpr bool kOthersChangeTheMesh = true;

    DeferredChanges(ProgressiveMesh& pm, ThreadWorkRecord& record, CriticalSections& sections)
        : pm_(pm), record_(record), sections_(sections), guards_(sections) {}

    CollapseResult collapse(std::int32_t v, std::int32_t w, const FloatVec3& position,
                            CollapseRecord& record) {
        return CollapseEdge_MT(pm_, v, w, position, record, scratch_, sections_);
    }
    void undo(std::int32_t v, std::int32_t w, const CollapseRecord& record) {
        UndoCollapse_MT(pm_, v, w, record.split, record.flags, sections_);
    }
    void penalize(std::int32_t vertex) { PenalizeDeferred(pm_, vertex, record_); }
    void unqueue(std::int32_t vertex) { record_.removedVertices.push_back(vertex); }
    [[nodiscard]] bool isSlave(std::int32_t vertex) const {
        const auto guard = guards_.symmetrySlaves();
        return pm_.symmetrySlaves.Test(vertex);
    }
    void freeSlave(std::int32_t vertex) {
        const auto guard = guards_.symmetrySlaves();
        pm_.symmetrySlaves.Clear(vertex);
    }

private:
    ProgressiveMesh& pm_;
    ThreadWorkRecord& record_;
    CriticalSections& sections_;
    ThreadGuards guards_;
    CollapseScratch scratch_;
};

}  // namespace korvalite
