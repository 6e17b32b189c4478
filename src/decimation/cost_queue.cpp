// SPDX-License-Identifier: MIT
#include "decimation/cost_queue.h"

#include "mesh/dmesh.h"
#include "platform/numeric.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace korvalite {

namespace {

constexpr double kDefaultMinCost = 1e-9;
constexpr double kDefaultMaxCost = 10.0;
constexpr double kDefaultLogRange = 5.0;

constexpr std::int32_t kDecadeBins = 256;
constexpr std::int32_t kDecadeOfFirstBin = -128;
constexpr std::uint32_t kVerticesBelowScale = 15;

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

std::int32_t decadeBin(float cost) {
    const std::int32_t decade = truncateToInt32(std::log10(static_cast<double>(cost)));
    return decade <= kDecadeOfFirstBin ? 0 : decade - kDecadeOfFirstBin;
}

}  // namespace

bool CostQueue::CheaperFirst::operator()(std::int32_t x, std::int32_t y) const {
    const float difference = mesh->vertices[at(x)].cost - mesh->vertices[at(y)].cost;
    if (0.0F > difference) return true;
    return !(difference > 0.0F) && x < y;
}

CostQueue::CostQueue(const DMesh& mesh)
    : mesh_(mesh), orderedSet_(CheaperFirst{&mesh}, &setNodes_) {
    setHandles_.reserve(kHandleCapacity);
}

void CostQueue::Init(std::int32_t vertexCount) {
    orderedSet_.clear();
    setHandles_.clear();
    setHandles_.reserve(kHandleCapacity);
    vertexCount_ = vertexCount;
    bucketHeads_.assign(at(vertexCount + 9) / 10, kNone);
    reserveLarge(links_, at(vertexCount));
    links_.assign(at(vertexCount), kNotQueued);
    reserveLarge(backLinks_, at(vertexCount));
    backLinks_.assign(at(vertexCount), kNoBackLink);
    minCost_ = kDefaultMinCost;
    maxCost_ = kDefaultMaxCost;
    logRange_ = kDefaultLogRange;
    if (vertexCount != 0) fitScale();
}

/// The scale begins at the decade below which 15 vertices or fewer lie, and ends at what a collapse
/// over a good part of the box would cost.
void CostQueue::fitScale() {
    std::array<std::uint32_t, kDecadeBins> histogram{};
    for (const VertexRecord& vertex : mesh_.vertices) {
        if (vertex.cost != kNotCollapsible) ++histogram[at(decadeBin(vertex.cost))];
    }
    // Where no decade is reached, logRange keeps its default here although minCost is another
    // decade: the scale has always been so.
    std::uint32_t below = 0;
    for (std::int32_t bin = 0; bin < kDecadeBins; ++bin) {
        below += histogram[at(bin)];
        if (below > kVerticesBelowScale) {
            logRange_ = static_cast<double>(bin + kDecadeOfFirstBin);
            minCost_ = std::pow(10.0, static_cast<double>(bin + kDecadeOfFirstBin));
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
    if (mesh_.vertices[at(vertex)].cost == kNotCollapsible || isQueued(vertex)) return;
    const std::int32_t bucket = bucketOf(mesh_.vertices[at(vertex)].cost);
    if (bucket <= currentBucket_) {
        insertInSet(vertex);
        return;
    }
    std::int32_t& head = bucketHeads_[at(bucket)];
    links_[at(vertex)] = head;
    if (head != kNone) backLinks_[at(head)] = vertex;
    backLinks_[at(vertex)] = kFirstBucket - bucket;
    head = vertex;
}

void CostQueue::insertInSet(std::int32_t vertex) {
    const auto place = orderedSet_.insert(vertex).first;
    if (setHandles_.size() < kHandleCapacity) {
        links_[at(vertex)] = static_cast<std::int32_t>(setHandles_.size());
        setHandles_.push_back(place);
    } else {
        links_[at(vertex)] = kNoHandle;
    }
}

void CostQueue::Remove(std::int32_t vertex) {
    if (!isQueued(vertex)) return;
    if (backLinks_[at(vertex)] != kNoBackLink) {
        unlinkFromBucket(vertex);
        return;
    }
    orderedSet_.erase(links_[at(vertex)] == kNoHandle ? orderedSet_.lower_bound(vertex)
                                                      : takeHandle(vertex));
    links_[at(vertex)] = kNotQueued;
}

void CostQueue::unlinkFromBucket(std::int32_t vertex) {
    const std::int32_t next = links_[at(vertex)];
    const std::int32_t back = backLinks_[at(vertex)];
    (back >= 0 ? links_[at(back)] : bucketHeads_[at(kFirstBucket - back)]) = next;
    if (next != kNone) backLinks_[at(next)] = back;
    backLinks_[at(vertex)] = kNoBackLink;
    links_[at(vertex)] = kNotQueued;
}

CostQueue::OrderedSet::iterator CostQueue::takeHandle(std::int32_t vertex) {
    const std::int32_t slot = links_[at(vertex)];
    const auto place = setHandles_[at(slot)];
    setHandles_[at(slot)] = setHandles_.back();
    links_[at(*setHandles_[at(slot)])] = slot;
    setHandles_.pop_back();
    return place;
}

std::int32_t CostQueue::Top() {
    if (orderedSet_.empty()) {
        std::int32_t bucket = currentBucket_ + 1;
        while (bucket < bucketCount() && bucketHeads_[at(bucket)] == kNone)
            ++bucket;
        currentBucket_ = std::min(bucket, bucketCount());
        if (currentBucket_ == bucketCount()) return kNone;
        for (std::int32_t vertex = bucketHeads_[at(bucket)]; vertex != kNone;) {
            const std::int32_t next = links_[at(vertex)];
            backLinks_[at(vertex)] = kNoBackLink;
            insertInSet(vertex);
            vertex = next;
        }
        bucketHeads_[at(bucket)] = kNone;
    }
    return *orderedSet_.begin();
}

void CostQueue::Clear() {
    orderedSet_.clear();
    setHandles_.clear();
    std::fill(bucketHeads_.begin(), bucketHeads_.end(), kNone);
    std::fill(links_.begin(), links_.end(), kNotQueued);
    std::fill(backLinks_.begin(), backLinks_.end(), kNoBackLink);
}

void CostQueue::Release() {
    orderedSet_.clear();
    setNodes_.release();
    std::vector<std::int32_t>().swap(bucketHeads_);
    std::vector<std::int32_t>().swap(links_);
    std::vector<std::int32_t>().swap(backLinks_);
    std::vector<OrderedSet::iterator>().swap(setHandles_);
    vertexCount_ = 0;
    currentBucket_ = 0;
    minCost_ = kDefaultMinCost;
    maxCost_ = kDefaultMaxCost;
    logRange_ = kDefaultLogRange;
}

void Penalize(DMesh& mesh, CostQueue& queue, std::int32_t vertex) {
    float& cost = mesh.vertices[at(vertex)].cost;
    if (!queue.isQueued(vertex)) {
        cost = penalizedCost(cost);
        return;
    }
    queue.Remove(vertex);
    cost = penalizedCost(cost);
    queue.Insert(vertex);
}

}  // namespace korvalite
