// SPDX-License-Identifier: MIT
#include "ranking/neighbourhood.h"

#include "base/cache.h"

#include <algorithm>
#include <array>
#include <bit>

namespace korvalite::core {

namespace {

/// Makes room for `count` items, keeping what is there, so that they can be written one by one.
template <typename Item>
void makeRoom(std::vector<Item>& items, std::size_t count) {
    if (items.size() < count) items.resize(count + count / 2);
}

void prefetchTriangle(const DMesh& mesh, std::int32_t corner) {
    prefetch(mesh.triangles.data() + std::max(corner, 0));
}

/// Without a branch, since none of these can be foreseen.
bool anyOf(bool a, bool b, bool c) {
    return (static_cast<int>(a) | static_cast<int>(b) | static_cast<int>(c)) != 0;
}

}  // namespace

void CornerRows::read(const DMesh& mesh, std::span<const std::int32_t> vertices) {
    for (const std::int32_t vertex : vertices) {
        prefetch(&mesh.vertexCorners.run(vertex));
        prefetch(&mesh.vertices[vertex]);
    }
    makeRoom(end_, vertices.size());
    count_ = 0;
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        makeRoomForCorners(count_ + VertexCorners::kPlaces);
        std::int32_t* const row = corners_.data() + count_;
        std::fill_n(rowOfCorner_.data() + count_, VertexCorners::kPlaces, i);
        const auto& places = mesh.vertexCorners.run(vertices[i]).places;
        unsigned notCorners = 1U << VertexCorners::kPlaces;
        for (std::size_t k = 0; k < VertexCorners::kPlaces; ++k) {
            const std::int32_t corner = loadRelaxed(places[k]);
            row[k] = corner;
            notCorners |= (corner < 0 ? 1U : 0U) << k;
            prefetchTriangle(mesh, corner);
        }
        const auto corners = static_cast<std::size_t>(std::countr_zero(notCorners));
        if (corners + 1 == VertexCorners::kPlaces && row[corners] != kNone) {
            readLong(mesh, vertices[i], i);
        } else {
            count_ += corners;
        }
        end_[i] = count_;
    }
}

void CornerRows::makeRoomForCorners(std::size_t count) {
    makeRoom(corners_, count);
    makeRoom(rowOfCorner_, count);
}

void CornerRows::readLong(const DMesh& mesh, std::int32_t vertex, std::uint32_t row) {
    // Prefetching a hub's whole list would evict its first lines before they are used.
    constexpr std::size_t kLongestPrefetched = 64;
    const std::size_t begin = count_;
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        makeRoomForCorners(count_ + 1);
        rowOfCorner_[count_] = row;
        corners_[count_++] = corner;
        if (count_ - begin < kLongestPrefetched) prefetchTriangle(mesh, corner);
    });
}

void Neighbourhood::gatherVertices(const WorkingMesh& work, NeighbourhoodMarks& marks,
                                   std::int32_t kept, std::span<const std::int32_t> corners,
                                   std::span<const std::int32_t> ring) {
    const DMesh& mesh = work.mesh;
    keptCorners_.assign(corners.begin(), corners.end());
    if (corners.empty()) GetVertexCorners(mesh, kept, keptCorners_);
    ring_.assign(ring.begin(), ring.end());
    if (ring.empty()) GetVertexNeighbours(mesh, kept, ring_);
    giveRingSlots(marks, kept);
    work.costQueue.prefetchOwnLinks(this->ring());
    rows_.read(mesh, this->ring().subspan(1));
    work.costQueue.prefetchLinks(this->ring());
    gatherNeighbours(mesh, marks);
    giveOuterSlots(marks);
}

void Neighbourhood::giveRingSlots(NeighbourhoodMarks& marks, std::int32_t kept) {
    vertexCount_ = std::min<std::size_t>(ring_.size() + 1, NeighbourhoodMarks::kNoSlot);
    ringEnd_ = vertexCount_;
    makeRoom(vertices_, ringEnd_);
    vertices_[0] = kept;
    std::copy_n(ring_.begin(), ringEnd_ - 1, vertices_.begin() + 1);
    for (std::size_t slot = 0; slot < ringEnd_; ++slot)
        marks.vertexSlot[vertices_[slot]] = static_cast<std::uint16_t>(slot);
}

