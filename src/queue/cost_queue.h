// SPDX-License-Identifier: MIT
//
// The vertices in order of cost, cheapest first; among equals the lower index comes first.
//
// Not a heap: log-scale buckets, each an unordered intrusive list of vertices, feed a small ordered
// set. Only the cheapest buckets are ever sorted: when the set runs dry, the next bucket is poured
// into it. Inserting into a bucket takes constant time and allocates nothing, so meshes of many
// millions of vertices can be queued.
//
// The queue reads each vertex's `cost` from its record. A cost must not change while its vertex is
// queued: callers remove, change, then insert.
//
// Thread safety: none, except that isQueued, bucketOf and the prefetches may be called while
// another thread changes the queue, isQueued only for a vertex that merely moves within it.
#pragma once

#include "base/indexed_array.h"
#include "base/relaxed.h"
#include "queue/ordered_set.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace korvalite::core {

struct DMesh;

/// Costs from here up belong to vertices whose collapse has been refused at least once.
// COMPAT: a real cost this high counts as refused too, and ends the run; outputs depend on it.
inline constexpr float kPenalizedCost = 1e10F;

class CostQueue {
public:
    /// `mesh` provides the costs and the bounding box; it must outlive the queue.
    explicit CostQueue(const DMesh& mesh);
    CostQueue(const CostQueue&) = delete;
    CostQueue& operator=(const CostQueue&) = delete;

    /// Empties the queue, makes room for `vertexCount` vertices and fits the log scale to their
    /// costs. Does not insert any.
    void Init(std::int32_t vertexCount);

    /// No effect for a vertex that is not collapsible or already queued.
    void Insert(std::int32_t vertex);
    /// The same with a precomputed bucketOf(cost); -1 for a vertex that is not collapsible.
    void Insert(std::int32_t vertex, std::int32_t bucket);

    /// No effect for a vertex that is not queued.
    void Remove(std::int32_t vertex);

    /// The same for several vertices. Their links point all over memory; batching lets the cache
    /// misses overlap.
    void InsertAll(std::span<const std::int32_t> vertices);
    void RemoveAll(std::span<const std::int32_t> vertices);

    /// Prefetch what Remove and Insert will access. The first fetches what the second reads.
    void prefetchOwnLinks(std::span<const std::int32_t> vertices) const;
    void prefetchLinks(std::span<const std::int32_t> vertices) const;
    void prefetchBuckets(std::span<const std::int32_t> buckets) const;

    [[nodiscard]] bool isQueued(std::int32_t vertex) const {
        const Links links = loadRelaxed(links_[vertex]);
        return links.back != kNoBackLink || links.next != kNotQueued;
    }

    /// The cheapest vertex, not removed; -1 when the queue is empty. Pours buckets as needed.
    std::int32_t Top();

    /// The cheapest vertex for which accept(vertex) is true, not removed; -1 if there is none.
    /// Pours more buckets while goesOn() is true and no vertex in the ordered set is accepted.
    /// Tests each vertex only once: a vertex that was rejected must stay rejected until this
    /// returns.
    template <typename Accept, typename GoesOn>
    std::int32_t FirstAccepted(Accept accept, GoesOn goesOn) {
        prefetchOneMore();
        if (orderedSet_.empty()) pourNextBucket();
        if (orderedSet_.empty()) return -1;
        std::int32_t vertex = orderedSet_.firstAccepted(accept);
        while (vertex < 0 && goesOn() && pourNextBucket(&poured_))
            vertex = firstPoured(accept);
        return vertex;
    }

    template <typename Accept>
    std::int32_t FirstAccepted(Accept accept) {
        return FirstAccepted(accept, [] { return true; });
    }

    /// What Top would return without pouring, as a guess at what comes next; -1 if it had to pour.
    [[nodiscard]] std::int32_t peek() const {
        return orderedSet_.empty() ? -1 : orderedSet_.first();
    }

