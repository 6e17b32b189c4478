// SPDX-License-Identifier: MIT
//
// The vertices, edges and triangles around a kept vertex as flat arrays.
//
//        o---o---o         k  the kept vertex
//       / \ / \ / \        r  its ring
//      o---r---r---o       o  the outer ring
//     / \ / \ / \ / \      .
//    o---r---k---r---o     Listed are the triangles that touch k or an o. A triangle whose corners
//     \ / \ / \ / \ /      are all ring vertices is not among them.
//      o---r---r---o
//       \ / \ / \ /
//        o---o---o
//
// Gathering takes a good part of the time of a run, so the loops have few branches that depend on
// the mesh: they write an item in any case and count it if it is wanted.
#pragma once

#include "collapse/working_mesh.h"
#include "lanes/kernels.h"
#include "mesh/corner_lists.h"
#include "ranking/neighbourhood_marks.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_set>
#include <vector>

namespace korvalite::core {

/// The corner lists of several vertices, copied one after the other.
class CornerRows {
public:
    /// Copies the lists of these vertices, after their memory has been prefetched all at once, and
    /// prefetches the triangles.
    void read(const DMesh& mesh, std::span<const std::int32_t> vertices);

    [[nodiscard]] std::span<const std::int32_t> operator[](std::size_t row) const {
        const std::size_t begin = row == 0 ? 0 : end_[row - 1];
        return std::span(corners_).subspan(begin, end_[row] - begin);
    }
    [[nodiscard]] std::size_t size() const { return count_; }
    /// All rows, one after the other, and the row of each corner.
    [[nodiscard]] const std::int32_t* corners() const { return corners_.data(); }
    [[nodiscard]] const std::uint32_t* rowOfCorner() const { return rowOfCorner_.data(); }

private:
    void makeRoomForCorners(std::size_t count);
    void readLong(const DMesh& mesh, std::int32_t vertex, std::uint32_t row);

    std::vector<std::int32_t> corners_;
    std::vector<std::uint32_t> rowOfCorner_;
    std::vector<std::size_t> end_;
    std::size_t count_ = 0;
};

/// Scratch for one thread, which keeps its capacity from neighbourhood to neighbourhood.
class Neighbourhood {
public:
    /// Gives slots to `kept`, its ring and its outer ring. `corners` and `ring` are the lists of
    /// `kept` if they are known, else empty. There are only 65535 slots: in a larger neighbourhood
    /// the remaining vertices have none.
    void gatherVertices(const WorkingMesh& work, NeighbourhoodMarks& marks, std::int32_t kept,
                        std::span<const std::int32_t> corners, std::span<const std::int32_t> ring);
    void gatherTriangles(const WorkingMesh& work, const NeighbourhoodMarks& marks);
    /// Takes the slots back.
    void clear(NeighbourhoodMarks& marks);

    /// The vertices with a slot, in slot order: the kept one, its ring, the outer ring.
    [[nodiscard]] std::span<const std::int32_t> vertices() const {
        return std::span(vertices_).first(vertexCount_);
    }
    /// The kept vertex and its ring.
    [[nodiscard]] std::span<const std::int32_t> ring() const {
        return std::span(vertices_).first(ringEnd_);
    }
    [[nodiscard]] std::span<const std::int32_t> outerRing() const {
        return vertices().subspan(ringEnd_);
    }
    /// The neighbours of all ring vertices, one ring vertex after the other, and their slots,
    /// kNoSlot for a vertex without. Those of the ring vertex in `slot` end at neighboursEnd(slot);
    /// slot 0, the kept vertex, has none.
    [[nodiscard]] std::span<const std::int32_t> neighbours() const {
        return std::span(neighbours_).first(neighbourCount_);
    }
    [[nodiscard]] std::span<const std::uint32_t> neighbourSlots() const {
        return std::span(neighbourSlots_).first(neighbourCount_);
    }
    [[nodiscard]] std::size_t neighboursEnd(std::size_t slot) const { return neighboursEnd_[slot]; }

    /// The triangles, in the order listed.
    [[nodiscard]] std::span<const std::int32_t> triangles() const {
        return std::span(triangles_).first(triangleCount_);
    }
    /// Three vertices per triangle, and the slots of these. A vertex without a slot gets one of the
    /// kSpareSlots numbers after the last slot. Both are padded for lanes.
    [[nodiscard]] std::span<const std::uint32_t> triangleVertices() const {
        return triangleVertices_;
    }
    [[nodiscard]] std::span<const std::uint32_t> triangleSlots() const { return triangleSlots_; }

    /// Several, so that sums which nobody reads need not wait for each other.
    static constexpr std::size_t kSpareSlots = 8;

private:
    void giveRingSlots(NeighbourhoodMarks& marks, std::int32_t kept);
    void gatherNeighbours(const DMesh& mesh, const NeighbourhoodMarks& marks);
    void gatherNeighboursOf(const DMesh& mesh, std::int32_t vertex,
                            std::span<const std::int32_t> corners);
    void giveOuterSlots(NeighbourhoodMarks& marks);

    class TriangleWriter;
    template <bool kKeptListMayBeOld>
    void listTriangles(const DMesh& mesh, const NeighbourhoodMarks& marks);
    void padTriangles();

    // These arrays have room for more than is in them; the counts say how much is.
    std::vector<std::int32_t> vertices_;
    std::size_t vertexCount_ = 0;
    std::size_t ringEnd_ = 0;
    IndexList keptCorners_;
    IndexList ring_;
    CornerRows rows_;

    std::vector<std::int32_t> neighbours_;
    std::vector<std::uint32_t> neighbourSlots_;
    std::vector<std::size_t> neighboursEnd_;
    std::size_t neighbourCount_ = 0;
    IndexList longRing_;

    std::vector<std::int32_t> triangles_;
    std::vector<std::uint32_t> triangleVertices_;
    std::vector<std::uint32_t> triangleSlots_;
    std::size_t triangleCount_ = 0;
    std::unordered_set<std::int32_t> degenerate_;
};

}  // namespace korvalite::core
