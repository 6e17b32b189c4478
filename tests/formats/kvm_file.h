// SPDX-License-Identifier: MIT
//
// A .kvm file as a test sees it: its layout written independently, without any code of the product.
#pragma once

#include "progressive/progressive_mesh.h"
#include "splits/vsplit_samples.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvalite::core::test {

struct KvmFile {
    struct Vertex {
        float x = 0;
        float y = 0;
        float z = 0;
        std::int32_t partner = 0;
    };
    // The indices of `switches`.
    enum Switch : std::size_t {
        kProtectTopology,
        kAllowFinishStep,
        kUseAreaWeighting,
        kUseColors,
        kReordered,
        kCleaned,
        kHandleUVs,
        kSwitchCount
    };

    std::uint32_t reserved = 0;
    std::uint32_t version = 0;
    std::array<float, 6> floats{0, 0, 0, 1, 1, 1};
    std::array<std::uint8_t, 4> flags{};
    std::int32_t tradeOff = 1;
    std::int32_t borderMode = 1;
    std::uint32_t target = 0;
    std::int32_t asked = -1;
    std::int32_t finalCount = -1;
    std::int32_t position = 0;
    std::int32_t finishMark = -1;
    std::array<std::uint8_t, kSwitchCount> switches{1, 0, 0, 0, 1, 1, 0};

    std::vector<std::uint32_t> triangles;
    std::vector<Vertex> vertices;
    std::vector<bool> triangleActive;
    std::vector<bool> vertexActive;
    bool spareBits = true;  // the bits after the last one
    std::uint32_t numActiveTriangles = 0;
    std::uint32_t numActiveVertices = 0;
    std::vector<std::uint32_t> colors;
    std::vector<std::uint8_t> mask;
    std::vector<std::uint32_t> indicesUV;
    std::vector<UVCoord> coordsUV;
    std::vector<VSplit> splits;  // in the order of the collapses

    VSplitFormat format() const { return {switches[kUseColors] != 0, switches[kHandleUVs] != 0}; }

    std::string header() const {
        std::string out = bytesOf({reserved, version});
        for (const float value : floats)
            out += bytesOf({std::bit_cast<std::uint32_t>(value)});
        out.append(flags.begin(), flags.end());
        out += bytesOf({wordOf(tradeOff), wordOf(borderMode), target, wordOf(asked),
                        wordOf(finalCount), wordOf(position), countOf(splits), wordOf(finishMark)});
        out.append(switches.begin(), switches.end());
        out += bytesOf({countOf(triangles) / 3, countOf(vertices), countOf(indicesUV),
                        countOf(coordsUV), countOf(colors), countOf(mask)});
        return out;
    }

    // The nine sections.
    std::vector<std::string> sections() const {
        std::vector<std::uint32_t> vertexWords;
        for (const Vertex& vertex : vertices) {
            for (const float value : {vertex.x, vertex.y, vertex.z})
                vertexWords.push_back(std::bit_cast<std::uint32_t>(value));
            vertexWords.push_back(wordOf(vertex.partner));
        }
        std::vector<std::uint32_t> uvWords;
        for (const UVCoord& uv : coordsUV) {
            uvWords.push_back(std::bit_cast<std::uint32_t>(uv.u));
            uvWords.push_back(std::bit_cast<std::uint32_t>(uv.v));
        }
        std::string splitBytes = bytesOf({countOf(splits)});
        for (std::size_t i = splits.size(); i-- > 0;)
            splitBytes += bytesOf(wordsOf(splits[i], format()));
        return {bytesOf(triangles),
                bytesOf(vertexWords),
                activityOf(triangleActive, numActiveTriangles),
                activityOf(vertexActive, numActiveVertices),
                bytesOf(colors),
                std::string(mask.begin(), mask.end()),
                bytesOf(indicesUV),
                bytesOf(uvWords),
                splitBytes};
    }

    std::string bytes() const {
        std::string all = header();
        for (const std::string& section : sections())
            all += section;
        return all;
    }

    // The offset where section 1 to 9 starts.
    std::size_t startOf(std::size_t number) const {
        std::size_t start = header().size();
        const auto all = sections();
        for (std::size_t i = 1; i < number; ++i)
            start += all[i - 1].size();
        return start;
    }

    // Sets all bits, and the counts to match.
    void activateAll() {
        triangleActive.assign(triangles.size() / 3, true);
        vertexActive.assign(vertices.size(), true);
        countActive();
    }
    void countActive() {
        numActiveTriangles = countSet(triangleActive);
        numActiveVertices = countSet(vertexActive);
    }

private:
    static std::uint32_t wordOf(std::int32_t value) { return static_cast<std::uint32_t>(value); }
    template <typename List>
    static std::uint32_t countOf(const List& list) {
        return static_cast<std::uint32_t>(list.size());
    }
    static std::uint32_t countSet(const std::vector<bool>& bits) {
        std::uint32_t count = 0;
        for (const bool bit : bits)
            count += bit ? 1U : 0U;
        return count;
    }
    std::string activityOf(const std::vector<bool>& bits, std::uint32_t active) const {
        std::string packed((bits.size() + 7) / 8, '\0');
        for (std::size_t i = 0; i < packed.size() * 8; ++i) {
            const bool bit = i < bits.size() ? bits[i] : spareBits;
            if (bit) packed[i / 8] = static_cast<char>(packed[i / 8] | (1 << (i % 8)));
        }
        return bytesOf({countOf(bits)}) + packed + bytesOf({active});
    }
};

