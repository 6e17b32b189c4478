// SPDX-License-Identifier: MIT
#include "formats/kvm_format.h"

#include "progressive/progressive_mesh.h"

#include <bit>

namespace korvalite::core {

namespace {

static_assert(std::endian::native == std::endian::little, "words go to files as they stand");

/// The fields in file order, the same for both directions.
template <typename Header, typename Visit>
void forEachField(Header& header, Visit visit) {
    visit(header.headerReserved);
    visit(header.meshFormatVersion);
    for (auto& value : header.headerFloats)
        visit(value);
    for (auto& flag : header.headerFlags)
        visit(flag);
    visit(header.MemSpeedTradeOff);
    visit(header.BorderMode);
    visit(header.TargetNumItem);
    visit(header.askedNumItem);
    visit(header.finalDecimNumItem);
    visit(header.CurVtxSplitPos);
    visit(header.NumVtxSplit);
    visit(header.decimationFinishTriangleCount);
    visit(header.ProtectTopology);
    visit(header.AllowFinishStep);
    visit(header.UseAreaWeighting);
    visit(header.UseVertexColor_Internal);
    visit(header.IsReordered);
    visit(header.IsCleaned);
    visit(header.HandleUVs_Internal);
    visit(header.OriginalTriangleCount);
    visit(header.OriginalVertexCount);
    visit(header.OriginalIndicesUVCount);
    visit(header.OriginalCoordsUVCount);
    visit(header.OriginalColorCount);
    visit(header.OriginalMaskCount);
}

struct FieldWriter {
    platform::File& file;

    void operator()(bool flag) const {
        const std::uint8_t byte = flag ? 1 : 0;
        file.write(&byte, sizeof byte);
    }
    template <typename Word>
    void operator()(const Word& word) const {
        static_assert(sizeof(Word) == 4);
        file.write(&word, sizeof word);
    }
};

struct FieldReader {
    platform::File& file;

    void operator()(bool& flag) const {
        std::uint8_t byte = 0;
        if (file.read(&byte, sizeof byte) == sizeof byte) flag = byte != 0;
    }
    template <typename Word>
    void operator()(Word& word) const {
        static_assert(sizeof(Word) == 4);
        Word read{};
        if (file.read(&read, sizeof read) == sizeof read) word = read;
    }
};

std::uint32_t countOf(std::size_t size) {
    return static_cast<std::uint32_t>(size);
}

}  // namespace

bool hasBody(const ProgMeshHeader& header) {
    return header.MemSpeedTradeOff == MEMSPEED_TRADEOFF_LOW_MEM ||
           header.MemSpeedTradeOff == MEMSPEED_TRADEOFF_LOW_MEM_MT;
}

void fillProgMeshHeader(ProgMeshHeader& header, const ProgressiveMesh& pm) {
    const DMesh& mesh = pm.mesh;
    header = {};
    header.meshFormatVersion = mesh.meshFormatVersion;
    header.headerFloats = mesh.headerFloats;
    header.headerFlags = mesh.headerFlags;
    header.MemSpeedTradeOff = pm.MemSpeedTradeOff;
    header.BorderMode = pm.BorderMode;
    header.TargetNumItem = pm.TargetNumItem;
    header.askedNumItem = pm.askedNumItem;
    header.finalDecimNumItem = pm.finalDecimNumItem;
    header.CurVtxSplitPos = pm.CurVtxSplitPos;
    header.NumVtxSplit = pm.vsplitList.NumVtxSplit();
    header.decimationFinishTriangleCount = pm.decimationFinishTriangleCount;
    header.ProtectTopology = pm.ProtectTopology;
    header.AllowFinishStep = pm.AllowFinishStep;
    header.UseAreaWeighting = pm.UseAreaWeighting;
    header.UseVertexColor_Internal = pm.m_useVertexColors_internal;
    header.IsReordered = pm.IsReordered;
    header.IsCleaned = pm.IsCleaned;
    header.HandleUVs_Internal = pm.m_handleUVs_internal;
    header.OriginalTriangleCount = countOf(mesh.triangles.size() / 3);
    header.OriginalVertexCount = countOf(mesh.vertices.size());
    header.OriginalIndicesUVCount = countOf(mesh.indicesUV.size());
    header.OriginalCoordsUVCount = countOf(mesh.coordsUV.size());
    header.OriginalColorCount = countOf(mesh.vertexColors.size());
    header.OriginalMaskCount = countOf(mesh.maskValues.size());
}

void applyProgMeshHeader(const ProgMeshHeader& header, ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    mesh.meshFormatVersion = header.meshFormatVersion;
    mesh.headerFloats = header.headerFloats;
    mesh.headerFlags = header.headerFlags;
    pm.MemSpeedTradeOff = header.MemSpeedTradeOff;
    pm.BorderMode = header.BorderMode;
    pm.TargetNumItem = header.TargetNumItem;
    pm.askedNumItem = header.askedNumItem;
    pm.finalDecimNumItem = header.finalDecimNumItem;
    pm.CurVtxSplitPos = header.CurVtxSplitPos;
    pm.decimationFinishTriangleCount = header.decimationFinishTriangleCount;
    pm.ProtectTopology = header.ProtectTopology;
    pm.AllowFinishStep = header.AllowFinishStep;
    pm.UseAreaWeighting = header.UseAreaWeighting;
    pm.m_useVertexColors_internal = header.UseVertexColor_Internal;
    pm.IsReordered = header.IsReordered;
    pm.IsCleaned = header.IsCleaned;
    pm.m_handleUVs_internal = header.HandleUVs_Internal;
}

int writeProgMeshHeader(const ProgMeshHeader& header, platform::File& file) {
    forEachField(header, FieldWriter{file});
    return 0;
}

int readProgMeshHeader(ProgMeshHeader& header, platform::File& file) {
    forEachField(header, FieldReader{file});
    return 0;
}

}  // namespace korvalite::core