void Neighbourhood::gatherNeighbours(const DMesh& mesh, const NeighbourhoodMarks& marks) {
    neighbourCount_ = 0;
    makeRoom(neighboursEnd_, ringEnd_);
    for (std::size_t slot = 1; slot < ringEnd_; ++slot) {
        const std::size_t begin = neighbourCount_;
        gatherNeighboursOf(mesh, vertices_[slot], rows_[slot - 1]);
        for (std::size_t i = begin; i < neighbourCount_; ++i) {
            const std::int32_t x = neighbours_[i];
            prefetch(&marks.vertexSlot[x]);
            prefetch(&mesh.vertexCorners.run(x));
            mesh.borderVertices.prefetchBit(x);
        }
        neighboursEnd_[slot] = neighbourCount_;
    }
}

void Neighbourhood::gatherNeighboursOf(const DMesh& mesh, std::int32_t vertex,
                                       std::span<const std::int32_t> corners) {
    if (corners.size() > VertexCorners::kPlaces) {
        GetVertexNeighbours(mesh, vertex, longRing_);
        makeRoom(neighbours_, neighbourCount_ + longRing_.size());
        std::ranges::copy(longRing_, neighbours_.data() + neighbourCount_);
        neighbourCount_ += longRing_.size();
        return;
    }
    makeRoom(neighbours_, neighbourCount_ + 2 * VertexCorners::kPlaces);
    neighbourCount_ += gatherFewNeighbours(mesh, corners, neighbours_.data() + neighbourCount_);
}

void Neighbourhood::giveOuterSlots(NeighbourhoodMarks& marks) {
    makeRoom(neighbourSlots_, neighbourCount_);
    makeRoom(vertices_, vertexCount_ + neighbourCount_ + 1);
    std::size_t count = vertexCount_;
    for (std::size_t i = 0; i < neighbourCount_; ++i) {
        const std::int32_t x = neighbours_[i];
        std::uint16_t& mark = marks.vertexSlot[x];
        const bool isNew = mark == NeighbourhoodMarks::kNoSlot;
        const std::size_t slot = std::min<std::size_t>(mark, count);
        vertices_[slot] = x;
        mark = static_cast<std::uint16_t>(slot);
        neighbourSlots_[i] = static_cast<std::uint32_t>(slot);
        count += static_cast<std::size_t>(isNew) &
                 static_cast<std::size_t>(count < NeighbourhoodMarks::kNoSlot);
    }
    vertexCount_ = count;
}

void Neighbourhood::gatherTriangles(const WorkingMesh& work, const NeighbourhoodMarks& marks) {
    const DMesh& mesh = work.mesh;
    rows_.read(mesh, outerRing());
    const std::size_t most = lanes::padded(keptCorners_.size() + rows_.size() + 1);
    makeRoom(triangles_, most);
    makeRoom(triangleVertices_, 3 * most);
    makeRoom(triangleSlots_, 3 * most);
    // A collapse of the mirror image since may have changed the corners of the kept vertex.
    work.m_handleSymmetry_internal ? listTriangles<true>(mesh, marks)
                                   : listTriangles<false>(mesh, marks);
    padTriangles();
}

/// Writes triangles one after the other, in any case; the caller counts those that are to stay.
/// Holds plain pointers, which stay in registers.
class Neighbourhood::TriangleWriter {
public:
    TriangleWriter(Neighbourhood& area, const DMesh& mesh, const NeighbourhoodMarks& marks)
        : corners_(mesh.triangles.data()), records_(mesh.vertices.data()),
          slotOf_(marks.vertexSlot.data()), spare_(static_cast<std::uint32_t>(area.vertexCount_)),
          triangle_(area.triangles_.data()), vertices_(area.triangleVertices_.data()),
          slots_(area.triangleSlots_.data()) {}

