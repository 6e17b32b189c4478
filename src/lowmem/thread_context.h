// SPDX-License-Identifier: MIT
//
// What each thread of the multi-threaded driver owns. While a thread runs its loop nothing else
// touches its context: all that it finds reaches the mesh through its own commits.
#pragma once

#include "decimation/collapse.h"
#include "lowmem/neighbourhood_marks.h"
#include "lowmem/thread_statistics.h"
#include "mesh/corner_lists.h"
#include "platform/cache_line.h"

#include <cstdint>
#include <vector>

namespace korvalite {

/// The results of one turn until they are committed. Used again in every turn, so that the lists
/// keep their capacity.
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
    CollapseRecord mirrorSplitRecord;  // its mirror image; vertex kNone if there is none
    IndexList removedVertices;         // to be taken out of the queue
    // Three parallel lists: the vertices that get a new cost. Of two entries of one vertex the
    // later one holds.
    IndexList updateVertices;
    std::vector<float> updateCosts;
    IndexList updatePartners;
    IndexList updateBuckets;  // of the queue; kNone for a vertex that stays out of it

    /// Ready for the next turn.
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

struct alignas(kCacheLine) ThreadContext {
    std::int32_t threadIndex = 0;  // 0 for the main thread
    ThreadWorkRecord workRecord;
    NeighbourhoodMarks marks;
    ThreadStatistics statistics;  // of the last run
};

}  // namespace korvalite
