// SPDX-License-Identifier: MIT
#include "formats/kvm_check.h"

#include "mesh/dmesh.h"
#include "progressive/progressive_mesh.h"

#include <algorithm>
#include <limits>
#include <span>

namespace korvalite::core {

namespace {

constexpr std::int64_t kAllowance = std::int64_t{256} << 20U;

bool areBelow(std::span<const std::int32_t> indices, std::size_t count) {
    return std::all_of(indices.begin(), indices.end(), [count](std::int32_t index) {
        return index >= 0 && static_cast<std::size_t>(index) < count;
    });
}

bool isBelow(std::int32_t index, std::size_t count) {
    return areBelow({&index, 1}, count);
}

bool fits(const ProgressiveMesh& pm, const VSplitView& split) {
    const DMesh& mesh = pm.mesh;
    const std::size_t vertexCount = mesh.vertices.size();
    if (!isBelow(split.vertex(), vertexCount)) return false;
    const auto vertex = static_cast<std::size_t>(split.vertex());
    if (!isBelow(mesh.vertices[vertex].partner, vertexCount)) return false;
    if (!areBelow(split.corners(), mesh.triangles.size())) return false;
    if (pm.m_useVertexColors_internal && mesh.vertexColors.size() != vertexCount) return false;
    if (!pm.m_handleUVs_internal) return true;
    const bool uvsFit = mesh.indicesUV.size() == mesh.triangles.size() &&
                        split.cornerUVIndices().size() == split.corners().size() &&
                        split.uvIndexPairWords().size() == 2 * std::size_t{split.savedUVCount()};
    return uvsFit && areBelow(split.cornerUVIndices(), mesh.coordsUV.size()) &&
           areBelow(split.uvIndexPairWords(), mesh.coordsUV.size());
}

}  // namespace

bool couldFill(const ProgMeshHeader& header, std::int64_t bytesLeft) {
    constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
    if (header.OriginalTriangleCount > kMost / 3 || header.OriginalVertexCount > kMost)
        return false;
    const std::int64_t asked = std::int64_t{header.OriginalTriangleCount} * 12 +
                               std::int64_t{header.OriginalVertexCount} * 16 +
                               std::int64_t{header.OriginalIndicesUVCount} * 4 +
                               std::int64_t{header.OriginalCoordsUVCount} * 8 +
                               std::int64_t{header.OriginalColorCount} * 4 +
                               std::int64_t{header.OriginalMaskCount};
    return asked <= std::max<std::int64_t>(bytesLeft, 0) + kAllowance;
}

bool canChangeLevel(ProgressiveMesh& pm) {
    const DMesh& mesh = pm.mesh;
    if (!canBeDecimated(mesh)) return false;
    const bool uvIndicesFit =
        std::all_of(mesh.indicesUV.begin(), mesh.indicesUV.end(),
                    [&mesh](std::uint32_t index) { return index < mesh.coordsUV.size(); });
    if (!uvIndicesFit) return false;
    const auto recordCount = static_cast<std::int32_t>(pm.vsplitList.NumVtxSplit());
    for (std::int32_t i = 0; i < recordCount; ++i) {
        if (!fits(pm, pm.vsplitList.ensureLoaded(i))) return false;
    }
    return true;
}

}  // namespace korvalite::core
