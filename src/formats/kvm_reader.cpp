// SPDX-License-Identifier: MIT
#include "formats/kvm_reader.h"

#include "base/debug_log.h"
#include "formats/kvm_check.h"
#include "progressive/progressive_mesh.h"

#include <algorithm>
#include <cstdio>

namespace korvalite::core {

namespace {

constexpr int kLoaded = 0;
constexpr int kNotLoaded = 1;

void logHeader(const ProgMeshHeader& header) {
    DebugLog(" ProgMesh Header:");
    DebugLog("  MemSpeedTradeOff = %s", memSpeedTradeOffText(header.MemSpeedTradeOff));
    DebugLog("  BorderMode = %s", borderModeText(header.BorderMode));
    DebugLog("  TargetNumItem = %d (asked=%d,  finalDecim=%d)", header.TargetNumItem,
             header.askedNumItem, header.finalDecimNumItem);
    DebugLog("  CurVtxSplitPos = %d", header.CurVtxSplitPos);
    DebugLog("  NumVtxSplit = %d", header.NumVtxSplit);
    DebugLog("  ProtectTopology = %d", header.ProtectTopology);
    DebugLog("  AllowFinishStep = %d", header.AllowFinishStep);
    DebugLog("  UseAreaWeighting = %d", header.UseAreaWeighting);
    DebugLog("  UseVertexColor_Internal = %d", header.UseVertexColor_Internal);
    DebugLog("  IsReordered = %d", header.IsReordered);
    DebugLog("  IsCleaned = %d", header.IsCleaned);
    DebugLog("  HandleUVs_Internal = %d", header.HandleUVs_Internal);
    DebugLog("  OriginalTriangleCount = %d", header.OriginalTriangleCount);
    DebugLog("  OriginalVertexCount = %d", header.OriginalVertexCount);
    DebugLog("  OriginalIndicesUVCount = %d", header.OriginalIndicesUVCount);
    DebugLog("  OriginalCoordsUVCount = %d", header.OriginalCoordsUVCount);
    DebugLog("  OriginalColorCount = %d", header.OriginalColorCount);
    DebugLog("  OriginalMaskCount = %d", header.OriginalMaskCount);
}

void sizeArrays(const ProgMeshHeader& header, DMesh& mesh) {
    reserveLarge(mesh.triangles, std::size_t{header.OriginalTriangleCount} * 3);
    mesh.triangles.resize(std::size_t{header.OriginalTriangleCount} * 3);
    mesh.vertices.resize(header.OriginalVertexCount);
    mesh.indicesUV.resize(header.OriginalIndicesUVCount);
    mesh.coordsUV.resize(header.OriginalCoordsUVCount);
    mesh.vertexColors.resize(header.OriginalColorCount);
    mesh.maskValues.resize(header.OriginalMaskCount);
}

template <typename Item>
void readAll(platform::File& file, std::vector<Item>& items) {
    file.read(items.data(), items.size() * sizeof(Item));
}

void readVertices(platform::File& file, VertexRecords& vertices, std::size_t count) {
    std::vector<KvmVertex> buffer(std::min(count, kKvmVerticesAtOnce));
    for (std::size_t first = 0; first < count; first += kKvmVerticesAtOnce) {
        const std::size_t wanted = std::min(kKvmVerticesAtOnce, count - first);
        const std::size_t got = file.read(buffer.data(), wanted * sizeof(KvmVertex));
        for (std::size_t i = 0; i < got / sizeof(KvmVertex); ++i) {
            VertexRecord& vertex = vertices[first + i];
            vertex.setPosition({buffer[i].x, buffer[i].y, buffer[i].z});
            vertex.partner = buffer[i].partner;
        }
    }
}

/// False if there is not one bit per item.
bool readActivity(platform::File& file, BitArray& bits, std::uint32_t& numActive,
                  std::size_t itemCount) {
    std::uint32_t count = 0;
    if (file.read(&count, sizeof count) != sizeof count || count != itemCount) return false;
    bits.Free();
    bits.Resize(static_cast<std::int32_t>(count), false);
    return file.read(bits.data(), bits.byteCount()) == bits.byteCount() &&
           file.read(&numActive, sizeof numActive) == sizeof numActive;
}

/// How many vertices, and therefore splits, to load.
struct LoadRange {
    bool partial = false;
    std::int64_t baseVertices = 0;  // of the coarsest level
    std::int64_t readVertices = 0;

