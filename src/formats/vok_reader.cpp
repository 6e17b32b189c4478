// SPDX-License-Identifier: MIT
#include "formats/vok_reader.h"

#include "base/debug_log.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <vector>

namespace korvalite::core {

namespace {

constexpr std::int64_t kMaxCorners = std::numeric_limits<std::int32_t>::max();

constexpr std::int32_t kNotSplit = -1;

struct Face4 {
    std::array<std::uint32_t, 4> vertices{};

    [[nodiscard]] bool isTriangle() const { return vertices[3] == kVokNoFourthVertex; }
};
static_assert(sizeof(Face4) == 16);

struct Face4UVs {
    std::array<UVCoord, 4> corners;
};
static_assert(sizeof(Face4UVs) == 32 && sizeof(UVCoord) == 8);

using MRGBBytes = std::array<std::uint8_t, 4>;

// The corners of a face's triangles; a triangle uses only the first three.
// COMPAT: a quad is always split from corner 0 to corner 2; outputs depend on it.
constexpr std::array<std::size_t, 6> kSplitCorners{0, 1, 2, 0, 2, 3};

constexpr std::size_t cornersAfterSplit(bool isTriangle) {
    return isTriangle ? 3 : 6;
}

// The state of the walk over one file.
struct VokWalk {
    platform::File& file;
    DMesh& mesh;
    std::int64_t bytesBeyondFile = 0;  // the rest of the allowance
    BitArray triangleMarkers;          // which faces of the last face list were triangles
    std::int32_t splitTriangleCount = kNotSplit;
};

enum class WalkStep {
    NextBlock,
    End,      // nothing more to read; what was read is kept
    Refused,  // the file asks for more than it may have
};

// The block's number of elements.
// COMPAT: a count is signed, and a negative one reads as 0; old files rely on it.
std::int64_t elementCount(const VokBlockHeader& header) {
    return std::max(static_cast<std::int32_t>(header.Count), 0);
}

std::uint32_t payloadBytes(const VokBlockHeader& header) {
    return header.Size - kVokBlockHeaderBytes;
}

// Resizes without spare capacity, because meshes are large. Keeps the items already there.
template <typename Items>
void resizeExactly(Items& items, std::int64_t count) {
    reserveLarge(items, static_cast<std::size_t>(count));
    items.resize(static_cast<std::size_t>(count));
}

// Whether a block may allocate `byteCount` bytes for its elements. Bytes beyond the block's stated
// size are charged to the file's allowance; the rest must be in the file or within the allowance.
bool mayTake(VokWalk& walk, const VokBlockHeader& header, std::int64_t byteCount) {
    const std::int64_t promised = std::min(byteCount, std::int64_t{payloadBytes(header)});
    walk.bytesBeyondFile -= byteCount - promised;
    if (walk.bytesBeyondFile < 0) return false;
    return promised <= walk.bytesBeyondFile ||
           promised - walk.bytesBeyondFile <= walk.file.bytesLeft();
}

// Reads the payload into `items`. True if the file holds the whole payload.
// COMPAT: Count and Size may disagree in old files: skips what does not fit, and leaves items past
// the end of the payload unchanged.
template <typename T>
bool readPayload(platform::File& file, const VokBlockHeader& header, std::vector<T>& items) {
    const std::size_t payload = payloadBytes(header);
    const std::size_t wanted = std::min(payload, items.size() * sizeof(T));
    if (file.read(items.data(), wanted) != wanted) return false;
    if (wanted == payload) return true;
    const auto surplus = static_cast<std::int64_t>(payload - wanted);
    const bool isThere = file.bytesLeft() >= surplus;
    return file.seek(surplus, SEEK_CUR) && isThere;
}

// A zero-filled temporary of `count` elements for payloads that need conversion.
template <typename T>
std::vector<T> zeroed(std::int64_t count) {
    return std::vector<T>(static_cast<std::size_t>(count));
}

WalkStep readPointList(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t count = elementCount(header);
    if (!mayTake(walk, header, count * std::int64_t{sizeof(FloatVec3)})) return WalkStep::Refused;
    resizeExactly(walk.mesh.vertices, count);
    auto points = zeroed<FloatVec3>(count);
    readPayload(walk.file, header, points);
    for (std::size_t i = 0; i < points.size(); ++i)
        walk.mesh.vertices[i] = {.x = points[i].x, .y = points[i].y, .z = points[i].z};
    DebugLog("   - Vertex blocs OK [%d vtx].", header.Count);
    return WalkStep::NextBlock;
}

WalkStep readFace3List(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t corners = elementCount(header) * 3;
    if (corners > kMaxCorners || !mayTake(walk, header, corners * 4)) return WalkStep::Refused;
    resizeExactly(walk.mesh.triangles, corners);
    readPayload(walk.file, header, walk.mesh.triangles);
    DebugLog("   - Face3 blocs OK [%d Tri].", header.Count);
    return WalkStep::NextBlock;
}

std::int64_t countSplitTriangles(const std::vector<Face4>& faces) {
    std::int64_t count = 0;
    for (const Face4& face : faces)
        count += face.isTriangle() ? 1 : 2;
    return count;
}

void splitFaces(VokWalk& walk, const std::vector<Face4>& faces) {
    std::size_t to = 0;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        if (faces[i].isTriangle()) walk.triangleMarkers.Set(static_cast<std::uint32_t>(i));
        for (std::size_t k = 0; k < cornersAfterSplit(faces[i].isTriangle()); ++k)
            walk.mesh.triangles[to++] = faces[i].vertices[kSplitCorners[k]];
    }
}

WalkStep readFace4List(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t count = elementCount(header);
    if (!mayTake(walk, header, count * std::int64_t{sizeof(Face4)})) return WalkStep::Refused;
    walk.triangleMarkers.Free();
    walk.triangleMarkers.Reset(static_cast<std::int32_t>(count));
    auto faces = zeroed<Face4>(count);
    if (readPayload(walk.file, header, faces)) {
        const std::int64_t triangles = countSplitTriangles(faces);
        if (triangles * 3 > kMaxCorners) return WalkStep::Refused;
        walk.splitTriangleCount = static_cast<std::int32_t>(triangles);
        resizeExactly(walk.mesh.triangles, triangles * 3);
        splitFaces(walk, faces);
    }
    DebugLog("   - Face4 blocs OK [%d Fac].", header.Count);
    return WalkStep::NextBlock;
}

WalkStep readUV3List(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t corners = elementCount(header) * 3;
    if (corners > kMaxCorners || !mayTake(walk, header, corners * std::int64_t{sizeof(UVCoord)}))
        return WalkStep::Refused;
    resizeExactly(walk.mesh.coordsUV, corners);
    readPayload(walk.file, header, walk.mesh.coordsUV);
    DebugLog("   - UV3 bloc OK. [%d tri]", header.Count);
    return WalkStep::NextBlock;
}

// COMPAT: the faces may not match those that were split, in number or in kind; old files
// rely on the list of triangles to decide how many pairs there are.
void splitFaceUVs(VokWalk& walk, const std::vector<Face4UVs>& faces) {
    std::vector<UVCoord>& coordsUV = walk.mesh.coordsUV;
    std::size_t to = 0;
    for (std::size_t i = 0; i < faces.size() && to < coordsUV.size(); ++i) {
        const bool isTriangle = walk.triangleMarkers.Test(static_cast<std::uint32_t>(i));
        const std::size_t count = std::min(cornersAfterSplit(isTriangle), coordsUV.size() - to);
        for (std::size_t k = 0; k < count; ++k)
            coordsUV[to++] = faces[i].corners[kSplitCorners[k]];
    }
}

WalkStep readUV4List(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t count = elementCount(header);
    const std::int64_t corners = std::max(walk.splitTriangleCount, 0) * std::int64_t{3};
    // A quad's four pairs become six, so up to twice its bytes are fine.
    const std::int64_t result = corners * std::int64_t{sizeof(UVCoord)} / 2;
    if (!mayTake(walk, header, std::max(count * std::int64_t{sizeof(Face4UVs)}, result)))
        return WalkStep::Refused;
    auto faces = zeroed<Face4UVs>(count);
    if (readPayload(walk.file, header, faces) && walk.splitTriangleCount != kNotSplit) {
        resizeExactly(walk.mesh.coordsUV, corners);
        splitFaceUVs(walk, faces);
    }
    DebugLog("   - UV4 bloc OK. [%d face]", header.Count);
    return WalkStep::NextBlock;
}

WalkStep readMaskList(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t count = elementCount(header);
    if (!mayTake(walk, header, count)) return WalkStep::Refused;
    resizeExactly(walk.mesh.maskValues, count);
    readPayload(walk.file, header, walk.mesh.maskValues);
    DebugLog("   - Mask bloc OK. [%d mask]", header.Count);
    return WalkStep::NextBlock;
}

WalkStep readMask16List(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t count = elementCount(header);
    if (!mayTake(walk, header, count * 2)) return WalkStep::Refused;
    auto values = zeroed<std::uint16_t>(count);
    readPayload(walk.file, header, values);
    DebugLog("   - Mask16 bloc OK. [%d mask]", header.Count);
    resizeExactly(walk.mesh.maskValues, count);
    for (std::size_t i = 0; i < values.size(); ++i)
        // COMPAT: only the high byte counts, without rounding; output masks depend on it.
        walk.mesh.maskValues[i] = static_cast<std::uint8_t>(values[i] >> 8U);
    return WalkStep::NextBlock;
}

// From the lowest byte: red, green, blue, mask.
std::uint32_t colorOf(const MRGBBytes& bytes) {
    return std::uint32_t{bytes[2]} | std::uint32_t{bytes[1]} << 8U |
           std::uint32_t{bytes[0]} << 16U | std::uint32_t{bytes[3]} << 24U;
}

WalkStep readMRGBList(VokWalk& walk, const VokBlockHeader& header) {
    const std::int64_t count = elementCount(header);
    if (!mayTake(walk, header, count * std::int64_t{sizeof(MRGBBytes)})) return WalkStep::Refused;
    auto colors = zeroed<MRGBBytes>(count);
    readPayload(walk.file, header, colors);
    resizeExactly(walk.mesh.vertexColors, count);
    for (std::size_t i = 0; i < colors.size(); ++i)
        walk.mesh.vertexColors[i] = colorOf(colors[i]);
    DebugLog("   - MRGB bloc OK. [%d colors]", header.Count);
    return WalkStep::NextBlock;
}

WalkStep skipPayload(VokWalk& walk, const VokBlockHeader& header) {
    const bool skipped = walk.file.seek(std::int64_t{payloadBytes(header)}, SEEK_CUR);
    return skipped ? WalkStep::NextBlock : WalkStep::End;
}

// Handles the blocks that have a payload.
WalkStep readBlock(VokWalk& walk, const VokBlockHeader& header) {
    switch (header.Tag) {
    case Vok_TAG_POINT_LIST: return readPointList(walk, header);
    case Vok_TAG_FACE3_LIST: return readFace3List(walk, header);
    case Vok_TAG_FACE4_LIST: return readFace4List(walk, header);
    case Vok_TAG_UV3_LIST: return readUV3List(walk, header);
    case Vok_TAG_UV4_LIST: return readUV4List(walk, header);
    case Vok_TAG_MASK_LIST: return readMaskList(walk, header);
    case Vok_TAG_MASK16_LIST: return readMask16List(walk, header);
    case Vok_TAG_MRGB_LIST: return readMRGBList(walk, header);
    case Vok_TAG_FLAGS: DebugLog("   - Flags bloc skipped!"); return skipPayload(walk, header);
    case Vok_TAG_POINT_LIST_DOUBLE:
        // COMPAT: points in double precision do not become vertices; outputs depend on it.
        DebugLog("   - PointList in Double bloc skipped!");
        return skipPayload(walk, header);
    default: return skipPayload(walk, header);
    }
}

WalkStep walkBlock(VokWalk& walk) {
    VokBlockHeader header;
    // COMPAT: a file may end anywhere, and counts as read up to there; old files rely on it.
    if (!readVokBlockHeader(walk.file, header)) return WalkStep::End;
    switch (header.Tag) {
    case Vok_TAG_END: return WalkStep::End;
    case Vok_TAG_UV_GROUP:
    case Vok_TAG_MASK_GROUP:
    case Vok_TAG_COLOR_GROUP:
        // COMPAT: pure markers, whatever Size says; in all files the next header follows directly.
        return WalkStep::NextBlock;
    default: break;
    }
    // The block would end inside its own header.
    if (header.Size < kVokBlockHeaderBytes) return WalkStep::End;
    return readBlock(walk, header);
}

}  // namespace

