// SPDX-License-Identifier: MIT
//
// The parts of a .kvm file, which stores a ProgressiveMesh: the first 99 bytes, and the vertices.
// docs/file-formats.md has every byte.
#pragma once

#include "platform/file.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace korvalite::core {

struct ProgressiveMesh;

inline constexpr std::int64_t kProgMeshHeaderBytes = 99;

/// The little-endian fields have no padding in the file, so they are read and written one by one,
/// never as an image of the structure.
struct ProgMeshHeader {
    std::uint32_t headerReserved = 0;
    std::uint32_t meshFormatVersion = 0;
    std::array<float, 6> headerFloats{};
    std::array<bool, 4> headerFlags{};
    std::int32_t MemSpeedTradeOff = 0;
    std::int32_t BorderMode = 0;
    std::uint32_t TargetNumItem = 0;
    std::int32_t askedNumItem = 0;
    std::int32_t finalDecimNumItem = 0;
    std::int32_t CurVtxSplitPos = 0;  // the list position of the saved level
    std::uint32_t NumVtxSplit = 0;
    std::int32_t decimationFinishTriangleCount = 0;
    bool ProtectTopology = false;
    bool AllowFinishStep = false;
    bool UseAreaWeighting = false;
    bool UseVertexColor_Internal = false;
    bool IsReordered = false;
    bool IsCleaned = false;
    bool HandleUVs_Internal = false;
    std::uint32_t OriginalTriangleCount = 0;
    std::uint32_t OriginalVertexCount = 0;
    std::uint32_t OriginalIndicesUVCount = 0;
    std::uint32_t OriginalCoordsUVCount = 0;
    std::uint32_t OriginalColorCount = 0;
    std::uint32_t OriginalMaskCount = 0;
};

/// Whether the file has more than its header: only the two low-memory drivers leave a complete
/// file.
bool hasBody(const ProgMeshHeader& header);

void fillProgMeshHeader(ProgMeshHeader& header, const ProgressiveMesh& pm);

/// Applies all of the header but the counts, which belong to the arrays and the list of splits.
void applyProgMeshHeader(const ProgMeshHeader& header, ProgressiveMesh& pm);

/// Always return 0. Fields missing from a short file stay unchanged; a closed file has no effect. A
/// read treats any non-zero flag byte as true.
int writeProgMeshHeader(const ProgMeshHeader& header, platform::File& file);
int readProgMeshHeader(ProgMeshHeader& header, platform::File& file);

/// A vertex on disk: `cost` is not stored.
struct KvmVertex {
    float x = 0;
    float y = 0;
    float z = 0;
    std::int32_t partner = 0;
};
static_assert(sizeof(KvmVertex) == 16);

/// The number of vertices in the conversion buffer.
inline constexpr std::size_t kKvmVerticesAtOnce = 4096;

}  // namespace korvalite::core