    /// How many of the newest splits to load; -1 for all.
    [[nodiscard]] std::int32_t splitLimit() const {
        return partial ? static_cast<std::int32_t>(readVertices - baseVertices) : -1;
    }
};

LoadRange chooseRange(const ProgMeshHeader& header, std::int32_t wantedVertices) {
    const std::int64_t all = header.OriginalVertexCount;
    if (wantedVertices <= 0 || !header.IsReordered) return {false, 0, all};
    const std::int64_t base = std::max<std::int64_t>(all - header.NumVtxSplit, 0);
    return {true, base, std::clamp<std::int64_t>(wantedVertices, base, all)};
}

bool readBody(platform::File& file, const ProgMeshHeader& header, const LoadRange& range,
              ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    readAll(file, mesh.triangles);
    DebugLog("   - triangles read (#tri=%d)", header.OriginalTriangleCount);
    const auto readCount = static_cast<std::size_t>(range.readVertices);
    readVertices(file, mesh.vertices, readCount);
    const std::size_t passedOver = (mesh.vertices.size() - readCount) * sizeof(KvmVertex);
    file.seek(static_cast<std::int64_t>(passedOver), SEEK_CUR);
    if (range.partial)
        DebugLog("   - partial vertices read (#vtxRead=%d / #vtx=%d)",
                 static_cast<std::int32_t>(readCount), header.OriginalVertexCount);
    else
        DebugLog("   - vertices read (#Vtx=%d) (NOT PARTIAL !)", header.OriginalVertexCount);
    if (!readActivity(file, mesh.triangleActive, mesh.numActiveTriangles,
                      mesh.triangles.size() / 3) ||
        !readActivity(file, mesh.vertexActive, mesh.numActiveVertices, mesh.vertices.size())) {
        return false;
    }
    DebugLog("   - vertices/triange activity read");
    readAll(file, mesh.vertexColors);
    DebugLog("   - color32 read (#=%d)", header.OriginalColorCount);
    readAll(file, mesh.maskValues);
    DebugLog("   - mask read (#=%d)", header.OriginalMaskCount);
    readAll(file, mesh.indicesUV);
    DebugLog("   - indicesUV read (#=%d)", header.OriginalIndicesUVCount);
    readAll(file, mesh.coordsUV);
    DebugLog("   - coordsUV read (#=%d)", header.OriginalCoordsUVCount);

    pm.vsplitList.loadFrom(file, {pm.m_useVertexColors_internal, pm.m_handleUVs_internal},
                           range.splitLimit());
    // The records not loaded had the lowest positions, so all others have moved down.
    const std::int64_t leftBehind =
        std::int64_t{header.NumVtxSplit} - std::int64_t{pm.vsplitList.NumVtxSplit()};
    pm.CurVtxSplitPos = static_cast<std::int32_t>(pm.CurVtxSplitPos - leftBehind);
    if (range.partial)
        DebugLog("   - vtxSplitList partially read (#=%d / total=%d)", pm.vsplitList.NumVtxSplit(),
                 header.NumVtxSplit);
    else
        DebugLog("   - vtxSplitList Totally read (#=%d)", pm.vsplitList.NumVtxSplit());
    return true;
}

}  // namespace

bool readProgMeshFileHeader(const HeapString& path, ProgMeshHeader& header) {
    platform::File file = platform::File::open(path.c_str(), "rb");
    if (!file) return false;
    readProgMeshHeader(header, file);
    return true;
}

int loadProgressiveMesh(ProgressiveMesh& pm, const HeapString& path, std::int32_t wantedVertices) {
    ResetProgressiveMeshSettings(pm);
    ClearDecimationState(pm);
    DebugLog("Loading ProgressiveMesh (%s)", path.c_str());
    platform::File file = platform::File::open(path.c_str(), "rb");
    if (!file) return kNotLoaded;
    ProgMeshHeader header;
    readProgMeshHeader(header, file);
    logHeader(header);
    if (!couldFill(header, file.bytesLeft())) return kNotLoaded;
    applyProgMeshHeader(header, pm);
    sizeArrays(header, pm.mesh);
    if (hasBody(header)) {
        const LoadRange range = chooseRange(header, wantedVertices);
        if (range.partial) DebugLog("   Partial Load !");
        if (!readBody(file, header, range, pm) || !canChangeLevel(pm)) return kNotLoaded;
    }
    recomputeBoundingBox(pm.mesh);
    return kLoaded;
}

}  // namespace korvalite::core
