// SPDX-License-Identifier: MIT
#include "progressive/level_update.h"

#include "base/debug_log.h"
#include "mesh/corner_lists.h"

#include <cstdlib>

namespace korvalite::core {

namespace {

std::int64_t activeCount(const ProgressiveMesh& pm) {
    return static_cast<std::int64_t>(pm.activeCount());
}

void activateVertex(DMesh& mesh, std::int32_t vertex) {
    mesh.vertexActive.Set(vertex);
    ++mesh.numActiveVertices;
}

void exchangePosition(DMesh& mesh, std::int32_t kept, VSplitView& split) {
    const FloatVec3 live = mesh.vertices[kept].position();
    mesh.vertices[kept].setPosition(split.position());
    split.setPosition(live);
}

void exchangeColor(ProgressiveMesh& pm, std::int32_t kept, VSplitView& split) {
    if (!pm.m_useVertexColors_internal || !pm.mesh.hasColors()) return;
    const std::uint32_t live = pm.mesh.vertexColors[kept];
    pm.mesh.vertexColors[kept] = split.savedColor();
    split.setSavedColor(live);
}

void exchangeUV(DMesh& mesh, std::int32_t uvIndex, std::uint32_t k, VSplitView& split) {
    const UVCoord live = mesh.coordsUV[uvIndex];
    mesh.coordsUV[uvIndex] = split.savedUV(k);
    split.setSavedUV(k, live);
}

void restoreCorners(DMesh& mesh, const VSplitView& split, std::int32_t removed) {
    for (const std::int32_t corner : split.corners()) {
        mesh.triangles[corner] = static_cast<std::uint32_t>(removed);
        const std::int32_t triangle = triangleOf(corner);
        if (mesh.triangleActive.Test(triangle)) continue;
        mesh.triangleActive.Set(triangle);
        ++mesh.numActiveTriangles;
        for (const std::int32_t c : cornersOf(triangle)) {
            const std::int32_t vertex = vertexAt(mesh, c);
            if (!mesh.vertexActive.Test(vertex)) activateVertex(mesh, vertex);
        }
    }
}

void restoreUVs(DMesh& mesh, VSplitView& split) {
    const auto corners = split.corners();
    const auto cornerUVIndices = split.cornerUVIndices();
    for (std::size_t k = 0; k < cornerUVIndices.size(); ++k) {
        mesh.indicesUV[corners[k]] = static_cast<std::uint32_t>(cornerUVIndices[k]);
    }
    const auto pairs = split.uvIndexPairWords();
    for (std::uint32_t k = 0; k < split.savedUVCount(); ++k) {
        exchangeUV(mesh, pairs[2 * std::size_t{k} + 1], k, split);
    }
}

/// Undoes the record at CurVtxSplitPos - 1: splits the removed vertex off again. False, with
/// nothing done, if the scratch file has lost the record.
bool applySplit(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    VSplitView split = pm.vsplitList.ensureLoaded(pm.CurVtxSplitPos - 1);
    const std::int32_t removed = split.vertex();
    if (removed == kNone) return false;
    pm.vsplitList.markDirty();
    --pm.CurVtxSplitPos;
    const std::int32_t kept = mesh.vertices[removed].partner;
    activateVertex(mesh, removed);
    restoreCorners(mesh, split, removed);
    exchangePosition(mesh, kept, split);
    exchangeColor(pm, kept, split);
    if (pm.m_handleUVs_internal) restoreUVs(mesh, split);
    return true;
}

/// The same for the collapse at CurVtxSplitPos.
bool applyNextCollapse(ProgressiveMesh& pm) {
    const std::int32_t removed = pm.vsplitList.ensureLoaded(pm.CurVtxSplitPos).vertex();
    if (removed == kNone) return false;
    ++pm.CurVtxSplitPos;
    ApplyCollapse(pm, removed, pm.mesh.vertices[removed].partner);
    return true;
}

void moveToLevel(ProgressiveMesh& pm, std::int64_t target) {
    const std::int64_t total = std::abs(activeCount(pm) - target);
    RunMonitor& progress = *pm.monitor;
    progress.BeginMainTask();
    progress.BeginSubTask("apply decimation", static_cast<std::int32_t>(total));
    const auto report = [&] {
        progress.SetSubTaskProgress(
            static_cast<std::int32_t>(total - std::abs(activeCount(pm) - target)));
    };
    const auto recordCount = static_cast<std::int64_t>(pm.vsplitList.NumVtxSplit());
    if (pm.CurVtxSplitPos < 0 || pm.CurVtxSplitPos > recordCount) return;
    if (activeCount(pm) >= target) {
        while (activeCount(pm) > target && pm.CurVtxSplitPos < recordCount) {
            report();
            if (!applyNextCollapse(pm)) return;
        }
    } else {
        while (activeCount(pm) < target && pm.CurVtxSplitPos > 0) {
            report();
            if (!applySplit(pm)) return;
        }
    }
}

}  // namespace

void ApplyCollapse(ProgressiveMesh& pm, std::int32_t removed, std::int32_t kept) {
    DMesh& mesh = pm.mesh;
    VSplitView split = pm.vsplitList.ensureLoaded(pm.CurVtxSplitPos - 1);
    pm.vsplitList.markDirty();
    // COMPAT: no other vertex, even without triangles; counts of levels depend on it.
    mesh.vertexActive.Clear(removed);
    --mesh.numActiveVertices;
    const auto corners = split.corners();
    for (const std::int32_t corner : corners) {
        mesh.triangles[corner] = static_cast<std::uint32_t>(kept);
    }
    for (const std::int32_t corner : corners) {
        const std::int32_t triangle = triangleOf(corner);
        const std::int32_t a = vertexAt(mesh, 3 * triangle);
        const std::int32_t b = vertexAt(mesh, 3 * triangle + 1);
        const std::int32_t c = vertexAt(mesh, 3 * triangle + 2);
        // A triangle that had the removed vertex twice comes up twice.
        if ((a != b && b != c && c != a) || !mesh.triangleActive.Test(triangle)) continue;
        mesh.triangleActive.Clear(triangle);
        --mesh.numActiveTriangles;
    }
    exchangePosition(mesh, kept, split);
    exchangeColor(pm, kept, split);
    if (!pm.m_handleUVs_internal) return;
    const auto pairs = split.uvIndexPairWords();
    for (std::uint32_t k = 0; k < split.savedUVCount(); ++k) {
        const std::int32_t oldIndex = pairs[2 * std::size_t{k}];
        const std::int32_t newIndex = pairs[2 * std::size_t{k} + 1];
        for (const std::int32_t corner : corners) {
            if (uvIndexAt(mesh, corner) == oldIndex) {
                mesh.indicesUV[corner] = static_cast<std::uint32_t>(newIndex);
            }
        }
        exchangeUV(mesh, newIndex, k, split);
    }
}

int updateMeshAtLevel(ProgressiveMesh& pm, std::int32_t target) {
    DebugLog("Start updateMeshAtLevel  (targetNumVtx=%d)", target);
    if (activeCount(pm) != target) moveToLevel(pm, target);
    pm.monitor->EndSubTask();
    pm.monitor->step(RunStep::LevelReached);
    DebugLog("updateMeshAtLevel_LM OK!*");
    DebugLog("     Verif : numActiveVtx=%d", pm.mesh.numActiveVertices);
    return 0;
}

}  // namespace korvalite::core