    /// Empties the queue for a rebuild; keeps the scale and the current bucket.
    void Clear();

    /// Returns to the state before Init and frees all storage.
    void Release();

    [[nodiscard]] std::int32_t vertexCount() const { return vertexCount_; }
    [[nodiscard]] double minCost() const { return minCost_; }
    [[nodiscard]] double maxCost() const { return maxCost_; }
    [[nodiscard]] double logRange() const { return logRange_; }
    [[nodiscard]] std::int32_t bucketCount() const {
        return static_cast<std::int32_t>(bucketHeads_.size());
    }
    [[nodiscard]] std::int32_t currentBucket() const { return currentBucket_; }
    [[nodiscard]] std::int32_t bucketOf(float cost) const;

private:
    // `next` of a vertex that is not in a bucket.
    static constexpr std::int32_t kNotQueued = -1;
    static constexpr std::int32_t kInSet = -2;
    // `back` of a vertex in a bucket: the previous vertex, or kFirstBucket minus the bucket's index
    // if the vertex is the first.
    static constexpr std::int32_t kNoBackLink = -1;
    static constexpr std::int32_t kFirstBucket = -2;
    // Read and written as one, so other threads always see a vertex that moves from a bucket to the
    // set in one of the two.
    struct alignas(8) Links {
        std::int32_t next = kNotQueued;
        std::int32_t back = kNoBackLink;
    };

    void fitScale();
    [[nodiscard]] float costOf(std::int32_t vertex) const;
    void insertInBucket(std::int32_t vertex, std::int32_t bucket);
    void insertInSet(std::int32_t vertex);
    void unlinkFromBucket(std::int32_t vertex);
    bool pourNextBucket(std::vector<OrderedSet::Key>* poured = nullptr);
    template <typename Accept>
    std::int32_t firstPoured(Accept accept) {
        std::sort(poured_.begin(), poured_.end());
        for (const OrderedSet::Key key : poured_) {
            const std::int32_t vertex = OrderedSet::vertexOf(key);
            if (accept(vertex)) return vertex;
        }
        return -1;
    }
    void prefetchNextBucket();
    void prefetchOneMore();
    void prefetchVertex(std::int32_t vertex) const;
    [[nodiscard]] Links linksOf(std::int32_t vertex) const { return links_[vertex]; }
    void link(std::int32_t vertex, std::int32_t next, std::int32_t back) {
        storeRelaxed(links_[vertex], Links{next, back});
    }
    void setHead(std::int32_t bucket, std::int32_t vertex) {
        storeRelaxed(bucketHeads_[bucket], vertex);
    }

    const DMesh& mesh_;
    std::int32_t vertexCount_ = 0;
    std::int32_t currentBucket_ = 0;  // the highest bucket poured so far
    // Usually a vertex in the bucket to be poured next. Walking its list misses the cache at every
    // step, so each access to the queue prefetches one more vertex. If the vertex has left the
    // bucket, the walk goes astray, which does no harm.
    std::int32_t prefetched_ = -1;
    IndexedArray<std::int32_t> bucketHeads_;
    IndexedArray<Links> links_;
    OrderedSet orderedSet_;
    std::vector<std::int32_t> buckets_;    // scratch of InsertAll
    std::vector<OrderedSet::Key> poured_;  // scratch of FirstAccepted
    double minCost_ = 1e-9;
    double maxCost_ = 10.0;
    double logRange_ = 5.0;  // decades
};

/// The cost after a refusal: above every real cost and always above the old one, so a refused
/// vertex never stays first.
inline float penalizedCost(float cost) {
    const float raised = cost * 100.0F + kPenalizedCost;
    return raised > cost ? raised : kPenalizedCost;
}

/// Raises the cost of a refused vertex, queued or not, above every real cost.
void Penalize(DMesh& mesh, CostQueue& queue, std::int32_t vertex);

}  // namespace korvalite::core