bool importDMesh(const HeapString& path, DMesh& mesh, std::int64_t bytesBeyondFile) {
    DebugLog(" START importDMesh from Vok: %s", path.c_str());
    platform::File file = platform::File::open(path.c_str(), "rb");
    if (!file) {
        DebugLog("*** ERROR when opening Vok file ***");
        return false;
    }
    if (!readVokFileHeader(file)) {
        DebugLog("*** ERROR when reading Vok file header ***");
        return false;
    }
    VokWalk walk{file, mesh, bytesBeyondFile, {}};
    WalkStep step = WalkStep::NextBlock;
    while (step == WalkStep::NextBlock)
        step = walkBlock(walk);
    if (step == WalkStep::Refused) return false;

    activateAll(mesh);
    recomputeBoundingBox(mesh);
    DebugLog(" END importDMesh from Vok...");
    return true;
}

bool readVokFileHeader(platform::File& file) {
    VokFileHeader header;
    const std::size_t got = file.read(header.magic.data(), header.magic.size()) +
                            file.read(header.reserved.data(), header.reserved.size());
    return got == kVokFileHeaderBytes && header.magic == kVokMagic;
}

bool readVokBlockHeader(platform::File& file, VokBlockHeader& header) {
    std::size_t got = file.read(&header.Tag, sizeof header.Tag);
    got += file.read(&header.Size, sizeof header.Size);
    got += file.read(&header.Count, sizeof header.Count);
    got += file.read(&header.reserved, sizeof header.reserved);
    return got == kVokBlockHeaderBytes;
}

}  // namespace korvalite::core
