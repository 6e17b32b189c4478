// SPDX-License-Identifier: MIT
#include "mesh/vertex_corners.h"

#include "base/cache.h"

#include <algorithm>
#include <bit>
#include <new>

namespace korvalite::core {

namespace {

void storeAll(std::int32_t* target, std::span<const std::int32_t> corners) {
    for (const std::int32_t corner : corners)
        storeRelaxed(*target++, corner);
}

}  // namespace

CornerBlocks::Place CornerBlocks::placeOf(std::uint32_t unit) {
    const std::uint32_t multiple = unit / kUnitsInFirstSegment + 1;
    const auto segment = static_cast<std::uint32_t>(std::bit_width(multiple)) - 1;
    return {segment, unit - firstUnitOf(segment)};
}

const std::int32_t* CornerBlocks::at(std::int32_t block) const {
    const Place place = placeOf(static_cast<std::uint32_t>(block));
    return &segments_[place.segment][kWordsPerUnit * place.unit];
}

std::int32_t* CornerBlocks::at(std::int32_t block) {
    return const_cast<std::int32_t*>(std::as_const(*this).at(block));
}

std::size_t CornerBlocks::sizeClass(std::size_t count) {
    return static_cast<std::size_t>(std::bit_width(count / kWordsPerUnit));
}

std::int32_t CornerBlocks::take(std::size_t count) {
    const std::size_t size = sizeClass(count);
    IndexList& released = released_[size];
    if (!released.empty()) {
        const std::int32_t block = released.back();
        released.pop_back();
        return block;
    }
    return static_cast<std::int32_t>(makeRoom(std::uint32_t{1} << size));
}

std::uint32_t CornerBlocks::makeRoom(std::uint32_t units) {
    std::uint32_t unit = nextUnit_;
    std::uint32_t segment = placeOf(unit).segment;
    // What is left of a segment that is too short stays unused, and takes no memory.
    while (firstUnitOf(segment + 1) - unit < units)
        unit = firstUnitOf(++segment);
    if (segment >= kSegments) throw std::bad_alloc();
    if (segments_[segment].empty()) {
        segments_[segment].resize(std::size_t{kWordsPerUnit} *
                                  (firstUnitOf(segment + 1) - firstUnitOf(segment)));
    }
    nextUnit_ = unit + units;
    return unit;
}

void CornerBlocks::prepareRelease(std::size_t count) {
    IndexList& released = released_[sizeClass(count)];
    if (released.size() == released.capacity())
        released.reserve(std::max<std::size_t>(16, 2 * released.size()));
}

void CornerBlocks::release(std::int32_t block, std::size_t count) {
    released_[sizeClass(count)].push_back(block);
}

void VertexCorners::build(const IndexedArray<std::uint32_t>& vertexOfCorner,
                          std::int32_t vertexCount) {
    release();
    Run empty{};
    empty.places.fill(kNone);
    reserveLarge(runs_, static_cast<std::size_t>(vertexCount));
    runs_.assign(static_cast<std::size_t>(vertexCount), empty);
    cornerCount_ = vertexOfCorner.size();
    // COMPAT: the highest corner comes first; its order decides between equal costs.
    for (std::size_t corner = cornerCount_; corner > 0; --corner) {
        constexpr std::size_t kAhead = 32;
        if (corner > kAhead) prefetch(&runs_[vertexOfCorner[corner - kAhead - 1]]);
        append(vertexOfCorner[corner - 1], static_cast<std::int32_t>(corner - 1));
    }
}

void VertexCorners::append(std::uint32_t vertex, std::int32_t corner) {
    auto& places = runs_[vertex].places;
    std::int32_t& last = places.back();
    if (last == kNone) {
        *std::ranges::find(places, kNone) = corner;
        return;
    }
    if (!isLink(last)) {
        const std::int32_t block = blocks_.take(2);
        storeAll(blocks_.at(block), std::array{2, last, corner});
        last = across(block);
        return;
    }
    std::int32_t* words = blocks_.at(across(last));
    const auto count = static_cast<std::size_t>(words[0]);
    if (!CornerBlocks::areSameSize(count, count + 1)) {
        const std::int32_t larger = blocks_.take(count + 1);
        std::copy_n(words, count + 1, blocks_.at(larger));
        blocks_.release(across(last), count);
        last = across(larger);
        words = blocks_.at(larger);
    }
    words[count + 1] = corner;
    ++words[0];
}

void VertexCorners::release() {
    *this = {};
}

bool VertexCorners::eraseFromRun(std::int32_t vertex, std::int32_t corner) {
    auto& places = runs_[vertex].places;
    if (isLink(places.back())) return false;
    bool isFound = false;
    for (std::size_t i = 0; i < kPlaces; ++i) {
        isFound = isFound || places[i] == corner;
        const std::int32_t next = i + 1 < kPlaces ? places[i + 1] : kNone;
        storeRelaxed(places[i], isFound ? next : places[i]);
    }
    return true;
}

void VertexCorners::assign(std::int32_t vertex, std::span<const std::int32_t> corners) {
    auto& places = runs_[vertex].places;
    const std::int32_t oldLast = places.back();
    const std::size_t oldRest =
        isLink(oldLast) ? static_cast<std::size_t>(*blocks_.at(across(oldLast))) : 0;
    const auto rest = corners.subspan(std::min(corners.size(), kPlaces - 1));
    const bool needsBlock = corners.size() > kPlaces;
    const bool fits = needsBlock && oldRest > 0 && CornerBlocks::areSameSize(oldRest, rest.size());
    if (oldRest > 0 && !fits) blocks_.prepareRelease(oldRest);
    std::int32_t last = corners.size() == kPlaces ? corners.back() : kNone;
    if (needsBlock) {
        last = fits ? oldLast : across(blocks_.take(rest.size()));
        std::int32_t* const words = blocks_.at(across(last));
        storeAll(words + 1, rest);
        storeRelaxed(*words, static_cast<std::int32_t>(rest.size()));
    }
    for (std::size_t i = 0; i + 1 < kPlaces; ++i)
        storeRelaxed(places[i], i < corners.size() ? corners[i] : kNone);
    storeRelease(places.back(), last);
    if (oldRest > 0 && !fits) blocks_.release(across(oldLast), oldRest);
}

std::int32_t CornerCursor::enterBlock() {
    const std::int32_t last = loadAcquire(place_[-1]);
    if (!VertexCorners::isLink(last)) {
        place_ = end_;
        return last;
    }
    const std::int32_t* const words = corners_->blocks_.at(VertexCorners::across(last));
    place_ = words + 1;
    end_ = place_ + loadRelaxed(words[0]);
    return next();
}

}  // namespace korvalite::core
