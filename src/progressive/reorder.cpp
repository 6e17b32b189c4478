// SPDX-License-Identifier: MIT
#include "progressive/reorder.h"

#include "mesh/corner_lists.h"
#include "progressive/permute.h"

namespace korvalite::core {

namespace {

template <typename Item>
void release(IndexedArray<Item>& items) {
    IndexedArray<Item>().swap(items);
}

void releaseWorkingState(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    ReleaseVertexCorners(mesh);
    release(mesh.uvCornerHead);
    release(mesh.uvCornerNext);
    mesh.symmetryCache.reset();
    for (BitArray* bits :
         {&mesh.borderVertices, &mesh.uvSeamCoords, &mesh.uvSeamVertices, &mesh.uvSeamCorners,
          &pm.symmetryPaired, &pm.symmetryInterior, &pm.symmetrySlaves}) {
        bits->Free();
    }
    pm.costQueue.Release();
}

struct Renumbering {
    IndexMap vertexMap;
    IndexMap triangleMap;

    [[nodiscard]] std::int32_t corner(std::int32_t c) const {
        return 3 * triangleMap[triangleOf(c)] + c % 3;
    }
};

void numberTheRest(IndexMap& map) {
    std::int32_t next = 0;
    for (std::int32_t& entry : map) {
        if (entry == kNone) entry = next++;
    }
}

/// Numbers the survivors from the start, and what collapsed from the end, first collapse last.
Renumbering numberByLevel(ProgressiveMesh& pm) {
    Renumbering numbering{IndexMap(pm.mesh.vertices.size(), kNone),
                          IndexMap(pm.mesh.triangles.size() / 3, kNone)};
    std::int32_t nextVertex = pm.mesh.vertexCount() - 1;
    std::int32_t nextTriangle = pm.mesh.triangleCount() - 1;
    const auto recordCount = static_cast<std::int32_t>(pm.vsplitList.NumVtxSplit());
    for (std::int32_t i = 0; i < recordCount; ++i) {
        const VSplitView split = pm.vsplitList.ensureLoaded(i);
        if (split.vertex() == kNone) continue;  // lost with the scratch file
        // COMPAT: numbered from the end; .kvm files and partial loads rely on that order.
        numbering.vertexMap[split.vertex()] = nextVertex--;
        for (const std::int32_t triangle : split.removedTriangles()) {
            numbering.triangleMap[triangle] = nextTriangle--;
        }
    }
    numberTheRest(numbering.triangleMap);
    numberTheRest(numbering.vertexMap);
    return numbering;
}

void moveTriangles(DMesh& mesh, Renumbering& numbering) {
    PermuteTriples(mesh.triangles, numbering.triangleMap);
    PermuteBits(mesh.triangleActive, numbering.triangleMap);
    if (mesh.indicesUV.size() == mesh.triangles.size()) {
        PermuteTriples(mesh.indicesUV, numbering.triangleMap);
    }
    for (std::uint32_t& vertex : mesh.triangles) {
        vertex = static_cast<std::uint32_t>(numbering.vertexMap[vertex]);
    }
}

void moveVertices(DMesh& mesh, Renumbering& numbering) {
    for (VertexRecord& vertex : mesh.vertices) {
        if (vertex.partner != kNone) vertex.partner = numbering.vertexMap[vertex.partner];
    }
    PermuteVertexRecords(mesh.vertices, numbering.vertexMap);
    PermuteBits(mesh.vertexActive, numbering.vertexMap);
    if (mesh.hasColors()) PermuteWords(mesh.vertexColors, numbering.vertexMap);
    if (mesh.hasMask()) PermuteBytes(mesh.maskValues, numbering.vertexMap);
}

void renumberSplits(VSplitList& splits, const Renumbering& numbering) {
    const auto recordCount = static_cast<std::int32_t>(splits.NumVtxSplit());
    for (std::int32_t i = 0; i < recordCount; ++i) {
        VSplitView split = splits.ensureLoaded(i);
        if (split.vertex() == kNone) continue;
        splits.markDirty();
        split.setVertex(numbering.vertexMap[split.vertex()]);
        for (std::int32_t& corner : split.corners())
            corner = numbering.corner(corner);
        for (std::int32_t& triangle : split.removedTriangles()) {
            triangle = numbering.triangleMap[triangle];
        }
    }
}

}  // namespace

void ReorderAndClean(ProgressiveMesh& pm, bool reorder) {
    pm.IsCleaned = true;
    releaseWorkingState(pm);
    if (!reorder) return;
    pm.IsReordered = true;
    Renumbering numbering = numberByLevel(pm);
    moveTriangles(pm.mesh, numbering);
    moveVertices(pm.mesh, numbering);
    renumberSplits(pm.vsplitList, numbering);
}

}  // namespace korvalite::core
