// SPDX-License-Identifier: MIT
//
// The core of a turn, the same in all drivers: a collapse and, where symmetry requires it, its
// mirror image, both or neither, followed by the re-ranking of the vertices around them.
#pragma once

#include "collapse/collapse.h"
#include "collapse/sharing.h"
#include "collapse/symmetric_collapse.h"
#include "metric/edge_cost.h"
#include "metric/metric.h"
#include "progressive/progressive_mesh.h"

#include <algorithm>
#include <concepts>
#include <cstdint>

namespace korvalite::core {

/// What a driver adds to a turn.
template <typename Driver>
concept PairDriver = requires(Driver& driver, std::int32_t vertex,
                              KeptQuadrics<typename Driver::Metric>& quadrics,
                              CollapseRecord& record, const CollapseRecord& made,
                              const EdgeEvaluation& evaluation) {
    // Driver::Metric places the mirror image.

    // The new position and colour of the kept vertex: place(removed, kept, quadrics).
    { driver.place(vertex, vertex, quadrics) } -> std::same_as<EdgeEvaluation>;
    driver.carryAttributes(record, vertex, vertex, evaluation);  // removed, kept
    driver.updateCosts(vertex, made);  // after a collapse onto a vertex that is still active
    driver.refreshCosts(made);         // ... that is no longer active
    driver.rankFreedSlave(vertex);     // ranks one vertex and queues it
};

template <PairDriver Driver, SharingPolicy Sharing>
class PairCollapse {
public:
    /// The records, for one collapse and its mirror image, belong to the caller.
    PairCollapse(ProgressiveMesh& pm, Driver& driver, Sharing& sharing, CollapseRecord& first,
                 CollapseRecord& second)
        : pm_(pm), mesh_(pm.mesh), driver_(driver), sharing_(sharing), first_(first),
          second_(second) {}

    /// Collapses `removed` onto `kept` together with the mirror image, if required. On refusal
    /// returns false, leaves the mesh as it was and penalizes the refused vertex.
    bool collapse(std::int32_t removed, std::int32_t kept) {
        // COMPAT: the new cost is ignored, since the stored one has decided; outputs depend on it.
        if (Sharing::kIsShared) keptQuadrics_.forget();  // others change the mesh
        EdgeEvaluation evaluation = driver_.place(removed, kept, keptQuadrics_);
        mirror_ = {};
        if (pm_.m_handleSymmetry_internal &&
            !CheckSymmetricCollapse(pm_, removed, kept, evaluation, mirror_, keptQuadrics_)) {
            return refuse(removed);
        }
        first_.clear();
        second_.clear();
        if (!tryCollapse(removed, kept, evaluation.position, first_)) return refuse(removed);
        if (mirror_.doMirror && !collapseMirror(removed, kept)) return refuse(removed);
        driver_.carryAttributes(first_, removed, kept, evaluation);
        if (mirror_.doMirror) {
            driver_.carryAttributes(second_, mirror_.mirrorRemoved, mirror_.mirrorKept,
                                    mirror_.evaluation);
        }
        return true;
    }

    /// REQUIRES: collapse has just succeeded.
    void rankAgain(std::int32_t removed, std::int32_t kept) {
        const std::int32_t mirrorRemoved = mirror_.mirrorRemoved;
        sharing_.unqueue(removed);
        if (mirror_.doMirror) sharing_.unqueue(mirrorRemoved);
        if (pm_.m_handleSymmetry_internal && kept == mirrorRemoved) {
            // The vertex collapsed onto its own mirror image, which is now on the plane.
            mesh_.symmetryCache.pairing[kept] = kept;
            freeSlave(pm_, kept, sharing_);
        }
        rankAround(kept, first_);
        if (mirror_.doMirror) rankAround(mirror_.mirrorKept, second_);
        if (pm_.m_handleSymmetry_internal && !mirror_.doMirror && mirrorRemoved != kNone)
            releaseSlave(mirrorRemoved);
    }

    /// Whether the second record holds the mirror image of the collapse.
    [[nodiscard]] bool hasMirror() const { return mirror_.doMirror; }

private:
    bool tryCollapse(std::int32_t removed, std::int32_t kept, const FloatVec3& position,
                     CollapseRecord& record) {
        const CollapseResult result =
            CollapseEdge(pm_, removed, kept, position, record, scratch_, sharing_);
        // The order of the lists has changed, even if the collapse was undone.
        if (record.split.vertex != kNone) keptQuadrics_.forget();
        return result == CollapseResult::Done;
    }

    bool refuse(std::int32_t removed) {
        sharing_.penalize(removed);
        return false;
    }

    /// Collapses the mirror image after the first collapse; a refusal undoes the first one too.
    bool collapseMirror(std::int32_t removed, std::int32_t kept) {
        const std::int32_t mirrorRemoved = mirror_.mirrorRemoved;
        if (!mesh_.vertexActive.Test(mirror_.mirrorKept)) {
            // The first collapse has removed its last triangle, so there is nothing to collapse
            // onto.
            mirror_.doMirror = false;
            return true;
        }
        mesh_.vertices[mirrorRemoved].partner = mirror_.mirrorKept;
        if (!tryCollapse(mirrorRemoved, mirror_.mirrorKept, mirror_.evaluation.position, second_)) {
            sharing_.penalize(mirrorRemoved);
            UndoCollapse(mesh_, removed, kept, first_, scratch_, sharing_);
            return false;
        }
        const auto gone =
            std::find(first_.neighbours.begin(), first_.neighbours.end(), mirrorRemoved);
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
    void releaseSlave(std::int32_t slave) {
        if (!mesh_.vertexActive.Test(slave) || !isSlave(pm_, slave, sharing_) ||
            pm_.costQueue.isQueued(slave)) {
            return;
        }
        freeSlave(pm_, slave, sharing_);
        driver_.rankFreedSlave(slave);
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    Driver& driver_;
    Sharing& sharing_;
    CollapseScratch scratch_;
    CollapseRecord& first_;
    CollapseRecord& second_;
    SymmetricCollapse mirror_;
    KeptQuadrics<typename Driver::Metric> keptQuadrics_;
};

}  // namespace korvalite::core
