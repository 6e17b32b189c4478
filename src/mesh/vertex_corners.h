// SPDX-License-Identifier: MIT
//
// The corners at each vertex, in list order. A vertex has a run of eight places, half a cache line
// that its index finds without another load. Corners that do not fit are in a block, which the last
// place links to:
//
//      c0 c1 c2 c3 c4 c5 -- --          six corners; -- is kNone
//      c0 c1 c2 c3 c4 c5 c6 link        ten corners
//                            `-> 3 c7 c8 c9 (room for more)
//
// Thread safety: a vertex may be read while one thread changes it. The reader may miss corners that
// are being moved or see some twice, but everything it sees is a corner of the mesh. Two threads
// may change different vertices if a lock protects those changes for which changesBlocks() is true.
#pragma once

#include "base/indexed_array.h"
#include "base/relaxed.h"
#include "platform/large_memory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace korvalite::core {

/// Blocks of corners that never move, so that a thread can read one while others take new ones. A
/// block is reused only for another of its size, and always holds corners of the mesh: one that is
/// read while it is taken for another vertex is wrong, but never out of bounds.
class CornerBlocks {
public:
    /// The word that holds the number of corners in use, followed by the corners.
    [[nodiscard]] std::int32_t* at(std::int32_t block);
    [[nodiscard]] const std::int32_t* at(std::int32_t block) const;

    /// A block for `count` corners. Throws std::bad_alloc, and then nothing has changed.
    std::int32_t take(std::size_t count);
    /// Makes sure that a block of that size can be released. Throws std::bad_alloc.
    void prepareRelease(std::size_t count);
    void release(std::int32_t block, std::size_t count);

    /// Whether two numbers of corners take blocks of the same size.
    static bool areSameSize(std::size_t a, std::size_t b) { return sizeClass(a) == sizeClass(b); }

private:
    // Sizes are powers of two, from one unit on, and a block begins at the unit of its number.
    static constexpr std::uint32_t kWordsPerUnit = 8;
    static constexpr std::size_t kSizeClasses = 29;
    // Each segment is twice as long as the one before, so that few of them are enough.
    static constexpr std::uint32_t kUnitsInFirstSegment = 1U << 12U;
    static constexpr std::uint32_t kSegments = 18;

    struct Place {
        std::uint32_t segment;
        std::uint32_t unit;  // in the segment
    };
    static Place placeOf(std::uint32_t unit);
    static std::uint32_t firstUnitOf(std::uint32_t segment) {
        return ((1U << segment) - 1) * kUnitsInFirstSegment;
    }
    static std::size_t sizeClass(std::size_t count);
    std::uint32_t makeRoom(std::uint32_t units);

    std::array<IndexedArray<std::int32_t, ZeroPagesAllocator<std::int32_t>>, kSegments> segments_;
    std::array<IndexList, kSizeClasses> released_;
    std::uint32_t nextUnit_ = 0;
};

class VertexCorners {
public:
    static constexpr std::size_t kPlaces = 8;
    struct alignas(32) Run {
        std::array<std::int32_t, kPlaces> places;
    };

    /// Lists the corners of all triangles, active or not. REQUIRES: all indices are in range.
    void build(const IndexedArray<std::uint32_t>& vertexOfCorner, std::int32_t vertexCount);
    /// Frees the memory.
    void release();

    [[nodiscard]] bool areBuiltFor(std::size_t vertexCount, std::size_t cornerCount) const {
        return runs_.size() == vertexCount && cornerCount_ == cornerCount;
    }
    [[nodiscard]] bool isEmpty(std::int32_t vertex) const {
        return loadRelaxed(runs_[vertex].places[0]) == kNone;
    }
    [[nodiscard]] const Run& run(std::int32_t vertex) const { return runs_[vertex]; }

    /// Removes a corner if the vertex has no block; else does nothing and returns false.
    bool eraseFromRun(std::int32_t vertex, std::int32_t corner);

    /// Replaces the corners of a vertex. Throws std::bad_alloc, and then nothing has changed.
    void assign(std::int32_t vertex, std::span<const std::int32_t> corners);
    /// Whether replacing them by `count` corners takes or releases a block.
    [[nodiscard]] bool changesBlocks(std::int32_t vertex, std::size_t count) const {
        return count > kPlaces || isLink(runs_[vertex].places.back());
    }

private:
    friend class CornerCursor;

    static bool isLink(std::int32_t place) { return place < kNone; }
    /// A block and the link to it.
    static std::int32_t across(std::int32_t blockOrLink) { return kNone - 1 - blockOrLink; }

    void append(std::uint32_t vertex, std::int32_t corner);

    IndexedArray<Run> runs_;
    CornerBlocks blocks_;
    std::size_t cornerCount_ = 0;
};

/// Walks the corners of a vertex in list order.
class CornerCursor {
public:
    CornerCursor(const VertexCorners& corners, std::int32_t vertex)
        : corners_(&corners), place_(corners.run(vertex).places.data()),
          end_(place_ + VertexCorners::kPlaces) {}

    /// The next corner, or kNone.
    std::int32_t next() {
        if (place_ == end_) return kNone;
        const std::int32_t corner = loadRelaxed(*place_++);
        return VertexCorners::isLink(corner) ? enterBlock() : corner;
    }

private:
    std::int32_t enterBlock();

    const VertexCorners* corners_;
    const std::int32_t* place_;
    const std::int32_t* end_;
};

}  // namespace korvalite::core
