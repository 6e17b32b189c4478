// SPDX-License-Identifier: MIT
#include "mesh/corner_lists.h"

#include "base/cache.h"
#include "lanes/kernels.h"

#include <bit>

namespace korvalite::core {

namespace {

template <typename Visit>
void forEachUVCorner(const DMesh& mesh, std::int32_t uvIndex, Visit visit) {
    for (std::int32_t corner = mesh.uvCornerHead[uvIndex]; corner != kNone;
         corner = mesh.uvCornerNext[corner]) {
        visit(corner);
    }
}

// Up to this size a linear search is fastest; a hub with thousands of triangles needs a hash set.
constexpr std::size_t kLongestSearchedRing = 64;

/// A hash set of the items of one ring at a time; a new round number empties it.
class SeenItems {
public:
    /// Empties the set and makes room for `most` items.
    void begin(std::size_t most) {
        const std::size_t slots = std::bit_ceil(2 * most);
        if (slots > slots_.size() || ++round_ == 0) {
            slots_.assign(std::max(slots, slots_.size()), {});
            round_ = 1;
        }
        mask_ = slots - 1;
    }

    /// False if the item is already in the set.
    bool add(std::int32_t item) {
        // A multiplicative hash (D. Knuth), which scatters neighbouring indices.
        std::size_t at =
            (static_cast<std::uint32_t>(item) * std::uint64_t{2654435769U} >> 16U) & mask_;
        while (slots_[at].round == round_) {
            if (slots_[at].item == item) return false;
            at = (at + 1) & mask_;
        }
        slots_[at] = {item, round_};
        return true;
    }

private:
    struct Slot {
        std::int32_t item = kNone;
        std::uint32_t round = 0;  // a slot of an earlier round is free
    };
    IndexedArray<Slot> slots_;
    std::size_t mask_ = 0;
    std::uint32_t round_ = 0;
};

// Keeps its capacity from ring to ring, until ReleaseVertexCorners or the end of its thread.
thread_local SeenItems seen;

/// Removes duplicates, keeping the first of equal items and the order.
void keepFirstOfEach(IndexList& items) {
    seen.begin(items.size());
    std::size_t kept = 0;
    for (const std::int32_t item : items) {
        if (seen.add(item)) items[kept++] = item;
    }
    items.resize(kept);
}

void appendNeighbour(IndexList& neighbours, const std::uint32_t& item) {
    const auto index = static_cast<std::int32_t>(loadRelaxed(item));
    if (neighbours.size() > kLongestSearchedRing || !contains(neighbours, index)) {
        neighbours.push_back(index);
    }
}

/// Gathers the distinct items at the other corners of the triangles in a corner list. `forEach`
/// calls what it is given with each corner of the list.
template <typename ForEach>
void gatherRing(ForEach forEach, const IndexedArray<std::uint32_t>& itemOfCorner,
                IndexList& neighbours) {
    neighbours.clear();
    forEach([&](std::int32_t corner) {
        appendNeighbour(neighbours, itemOfCorner[nextCorner(corner)]);
        appendNeighbour(neighbours, itemOfCorner[previousCorner(corner)]);
    });
    if (neighbours.size() > kLongestSearchedRing) keepFirstOfEach(neighbours);
}

}  // namespace

void BuildVertexCorners(DMesh& mesh) {
    mesh.vertexCorners.build(mesh.triangles, mesh.vertexCount());
}

void BuildUVCorners(DMesh& mesh) {
    IndexList& head = mesh.uvCornerHead;
    IndexList& next = mesh.uvCornerNext;
    reserveLarge(head, mesh.coordsUV.size());
    head.assign(mesh.coordsUV.size(), kNone);
    reserveLarge(next, mesh.indicesUV.size());
    next.assign(mesh.indicesUV.size(), kNone);
    for (std::size_t corner = 0; corner < mesh.indicesUV.size(); ++corner) {
        // COMPAT: the highest corner comes first; its order decides between equal costs.
        std::int32_t& first = head[mesh.indicesUV[corner]];
        next[corner] = first;
        first = static_cast<std::int32_t>(corner);
    }
}

bool hasDeadTriangles(const DMesh& mesh) {
    return mesh.numActiveTriangles != static_cast<std::uint32_t>(mesh.triangleCount());
}

void dropDeadVertexCorners(DMesh& mesh) {
    if (!hasDeadTriangles(mesh)) return;
    IndexList corners;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        GetVertexCorners(mesh, vertex, corners);
        const std::size_t dead = std::erase_if(corners, [&](std::int32_t corner) {
            return !mesh.triangleActive.Test(triangleOf(corner));
        });
        if (dead > 0) mesh.vertexCorners.assign(vertex, corners);
    }
}

