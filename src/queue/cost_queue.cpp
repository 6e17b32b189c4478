// SPDX-License-Identifier: MIT
#include "queue/cost_queue.h"

#include "base/cache.h"
#include "base/numeric.h"
#include "mesh/dmesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace korvalite::core {

namespace {

constexpr double kDefaultMinCost = 1e-9;
constexpr double kDefaultMaxCost = 10.0;
constexpr double kDefaultLogRange = 5.0;

constexpr std::size_t kDecadeBins = 256;
constexpr std::int32_t kDecadeOfFirstBin = -128;
constexpr std::uint32_t kVerticesBelowScale = 15;

std::size_t decadeBin(float cost) {
    const std::int32_t decade = truncateToInt32(std::log10(static_cast<double>(cost)));
    return decade <= kDecadeOfFirstBin ? 0 : static_cast<std::size_t>(decade - kDecadeOfFirstBin);
}

double decadeOf(std::size_t bin) {
    return static_cast<double>(static_cast<std::int32_t>(bin) + kDecadeOfFirstBin);
}

}  // namespace

CostQueue::CostQueue(const DMesh& mesh) : mesh_(mesh) {}

float CostQueue::costOf(std::int32_t vertex) const {
    return mesh_.vertices[vertex].cost;
}

void CostQueue::Init(std::int32_t vertexCount) {
    orderedSet_.clear();
    prefetched_ = kNone;
    vertexCount_ = vertexCount;
    const auto count = static_cast<std::size_t>(vertexCount);
    bucketHeads_.assign((count + 9) / 10, kNone);
    reserveLarge(links_, count);
    links_.assign(count, {});
    minCost_ = kDefaultMinCost;
    maxCost_ = kDefaultMaxCost;
    logRange_ = kDefaultLogRange;
    if (vertexCount != 0) fitScale();
}

/// The scale starts at the highest decade with at most 15 vertices below it, and ends at the cost
/// of a collapse across a large part of the bounding box.
void CostQueue::fitScale() {
    std::array<std::uint32_t, kDecadeBins> histogram{};
    for (const VertexRecord& vertex : mesh_.vertices) {
        if (vertex.cost != kNotCollapsible) ++histogram[decadeBin(vertex.cost)];
    }
    // COMPAT: if the loop finds no decade, the last line subtracts the default logRange_, although
    // that is not the decade of minCost_; the spread over the buckets, and so speed, depends on it.
    std::uint32_t below = 0;
    for (std::size_t bin = 0; bin < kDecadeBins; ++bin) {
        below += histogram[bin];
        if (below > kVerticesBelowScale) {
            logRange_ = decadeOf(bin);
            minCost_ = std::pow(10.0, decadeOf(bin));
            break;
        }
    }
    const double k = std::sin(std::numbers::pi / (std::sqrt(10.0) * 2.0));
    const double u = k * static_cast<double>(mesh_.boundingBox.diagonal());
    maxCost_ = u * u * 0.25;
    logRange_ = std::log10(maxCost_) - logRange_;
}

std::int32_t CostQueue::bucketOf(float cost) const {
    double c = static_cast<double>(cost);
    if (minCost_ > c) {
        c = minCost_;
    } else if (c > maxCost_) {
        c = maxCost_;
    }
    const double decades = std::log10(c / minCost_);
    const std::int32_t bucket =
        truncateToInt32(decades / logRange_ * static_cast<double>(bucketCount()));
    return bucket < 0 ? 0 : std::min(bucket, bucketCount() - 1);
}

void CostQueue::Insert(std::int32_t vertex) {
    const float cost = costOf(vertex);
    if (cost != kNotCollapsible) Insert(vertex, bucketOf(cost));
}

void CostQueue::Insert(std::int32_t vertex, std::int32_t bucket) {
    if (bucket != kNone && !isQueued(vertex)) insertInBucket(vertex, bucket);
}

void CostQueue::InsertAll(std::span<const std::int32_t> vertices) {
    buckets_.clear();
    for (const std::int32_t vertex : vertices) {
        const float cost = costOf(vertex);
        buckets_.push_back(cost == kNotCollapsible ? kNone : bucketOf(cost));
    }
    prefetchBuckets(buckets_);
    for (std::size_t i = 0; i < vertices.size(); ++i)
        Insert(vertices[i], buckets_[i]);
}

void CostQueue::prefetchBuckets(std::span<const std::int32_t> buckets) const {
    for (const std::int32_t bucket : buckets) {
        if (bucket != kNone) prefetch(&bucketHeads_[bucket]);
    }
    for (const std::int32_t bucket : buckets) {
        if (bucket == kNone) continue;
        const std::int32_t first = loadRelaxed(bucketHeads_[bucket]);
        if (first != kNone) prefetch(&links_[first]);
    }
}

