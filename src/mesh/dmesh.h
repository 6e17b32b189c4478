// SPDX-License-Identifier: MIT
//
// The plain indexed mesh that readers fill, drivers decimate and writers write.
//
// A vertex or triangle that a collapse removes stays in its array with its active bit cleared; only
// the final reordering moves records. A corner is an index into `triangles`: corner c belongs to
// triangle c / 3. Indices are 32-bit, and -1 (kNone) means none.
#pragma once

#include "base/bit_array.h"
#include "base/cache.h"
#include "base/indexed_array.h"
#include "base/relaxed.h"
#include "geometry/vec3.h"
#include "mesh/symmetry_cache.h"
#include "mesh/vertex_corners.h"
#include "platform/large_memory.h"

#include <array>
#include <cstdint>
#include <limits>

namespace korvalite::core {

/// The `cost` of a vertex that cannot collapse and is never queued.
inline constexpr float kNotCollapsible = std::numeric_limits<float>::max();

struct VertexRecord {
    float x = 0;
    float y = 0;
    float z = 0;
    float cost = 0;  // of collapsing this vertex onto `partner`
    // The vertex to collapse onto, or kNone. After the collapse, the vertex it collapsed onto.
    std::int32_t partner = kNone;

    // Relaxed: a thread that reads the triangles around its neighbourhood may meet a vertex that
    // another thread is moving.
    [[nodiscard]] FloatVec3 position() const {
        return {loadRelaxed(x), loadRelaxed(y), loadRelaxed(z)};
    }
    void setPosition(const FloatVec3& p) {
        storeRelaxed(x, p.x);
        storeRelaxed(y, p.y);
        storeRelaxed(z, p.z);
    }
};

/// The cheapest collapse of a vertex, as its record has it.
struct RankedVertex {
    float cost = kNotCollapsible;
    std::int32_t partner = kNone;
};

/// Makes a vertex not collapsible, until an edge is ranked.
inline void forgetCost(VertexRecord& vertex) {
    vertex.cost = kNotCollapsible;
    vertex.partner = kNone;
}

inline void storeRanking(VertexRecord& vertex, const RankedVertex& ranked) {
    vertex.cost = ranked.cost;
    vertex.partner = ranked.partner;
}

/// Takes a cost and its partner if the cost is lower than the best so far. Returns whether it was
/// taken.
// COMPAT: among equals the first stays; output bytes depend on it.
inline bool takeIfLower(float& best, std::int32_t& bestPartner, float cost, std::int32_t partner) {
    if (!(best > cost)) return false;
    best = cost;
    bestPartner = partner;
    return true;
}

static_assert(sizeof(VertexRecord) == 20, "20 bytes a vertex are part of the memory budget");

/// Records added by resizing are all zero bytes, whatever their defaults say, and take no memory
/// until they are written. In a partly loaded mesh most never are.
using VertexRecords = IndexedArray<VertexRecord, ZeroPagesAllocator<VertexRecord>>;

struct UVCoord {
    float u = 0;
    float v = 0;
};

struct BoundingBox {
    FloatVec3 min{0, 0, 0};
    FloatVec3 max{-1, 0, 0};  // a maximum x below the minimum x marks the box empty

    [[nodiscard]] bool isEmpty() const { return !(max.x >= min.x); }
    /// sqrtf(dy*dy + dx*dx + dz*dz), summed in this order.
    [[nodiscard]] float diagonal() const;
};

struct DMesh {
    IndexedArray<std::uint32_t> triangles;  // three vertex indices per triangle
    BitArray triangleActive;
    alignas(kCacheLine) std::uint32_t numActiveTriangles = 0;

    alignas(kCacheLine) VertexRecords vertices;
    BitArray vertexActive;
    alignas(kCacheLine) std::uint32_t numActiveVertices = 0;

    // As read: one UV record per corner and no indices. Once welded: one index per corner.
    alignas(kCacheLine) IndexedArray<UVCoord> coordsUV;
    IndexedArray<std::uint32_t> indicesUV;

    std::uint32_t meshFormatVersion = 0;  // carried through the .kvm header

    KRDMeshSymmetryCache symmetryCache;
    std::int32_t symmetryAxis = kNone;  // 0 x, 1 y, 2 z
    std::int32_t symmetryMode = -1;     // 0 off, 1 on the given axis, -1 search for the axis

    // Empty, or one entry per vertex record; any other size turns the feature off.
    IndexedArray<std::uint8_t> maskValues;
    IndexedArray<std::uint32_t> vertexColors;  // lowest byte first: red, green, blue, mask

    // Corner lists (mesh/corner_lists.h). They and the bits derived from them exist while a driver
    // runs.
    VertexCorners vertexCorners;
    IndexList uvCornerHead;
    IndexList uvCornerNext;

    BoundingBox boundingBox;

    BitArray borderVertices;
    BitArray uvSeamCoords;
    BitArray uvSeamVertices;
    BitArray uvSeamCorners;
    float uvSeamAngle = 0.02F;

    std::array<float, 6> headerFloats{0, 0, 0, 1, 1, 1};  // carried through the .kvm header
    std::array<bool, 4> headerFlags{};                    // carried through the .kvm header

    [[nodiscard]] std::int32_t vertexCount() const {
        return static_cast<std::int32_t>(vertices.size());
    }
    [[nodiscard]] std::int32_t cornerCount() const {
        return static_cast<std::int32_t>(triangles.size());
    }
    [[nodiscard]] std::int32_t triangleCount() const { return cornerCount() / 3; }

    [[nodiscard]] bool hasMask() const {
        return !maskValues.empty() && maskValues.size() == vertices.size();
    }
    [[nodiscard]] bool hasColors() const {
        return !vertexColors.empty() && vertexColors.size() == vertices.size();
    }
};

/// Makes every vertex and triangle active.
void activateAll(DMesh& mesh);

/// Empties `maskValues` if all its bytes are equal: a uniform mask carries no information.
void dropUniformMask(DMesh& mesh);

/// Sets the bounding box of all `vertices`, active or not; it is empty if there are none.
void recomputeBoundingBox(DMesh& mesh);

/// An empty box becomes the point; NaN coordinates never widen a box.
void extendBoundingBox(BoundingBox& box, const FloatVec3& point);

struct DMesh;

/// Whether the drivers can work on the mesh: every triangle index refers to a vertex, and vertices
/// and corners can each be counted in 31 bits. Readers pass on whatever a file contains, so this
/// check comes between them and the drivers. Coordinates may be anything.
bool canBeDecimated(const DMesh& mesh);

}  // namespace korvalite::core