void dropDeadUVCorners(DMesh& mesh) {
    if (!hasDeadTriangles(mesh)) return;
    for (std::int32_t& first : mesh.uvCornerHead) {
        for (std::int32_t* link = &first; *link != kNone;) {
            std::int32_t& rest = mesh.uvCornerNext[*link];
            if (mesh.triangleActive.Test(triangleOf(*link))) {
                link = &rest;
            } else {
                *link = rest;
            }
        }
    }
}

void ReleaseVertexCorners(DMesh& mesh) {
    mesh.vertexCorners.release();
    seen = {};
}

void unlinkCorner(std::int32_t& head, IndexList& next, std::int32_t corner) {
    std::int32_t* link = &head;
    while (*link != kNone && *link != corner)
        link = &next[*link];
    if (*link == corner) storeRelaxed(*link, next[corner]);
}

void GetVertexCorners(const DMesh& mesh, std::int32_t vertex, IndexList& corners) {
    corners.clear();
    forEachCorner(mesh, vertex, [&](std::int32_t corner) { corners.push_back(corner); });
}

std::size_t gatherFewNeighbours(const DMesh& mesh, std::span<const std::int32_t> corners,
                                std::int32_t* neighbours) {
    constexpr std::size_t kMost = 2 * VertexCorners::kPlaces;
    std::array<std::int32_t, kMost> sightings{};
    std::int32_t* next = sightings.data();
    for (const std::int32_t corner : corners) {
        *next++ = vertexAt(mesh, nextCorner(corner));
        *next++ = vertexAt(mesh, previousCorner(corner));
    }
    static const lanes::Kernels* const kernels = lanes::kernels();
    const std::size_t count = 2 * corners.size();
    if (kernels != nullptr) return kernels->keepDistinct(sightings.data(), count, neighbours);
    std::int32_t* end = neighbours;
    for (const std::int32_t item : std::span(sightings).first(count)) {
        if (std::find(neighbours, end, item) == end) *end++ = item;
    }
    return static_cast<std::size_t>(end - neighbours);
}

void GetVertexNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours) {
    gatherRing([&](auto visit) { forEachCorner(mesh, vertex, visit); }, mesh.triangles, neighbours);
}

void GetVertexCornersAndNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours,
                                   IndexList& corners) {
    GetVertexCorners(mesh, vertex, corners);
    if (corners.size() > VertexCorners::kPlaces)
        return GetVertexNeighbours(mesh, vertex, neighbours);
    neighbours.resize(2 * VertexCorners::kPlaces);
    neighbours.resize(gatherFewNeighbours(mesh, corners, neighbours.data()));
}

void GetUVCorners(const DMesh& mesh, std::int32_t uvIndex, IndexList& corners) {
    corners.clear();
    forEachUVCorner(mesh, uvIndex, [&](std::int32_t corner) { corners.push_back(corner); });
}

void GetUVCornersAndNeighbours(const DMesh& mesh, std::int32_t uvIndex, IndexList& neighbours,
                               IndexList& corners) {
    GetUVCorners(mesh, uvIndex, corners);
    gatherRing([&](auto visit) { forEachUVCorner(mesh, uvIndex, visit); }, mesh.indicesUV,
               neighbours);
}

void warmVertexCorners(const DMesh& mesh, std::span<const std::int32_t> vertices,
                       const BitArray* triangleBits) {
    for (const std::int32_t vertex : vertices) {
        prefetch(&mesh.vertexCorners.run(vertex));
        prefetch(&mesh.vertices[vertex]);
    }
    // Prefetching a hub's whole list would evict its first lines before they are used.
    constexpr int kLongestWarmed = 64;
    for (const std::int32_t vertex : vertices) {
        CornerCursor cursor(mesh.vertexCorners, vertex);
        for (int i = 0; i < kLongestWarmed; ++i) {
            const std::int32_t corner = cursor.next();
            if (corner == kNone) break;
            prefetch(&mesh.triangles[corner]);
            if (triangleBits != nullptr) triangleBits->prefetchBit(triangleOf(corner));
        }
    }
}

bool AreVerticesAdjacent(const DMesh& mesh, std::int32_t a, std::int32_t b) {
    bool adjacent = false;
    forEachCorner(mesh, a, [&](std::int32_t corner) {
        adjacent = adjacent || vertexAt(mesh, nextCorner(corner)) == b ||
                   vertexAt(mesh, previousCorner(corner)) == b;
    });
    return adjacent;
}

}  // namespace korvalite::core
