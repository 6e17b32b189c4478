// SPDX-License-Identifier: MIT
//
// The core of a turn, the same in all drivers: a collapse and, where symmetry requires it, its
// mirror image, both or neither, followed by the re-ranking of the vertices around them.
//
// A driver is a class with these hooks:
//
//   using Metric                            places the mirror image
//   EdgeEvaluation place(v, u, quadrics)    new position and colour of u; quadrics is KeptQuadrics
//   void carryAttributes(record, removed, kept, evaluation)
//   void updateCosts(kept, record)          after a collapse onto a vertex that is still active
//   void refreshCosts(record)               ... that is no longer active
//   void rankFreedSlave(vertex)             cost and partner of one vertex; also queues it
//
// Changes defines how the driver collapses and how it changes everything outside the mesh: at once
// (ChangesAtOnce), or recorded until it holds the queue.
#pragma once

#include "collapse/collapse.h"
#include "collapse/symmetric_collapse.h"
#include "metric/edge_cost.h"
#include "metric/metric.h"
#include "progressive/progressive_mesh.h"

#include <algorithm>
#include <cstdint>

namespace korvalite {

/// For a driver that has the mesh to itself.
class ChangesAtOnce {
public:
    static constexpr bool kOthersChangeTheMesh = false;

    explicit ChangesAtOnce(ProgressiveMesh& pm) : pm_(pm) {}

    CollapseResult collapse(std::int32_t v, std::int32_t w, const FloatVec3& position,
                            CollapseRecord& record) {
        return CollapseEdge(pm_, v, w, position, record, scratch_);
    }
    void undo(std::int32_t v, std::int32_t w, const CollapseRecord& record) {
        UndoCollapse(pm_, v, w, record.split, record.flags);
    }
    void penalize(std::int32_t vertex) { Penalize(pm_.mesh, pm_.costQueue, vertex); }
    void unqueue(std::int32_t vertex) { pm_.costQueue.Remove(vertex); }
    [[nodiscard]] bool isSlave(std::int32_t vertex) const {
        return pm_.symmetrySlaves.Test(vertex);
    }
    void freeSlave(std::int32_t vertex) { pm_.symmetrySlaves.Clear(vertex); }

private:
    ProgressiveMesh& pm_;
    CollapseScratch scratch_;
};

template <typename Driver, typename Changes>
class PairCollapse {
public:
    /// The records, for one collapse and its mirror image, belong to the caller.
    PairCollapse(ProgressiveMesh& pm, Driver& driver, Changes& changes, CollapseRecord& first,
                 CollapseRecord& second)
        : pm_(pm), mesh_(pm.mesh), driver_(driver), changes_(changes), first_(first),
          second_(second) {}

    /// Collapses v onto u together with the mirror image, if required. On refusal returns false,
    /// leaves the mesh as it was and penalizes the refused vertex.
    bool collapse(std::int32_t v, std::int32_t u) {
        // The new evaluation's cost is ignored: the stored cost has already decided.
        if (Changes::kOthersChangeTheMesh) keptQuadrics_.forget();
        EdgeEvaluation evaluation = driver_.place(v, u, keptQuadrics_);
        mirror_ = {};
        if (pm_.m_handleSymmetry_internal &&
            !CheckSymmetricCollapse(pm_, v, u, evaluation, mirror_, keptQuadrics_)) {
            return refuse(v);
        }
        first_.clear();
        second_.clear();
        if (!tryCollapse(v, u, evaluation.position, first_)) return refuse(v);
        if (mirror_.doMirror && !collapseMirror(v, u)) return refuse(v);
        driver_.carryAttributes(first_, v, u, evaluation);
        if (mirror_.doMirror) {
            driver_.carryAttributes(second_, mirror_.mirrorV, mirror_.mirrorW, mirror_.evaluation);
        }
        return true;
    }

    /// REQUIRES: collapse has just succeeded.
    void rankAgain(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mirror_.mirrorV;
        changes_.unqueue(v);
        if (mirror_.doMirror) changes_.unqueue(mv);
        if (pm_.m_handleSymmetry_internal && u == mv) {
            // v collapsed onto its own mirror image, which is now on the plane.
            mesh_.symmetryCache.pairing[static_cast<std::size_t>(u)] = u;
            changes_.freeSlave(u);
        }
        rankAround(u, first_);
        if (mirror_.doMirror) rankAround(mirror_.mirrorW, second_);
        if (pm_.m_handleSymmetry_internal && !mirror_.doMirror && mv != kNone) freeSlave(mv);
    }

    /// Whether the second record holds the mirror image of the collapse.
    [[nodiscard]] bool hasMirror() const { return mirror_.doMirror; }

private:
    bool tryCollapse(std::int32_t v, std::int32_t w, const FloatVec3& position,
                     CollapseRecord& record) {
        const CollapseResult result = changes_.collapse(v, w, position, record);
        // The order of the lists has changed, even if the collapse was undone.
        if (record.split.vertex != kNone) keptQuadrics_.forget();
        return result == CollapseResult::Done;
    }

    bool refuse(std::int32_t v) {
        changes_.penalize(v);
        return false;
    }

    /// Collapses the mirror image after the first collapse; a refusal undoes the first one too.
    bool collapseMirror(std::int32_t v, std::int32_t u) {
        const std::int32_t mv = mirror_.mirrorV;
        if (!mesh_.vertexActive.Test(mirror_.mirrorW)) {
            // The first collapse has removed its last triangle, so there is nothing to collapse
            // onto.
            mirror_.doMirror = false;
            return true;
        }
        mesh_.vertices[static_cast<std::size_t>(mv)].partner = mirror_.mirrorW;
        if (!tryCollapse(mv, mirror_.mirrorW, mirror_.evaluation.position, second_)) {
            changes_.penalize(mv);
            changes_.undo(v, u, first_);
            return false;
        }
        const auto gone = std::find(first_.neighbours.begin(), first_.neighbours.end(), mv);
        if (gone != first_.neighbours.end()) first_.neighbours.erase(gone);
        return true;
    }

    void rankAround(std::int32_t kept, const CollapseRecord& record) {
        if (mesh_.vertexActive.Test(kept)) {
            driver_.updateCosts(kept, record);
        } else {
            driver_.refreshCosts(record);
        }
    }

    /// If a master has collapsed alone, its slave becomes an independent vertex.
    void freeSlave(std::int32_t slave) {
        if (!mesh_.vertexActive.Test(slave) || !changes_.isSlave(slave) ||
            pm_.costQueue.isQueued(slave)) {
            return;
        }
        changes_.freeSlave(slave);
        driver_.rankFreedSlave(slave);
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    Driver& driver_;
    Changes& changes_;
    CollapseRecord& first_;
    CollapseRecord& second_;
    SymmetricCollapse mirror_;
    KeptQuadrics<typename Driver::Metric> keptQuadrics_;
};

}  // namespace korvalite
