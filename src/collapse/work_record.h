// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"
#include "splits/vsplit.h"

#include <cstdint>
#include <vector>

namespace korvalite::core {

/// One collapse and its results. The driver reuses the record, so a collapse allocates nothing once
/// the lists have grown.
struct CollapseRecord {
    VSplit split;
    CollapseFlags flags;
    // The ring of the kept vertex after the collapse, gathered by the link test; empty with
    // ProtectTopology off, which skips that test.
    IndexList neighbours;
    IndexList ringCorners;

    void clear() {
        split.clear();
        flags = {};
        neighbours.clear();
        ringCorners.clear();
    }
};

/// The results of one turn of one thread until they are committed. Reused in every turn, so the
/// lists keep their capacity.
struct ThreadWorkRecord {
    ThreadWorkRecord() {
        removedVertices.reserve(3);
        updateVertices.reserve(25);
        updateCosts.reserve(25);
        updatePartners.reserve(25);
        updateBuckets.reserve(25);
    }

    std::int32_t pickedVertex = kNone;
    CollapseRecord splitRecord;
    CollapseRecord mirrorSplitRecord;  // its mirror image; vertex is kNone if there is none
    IndexList removedVertices;         // to be removed from the queue
    // Three parallel lists of the vertices with a new cost. If a vertex has two entries, the later
    // one counts.
    IndexList updateVertices;
    std::vector<float> updateCosts;
    IndexList updatePartners;
    IndexList updateBuckets;  // of the queue; kNone for a vertex that is not queued

    /// Prepares for the next turn.
    void clear() {
        pickedVertex = kNone;
        splitRecord.clear();
        mirrorSplitRecord.clear();
        removedVertices.clear();
        updateVertices.clear();
        updateCosts.clear();
        updatePartners.clear();
        updateBuckets.clear();
    }

    void appendUpdate(std::int32_t vertex, float cost, std::int32_t partner) {
        updateVertices.push_back(vertex);
        updateCosts.push_back(cost);
        updatePartners.push_back(partner);
    }
};

}  // namespace korvalite::core