inline VSplit splitOf(const VSplitView& view, bool hasColors) {
    VSplit split;
    split.vertex = view.vertex();
    split.position = view.position();
    split.corners.assign(view.corners().begin(), view.corners().end());
    split.removedTriangles.assign(view.removedTriangles().begin(), view.removedTriangles().end());
    if (hasColors) split.savedColor = view.savedColor();
    for (std::uint32_t k = 0; k < view.savedUVCount(); ++k)
        split.savedUVs.push_back(view.savedUV(k));
    split.cornerUVIndices.assign(view.cornerUVIndices().begin(), view.cornerUVIndices().end());
    const auto words = view.uvIndexPairWords();
    for (std::size_t k = 0; k + 1 < words.size(); k += 2)
        split.uvIndexPairs.push_back({words[k], words[k + 1]});
    return split;
}

// The file that the mesh must be saved as.
inline KvmFile kvmFileOf(ProgressiveMesh& pm) {
    const DMesh& mesh = pm.mesh;
    KvmFile file;
    file.version = mesh.meshFormatVersion;
    file.floats = mesh.headerFloats;
    for (std::size_t i = 0; i < 4; ++i)
        file.flags[i] = mesh.headerFlags[i] ? 1 : 0;
    file.tradeOff = pm.MemSpeedTradeOff;
    file.borderMode = pm.BorderMode;
    file.target = pm.TargetNumItem;
    file.asked = pm.askedNumItem;
    file.finalCount = pm.finalDecimNumItem;
    file.position = pm.CurVtxSplitPos;
    file.finishMark = pm.decimationFinishTriangleCount;
    const bool switches[] = {pm.ProtectTopology,     pm.AllowFinishStep,
                             pm.UseAreaWeighting,    pm.m_useVertexColors_internal,
                             pm.IsReordered,         pm.IsCleaned,
                             pm.m_handleUVs_internal};
    for (std::size_t i = 0; i < KvmFile::kSwitchCount; ++i)
        file.switches[i] = switches[i] ? 1 : 0;
    file.triangles = mesh.triangles;
    for (const VertexRecord& vertex : mesh.vertices)
        file.vertices.push_back({vertex.x, vertex.y, vertex.z, vertex.partner});
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t)
        file.triangleActive.push_back(mesh.triangleActive.Test(t));
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v)
        file.vertexActive.push_back(mesh.vertexActive.Test(v));
    file.numActiveTriangles = mesh.numActiveTriangles;
    file.numActiveVertices = mesh.numActiveVertices;
    file.colors = mesh.vertexColors;
    file.mask = mesh.maskValues;
    file.indicesUV = mesh.indicesUV;
    file.coordsUV = mesh.coordsUV;
    for (std::uint32_t i = 0; i < pm.vsplitList.NumVtxSplit(); ++i)
        file.splits.push_back(splitOf(pm.vsplitList.ensureLoaded(static_cast<std::int32_t>(i)),
                                      pm.m_useVertexColors_internal));
    return file;
}

// The mesh that the file describes, as if a driver had produced it. REQUIRES: a list that is not
// open.
inline void fillFrom(const KvmFile& file, ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    mesh.meshFormatVersion = file.version;
    mesh.headerFloats = file.floats;
    for (std::size_t i = 0; i < 4; ++i)
        mesh.headerFlags[i] = file.flags[i] != 0;
    pm.MemSpeedTradeOff = file.tradeOff;
    pm.BorderMode = file.borderMode;
    pm.TargetNumItem = file.target;
    pm.askedNumItem = file.asked;
    pm.finalDecimNumItem = file.finalCount;
    pm.CurVtxSplitPos = file.position;
    pm.decimationFinishTriangleCount = file.finishMark;
    pm.ProtectTopology = file.switches[KvmFile::kProtectTopology] != 0;
    pm.AllowFinishStep = file.switches[KvmFile::kAllowFinishStep] != 0;
    pm.UseAreaWeighting = file.switches[KvmFile::kUseAreaWeighting] != 0;
    pm.m_useVertexColors_internal = file.switches[KvmFile::kUseColors] != 0;
    pm.IsReordered = file.switches[KvmFile::kReordered] != 0;
    pm.IsCleaned = file.switches[KvmFile::kCleaned] != 0;
    pm.m_handleUVs_internal = file.switches[KvmFile::kHandleUVs] != 0;
    mesh.triangles = file.triangles;
    for (const KvmFile::Vertex& vertex : file.vertices) {
        mesh.vertices.emplace_back();
        mesh.vertices.back().setPosition({vertex.x, vertex.y, vertex.z});
        mesh.vertices.back().partner = vertex.partner;
        mesh.vertices.back().cost = 4711.0F;  // costs are not written to the file
    }
    const auto fillBits = [&file](BitArray& bits, const std::vector<bool>& active) {
        bits.Free();
        bits.Resize(static_cast<std::int32_t>(active.size()), file.spareBits);
        for (std::size_t i = 0; i < active.size(); ++i)
            bits.Assign(static_cast<std::uint32_t>(i), active[i]);
    };
    fillBits(mesh.triangleActive, file.triangleActive);
    fillBits(mesh.vertexActive, file.vertexActive);
    mesh.numActiveTriangles = file.numActiveTriangles;
    mesh.numActiveVertices = file.numActiveVertices;
    mesh.vertexColors = file.colors;
    mesh.maskValues = file.mask;
    mesh.indicesUV = file.indicesUV;
    mesh.coordsUV = file.coordsUV;
    pm.vsplitList.open(file.format(), static_cast<std::uint32_t>(mesh.vertices.size()), 2);
    for (const VSplit& split : file.splits) {
        pm.vsplitList.append(split);
        pm.vsplitList.spillIfFull();
    }
}

}  // namespace korvalite::core::test
