// SPDX-License-Identifier: MIT
//
// What decimated meshes can be compared by: the surface, whatever the order of the arrays, or all
// arrays bit for bit.
#pragma once

#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "progressive/level_update.h"
#include "progressive/progressive_mesh.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>
#include <vector>

namespace korvalite::core::test {

using Words = std::vector<std::uint32_t>;

inline void appendFloat(Words& words, float value) {
    words.push_back(std::bit_cast<std::uint32_t>(value));
}

enum class UVs { Compared, Ignored };

// Each active triangle as the positions, colours, mask and UVs of its corners.
inline std::vector<Words> surfaceOf(const DMesh& mesh, UVs uvs = UVs::Compared) {
    std::vector<Words> surface;
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        if (!mesh.triangleActive.Test(t)) continue;
        Words words;
        for (std::size_t c = 3 * static_cast<std::size_t>(t); c % 3 != 0 || words.empty(); ++c) {
            const std::size_t v = mesh.triangles[c];
            appendFloat(words, mesh.vertices[v].x);
            appendFloat(words, mesh.vertices[v].y);
            appendFloat(words, mesh.vertices[v].z);
            if (mesh.hasColors()) words.push_back(mesh.vertexColors[v]);
            if (mesh.hasMask()) words.push_back(mesh.maskValues[v]);
            if (uvs == UVs::Compared && mesh.indicesUV.size() == mesh.triangles.size()) {
                appendFloat(words, mesh.coordsUV[mesh.indicesUV[c]].u);
                appendFloat(words, mesh.coordsUV[mesh.indicesUV[c]].v);
            }
        }
        surface.push_back(words);
    }
    std::sort(surface.begin(), surface.end());
    return surface;
}

// Everything in the mesh that makes up a level, in the order of its arrays: of the active vertices
// and triangles, or of all.
enum class Part { Active, All };

inline Words arraysOf(const DMesh& mesh, Part part, UVs uvs = UVs::Compared) {
    const bool all = part == Part::All;
    Words words{mesh.numActiveVertices, mesh.numActiveTriangles};
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        const bool active = mesh.vertexActive.Test(v);
        words.push_back(active ? 1 : 0);
        if (!active && !all) continue;
        const auto i = static_cast<std::size_t>(v);
        appendFloat(words, mesh.vertices[i].x);
        appendFloat(words, mesh.vertices[i].y);
        appendFloat(words, mesh.vertices[i].z);
        if (mesh.hasColors()) words.push_back(mesh.vertexColors[i]);
        if (mesh.hasMask()) words.push_back(mesh.maskValues[i]);
    }
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        const bool active = mesh.triangleActive.Test(t);
        words.push_back(active ? 1 : 0);
        if (!active && !all) continue;
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t c = 3 * static_cast<std::size_t>(t) + k;
            words.push_back(mesh.triangles[c]);
            if (uvs == UVs::Ignored || mesh.indicesUV.size() != mesh.triangles.size()) continue;
            words.push_back(mesh.indicesUV[c]);
            appendFloat(words, mesh.coordsUV[mesh.indicesUV[c]].u);
            appendFloat(words, mesh.coordsUV[mesh.indicesUV[c]].v);
        }
    }
    return words;
}

// All records, in the order of the collapses.
inline Words splitsOf(ProgressiveMesh& pm) {
    Words words;
    const auto count = static_cast<std::int32_t>(pm.vsplitList.NumVtxSplit());
    for (std::int32_t i = 0; i < count; ++i) {
        const auto record = pm.vsplitList.ensureLoaded(i).words();
        words.insert(words.end(), record.begin(), record.end());
    }
    return words;
}

// As the batch driver leaves the mesh after a run: all records are applied.
inline void markAllApplied(ProgressiveMesh& pm) {
    pm.CurVtxSplitPos = static_cast<std::int32_t>(pm.vsplitList.NumVtxSplit());
}

// To the first and to the last record, whatever the counts.
inline void goAllUp(ProgressiveMesh& pm) {
    updateMeshAtLevel(pm, std::numeric_limits<std::int32_t>::max());
}
inline void goAllDown(ProgressiveMesh& pm) {
    updateMeshAtLevel(pm, -1);
}

// UVs are not comparable where two UVs of a vertex merge into one, because both exchanges follow
// the order of the pairs and the second does not undo the first; nor where a mirrored pair makes a
// pair of one UV with itself, because its corners are not restored.
inline UVs comparableUVs(ProgressiveMesh& pm) {
    for (std::uint32_t i = 0; i < pm.vsplitList.NumVtxSplit(); ++i) {
        const auto words =
            pm.vsplitList.ensureLoaded(static_cast<std::int32_t>(i)).uvIndexPairWords();
        std::set<std::int32_t> merged;
        for (std::size_t k = 1; k < words.size(); k += 2) {
            if (words[k - 1] == words[k] || !merged.insert(words[k]).second) return UVs::Ignored;
        }
    }
    return UVs::Compared;
}

// The initial mesh of a run that handles UVs.
inline DMesh welded(DMesh mesh) {
    BuildVertexCorners(mesh);
    WeldCornerUVs(mesh);
    return mesh;
}

}  // namespace korvalite::core::test