void CostQueue::insertInBucket(std::int32_t vertex, std::int32_t bucket) {
    if (bucket <= currentBucket_) {
        insertInSet(vertex);
        return;
    }
    const std::int32_t head = bucketHeads_[bucket];
    if (head != kNone) link(head, linksOf(head).next, vertex);
    link(vertex, head, kFirstBucket - bucket);
    setHead(bucket, vertex);
}

void CostQueue::insertInSet(std::int32_t vertex) {
    orderedSet_.insert(vertex, costOf(vertex));
    link(vertex, kInSet, kNoBackLink);
}

void CostQueue::Remove(std::int32_t vertex) {
    if (!isQueued(vertex)) return;
    if (linksOf(vertex).back != kNoBackLink) {
        unlinkFromBucket(vertex);
        return;
    }
    orderedSet_.erase(vertex, costOf(vertex));
    link(vertex, kNotQueued, kNoBackLink);
}

void CostQueue::RemoveAll(std::span<const std::int32_t> vertices) {
    prefetchLinks(vertices);
    for (const std::int32_t vertex : vertices)
        Remove(vertex);
}

void CostQueue::prefetchOwnLinks(std::span<const std::int32_t> vertices) const {
    for (const std::int32_t vertex : vertices)
        prefetch(&links_[vertex]);
}

void CostQueue::prefetchLinks(std::span<const std::int32_t> vertices) const {
    for (const std::int32_t vertex : vertices) {
        const Links links = loadRelaxed(links_[vertex]);
        if (links.back == kNoBackLink) continue;
        if (links.next != kNone) prefetch(&links_[links.next]);
        if (links.back >= 0) prefetch(&links_[links.back]);
    }
}

void CostQueue::unlinkFromBucket(std::int32_t vertex) {
    const auto [next, back] = linksOf(vertex);
    if (back >= 0) {
        link(back, next, linksOf(back).back);
    } else {
        setHead(kFirstBucket - back, next);
    }
    if (next != kNone) link(next, linksOf(next).next, back);
    link(vertex, kNotQueued, kNoBackLink);
}

/// False if no bucket is left. Lists the poured vertices in `poured`, unless it is null.
bool CostQueue::pourNextBucket(std::vector<OrderedSet::Key>* poured) {
    std::int32_t bucket = currentBucket_ + 1;
    while (bucket < bucketCount() && bucketHeads_[bucket] == kNone)
        ++bucket;
    currentBucket_ = std::min(bucket, bucketCount());
    if (currentBucket_ == bucketCount()) return false;
    if (poured != nullptr) poured->clear();
    for (std::int32_t vertex = bucketHeads_[bucket]; vertex != kNone;) {
        const std::int32_t next = linksOf(vertex).next;
        if (poured != nullptr) poured->push_back(OrderedSet::keyOf(vertex, costOf(vertex)));
        insertInSet(vertex);
        vertex = next;
    }
    setHead(bucket, kNone);
    prefetchNextBucket();
    return true;
}

void CostQueue::prefetchNextBucket() {
    constexpr std::int32_t kFarthest = 16;
    prefetched_ = kNone;
    const std::int32_t end = std::min(bucketCount(), currentBucket_ + 1 + kFarthest);
    for (std::int32_t bucket = currentBucket_ + 1; bucket < end && prefetched_ == kNone; ++bucket)
        prefetched_ = bucketHeads_[bucket];
    if (prefetched_ != kNone) prefetchVertex(prefetched_);
}

void CostQueue::prefetchOneMore() {
    if (prefetched_ < 0) return;
    prefetched_ = linksOf(prefetched_).next;
    if (prefetched_ >= 0) prefetchVertex(prefetched_);
}

void CostQueue::prefetchVertex(std::int32_t vertex) const {
    prefetch(&links_[vertex]);
    prefetch(&mesh_.vertices[vertex]);
}

std::int32_t CostQueue::Top() {
    prefetchOneMore();
    if (orderedSet_.empty() && !pourNextBucket()) return kNone;
    return orderedSet_.first();
}

void CostQueue::Clear() {
    orderedSet_.clear();
    std::fill(bucketHeads_.begin(), bucketHeads_.end(), kNone);
    std::fill(links_.begin(), links_.end(), Links{});
}

void CostQueue::Release() {
    orderedSet_.clear();
    prefetched_ = kNone;
    IndexedArray<std::int32_t>().swap(bucketHeads_);
    IndexedArray<Links>().swap(links_);
    std::vector<OrderedSet::Key>().swap(poured_);
    vertexCount_ = 0;
    currentBucket_ = 0;
    minCost_ = kDefaultMinCost;
    maxCost_ = kDefaultMaxCost;
    logRange_ = kDefaultLogRange;
}

void Penalize(DMesh& mesh, CostQueue& queue, std::int32_t vertex) {
    float& cost = mesh.vertices[vertex].cost;
    if (!queue.isQueued(vertex)) {
        cost = penalizedCost(cost);
        return;
    }
    queue.Remove(vertex);
    cost = penalizedCost(cost);
    queue.Insert(vertex);
}

}  // namespace korvalite::core