    [[gnu::always_inline]] void write(std::int32_t triangle, std::size_t turn) {
        const auto spare = static_cast<std::uint32_t>(spare_ + turn % kSpareSlots);
        const std::uint32_t* const corner = corners_ + 3 * static_cast<std::size_t>(triangle);
        *triangle_ = triangle;
        writeVertex(0, loadRelaxed(corner[0]), spare);
        writeVertex(1, loadRelaxed(corner[1]), spare);
        writeVertex(2, loadRelaxed(corner[2]), spare);
    }
    [[gnu::always_inline]] void keepIf(bool isWanted) {
        const std::ptrdiff_t step = isWanted ? 1 : 0;
        triangle_ += step;
        vertices_ += 3 * step;
        slots_ += 3 * step;
    }

    /// Of the triangle written last.
    [[nodiscard]] bool isDegenerate() const {
        return anyOf(vertices_[0] == vertices_[1], vertices_[1] == vertices_[2],
                     vertices_[2] == vertices_[0]);
    }
    [[nodiscard]] bool has(std::uint32_t vertex) const {
        return anyOf(vertices_[0] == vertex, vertices_[1] == vertex, vertices_[2] == vertex);
    }
    [[nodiscard]] std::size_t countFrom(const std::int32_t* first) const {
        return static_cast<std::size_t>(triangle_ - first);
    }
    std::array<std::uint32_t, 3> slot{};  // of its vertices; kNoSlot for one without

private:
    [[gnu::always_inline]] void writeVertex(std::size_t k, std::uint32_t vertex,
                                            std::uint32_t spare) {
        prefetch(&records_[vertex]);
        vertices_[k] = vertex;
        slot[k] = slotOf_[vertex];
        slots_[k] = std::min(slot[k], spare);
    }

    const std::uint32_t* corners_;
    const VertexRecord* records_;
    const std::uint16_t* slotOf_;
    std::size_t spare_;
    std::int32_t* triangle_;
    std::uint32_t* vertices_;
    std::uint32_t* slots_;
};

/// First the triangles of the kept vertex, then those of the outer ring in slot order. Of the
/// latter, one is in the list already if it has a vertex that was walked before; only if the list
/// of the kept vertex is out of date can it also have that vertex. One with a repeated vertex can
/// be in a row twice.
template <bool kKeptListMayBeOld>
void Neighbourhood::listTriangles(const DMesh& mesh, const NeighbourhoodMarks& marks) {
    TriangleWriter writer(*this, mesh, marks);
    for (const std::int32_t corner : keptCorners_) {
        writer.write(triangleOf(corner), 0);
        writer.keepIf(true);
    }
    const auto keptTriangles = std::span(triangles_).first(keptCorners_.size());
    const auto ringEnd = static_cast<std::uint32_t>(ringEnd_);
    const std::int32_t* const corners = rows_.corners();
    const std::uint32_t* const outerOf = rows_.rowOfCorner();
    degenerate_.clear();
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const std::int32_t triangle = triangleOf(corners[i]);
        const std::uint32_t outer = outerOf[i];
        writer.write(triangle, i);
        const auto& slot = writer.slot;
        bool isListed =
            anyOf(slot[0] - ringEnd < outer, slot[1] - ringEnd < outer, slot[2] - ringEnd < outer);
        if constexpr (kKeptListMayBeOld) {
            isListed =
                isListed || (writer.has(static_cast<std::uint32_t>(vertices_[0])) &&
                             std::ranges::find(keptTriangles, triangle) != keptTriangles.end());
        }
        if (writer.isDegenerate()) [[unlikely]]
            isListed = isListed || !degenerate_.insert(triangle).second;
        writer.keepIf(!isListed);
    }
    triangleCount_ = writer.countFrom(triangles_.data());
}

void Neighbourhood::padTriangles() {
    for (std::size_t i = 3 * triangleCount_; i < 3 * lanes::padded(triangleCount_); ++i) {
        triangleVertices_[i] = triangleVertices_[i - 3];
        triangleSlots_[i] = static_cast<std::uint32_t>(vertexCount_);
    }
}

void Neighbourhood::clear(NeighbourhoodMarks& marks) {
    for (const std::int32_t vertex : vertices())
        marks.vertexSlot[vertex] = NeighbourhoodMarks::kNoSlot;
    vertexCount_ = 0;
}

}  // namespace korvalite::core
