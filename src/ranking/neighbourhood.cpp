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

// A vertex with more corners than its run has places gathers its neighbours in the usual way.
constexpr std::size_t kMostSightings = 2 * VertexCorners::kPlaces;

std::size_t keepDistinct(const std::int32_t* items, std::size_t count, std::int32_t* distinct) {
    std::int32_t* end = distinct;
    for (const std::int32_t item : std::span(items, count)) {
        if (std::find(distinct, end, item) == end) *end++ = item;
    }
    return static_cast<std::size_t>(end - distinct);
}

}  // namespace

void CornerRows::read(const DMesh& mesh, std::span<const std::int32_t> vertices) {
    for (const std::int32_t vertex : vertices) {
        prefetch(&mesh.vertexCorners.run(vertex));
        prefetch(&mesh.vertices[vertex]);
    }
    makeRoom(end_, vertices.size());
    count_ = 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        makeRoom(corners_, count_ + VertexCorners::kPlaces);
        std::int32_t* const row = corners_.data() + count_;
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
            readLong(mesh, vertices[i]);
        } else {
            count_ += corners;
        }
        end_[i] = count_;
    }
}

void CornerRows::readLong(const DMesh& mesh, std::int32_t vertex) {
    // Prefetching a hub's whole list would evict its first lines before they are used.
    constexpr std::size_t kLongestPrefetched = 64;
    const std::size_t begin = count_;
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        makeRoom(corners_, count_ + 1);
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
    std::array<std::int32_t, kMostSightings> sightings{};
    std::int32_t* sighting = sightings.data();
    for (const std::int32_t corner : corners) {
        *sighting++ = vertexAt(mesh, nextCorner(corner));
        *sighting++ = vertexAt(mesh, previousCorner(corner));
    }
    makeRoom(neighbours_, neighbourCount_ + kMostSightings);
    std::int32_t* const distinct = neighbours_.data() + neighbourCount_;
    neighbourCount_ += kernels_ != nullptr
                           ? kernels_->keepDistinct(sightings.data(), 2 * corners.size(), distinct)
                           : keepDistinct(sightings.data(), 2 * corners.size(), distinct);
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
    triangleCount_ = 0;
    for (const std::int32_t corner : keptCorners_) {
        write(mesh, marks, triangleOf(corner), 0);
        ++triangleCount_;
    }
    // A collapse of the mirror image since may have changed the corners of the kept vertex.
    work.m_handleSymmetry_internal ? listOuterTriangles<true>(mesh, marks)
                                   : listOuterTriangles<false>(mesh, marks);
    padTriangles();
}

std::array<std::uint32_t, 3> Neighbourhood::write(const DMesh& mesh,
                                                  const NeighbourhoodMarks& marks,
                                                  std::int32_t triangle, std::size_t turn) {
    const auto spare = static_cast<std::uint32_t>(vertexCount_ + turn % kSpareSlots);
    std::array<std::uint32_t, 3> slots;
    triangles_[triangleCount_] = triangle;
    for (std::size_t k = 0; k < 3; ++k) {
        const std::uint32_t vertex =
            loadRelaxed(mesh.triangles[3 * static_cast<std::size_t>(triangle) + k]);
        prefetch(&mesh.vertices[vertex]);
        slots[k] = marks.vertexSlot[vertex];
        triangleVertices_[3 * triangleCount_ + k] = vertex;
        triangleSlots_[3 * triangleCount_ + k] = std::min(slots[k], spare);
    }
    return slots;
}

/// Walks the outer ring in slot order. A triangle is in the list already if it has the kept vertex
/// or a vertex that was walked before. One with a repeated vertex can also be in a row twice.
template <bool kKeptListMayBeOld>
void Neighbourhood::listOuterTriangles(const DMesh& mesh, const NeighbourhoodMarks& marks) {
    const std::span keptTriangles = triangles();
    const auto ringEnd = static_cast<std::uint32_t>(ringEnd_);
    const auto outerCount = static_cast<std::uint32_t>(vertexCount_ - ringEnd_);
    degenerate_.clear();
    for (std::uint32_t outer = 0; outer < outerCount; ++outer) {
        std::size_t turn = 0;
        for (const std::int32_t corner : rows_[outer]) {
            const std::int32_t triangle = triangleOf(corner);
            const auto slots = write(mesh, marks, triangle, turn++);
            const auto has = [&](auto isOne) {
                return static_cast<bool>(static_cast<int>(isOne(slots[0])) |
                                         static_cast<int>(isOne(slots[1])) |
                                         static_cast<int>(isOne(slots[2])));
            };
            bool hasKept = has([](std::uint32_t slot) { return slot == 0; });
            if (kKeptListMayBeOld && hasKept)
                hasKept = std::ranges::find(keptTriangles, triangle) != keptTriangles.end();
            bool isListed =
                hasKept || has([=](std::uint32_t slot) { return slot - ringEnd < outer; });
            if (isDegenerate(triangleCount_)) [[unlikely]]
                isListed = isListed || !degenerate_.insert(triangle).second;
            triangleCount_ += isListed ? 0 : 1;
        }
    }
}

bool Neighbourhood::isDegenerate(std::size_t place) const {
    const std::uint32_t* const v = &triangleVertices_[3 * place];
    return (static_cast<int>(v[0] == v[1]) | static_cast<int>(v[1] == v[2]) |
            static_cast<int>(v[2] == v[0])) != 0;
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
