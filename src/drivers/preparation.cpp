// SPDX-License-Identifier: MIT
#include "drivers/preparation.h"

#include "collapse/symmetric_collapse.h"
#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "metric/metric_rules.h"
#include "ranking/vertex_cost_init.h"
#include "symmetry/compute_symmetry.h"

#include <cmath>
#include <cstdlib>

namespace korvalite::core {

namespace {

bool colorsDiffer(std::uint32_t a, std::uint32_t b) {
    for (unsigned channel = 0; channel < 3; ++channel) {
        const auto byteA = static_cast<int>((a >> (8 * channel)) & 0xFFU);
        const auto byteB = static_cast<int>((b >> (8 * channel)) & 0xFFU);
        if (std::abs(byteA - byteB) >= 2) return true;
    }
    return false;
}

template <typename Differ>
void unpairWhere(DMesh& mesh, Differ differ) {
    auto& pairing = mesh.symmetryCache.pairing;
    for (std::size_t vertex = 0; vertex < pairing.size(); ++vertex) {
        const std::int32_t mirror = pairing[vertex];
        if (mirror == kNone || !differ(vertex, static_cast<std::size_t>(mirror))) continue;
        pairing[mirror] = kNone;
        pairing[vertex] = kNone;
    }
}

void unpairUnlike(DMesh& mesh, bool byColor) {
    if (mesh.hasMask()) {
        unpairWhere(mesh, [&](std::size_t a, std::size_t b) {
            return mesh.maskValues[a] != mesh.maskValues[b];
        });
    }
    if (byColor && mesh.hasColors()) {
        unpairWhere(mesh, [&](std::size_t a, std::size_t b) {
            return colorsDiffer(mesh.vertexColors[a], mesh.vertexColors[b]);
        });
    }
}

/// Gives every corner an index, even in triangles that an earlier run has removed.
void weldAllCorners(DMesh& mesh) {
    if (!hasDeadTriangles(mesh)) return WeldCornerUVs(mesh);
    BuildVertexCorners(mesh);
    WeldCornerUVs(mesh);
    dropDeadVertexCorners(mesh);
}

}  // namespace

void prepareAdjacency(ProgressiveMesh& pm) {
    RunMonitor& progress = *pm.monitor;
    DMesh& mesh = pm.mesh;
    progress.BeginSubTask("analysing mesh", -1);
    // A mesh without triangles has no corners, but each vertex still has a list.
    if (!mesh.vertexCorners.areBuiltFor(mesh.vertices.size(), mesh.triangles.size()))
        BuildVertexCorners(mesh);
    dropDeadVertexCorners(mesh);
    progress.EndSubTask();
    ClearDecimationState(pm);
    progress.BeginSubTask("analysing mesh", -1);
    ComputeBorderVertices(mesh);
    progress.EndSubTask();
}

void prepareSymmetry(ProgressiveMesh& pm, const SymmetryNeeds& needs) {
    DMesh& mesh = pm.mesh;
    pm.m_handleSymmetry_internal = pm.handleSymmetry;
    // COMPAT: only the first coordinate is checked for being finite; outputs depend on it.
    if (!mesh.vertices.empty() && !std::isfinite(mesh.vertices.front().x)) {
        pm.m_handleSymmetry_internal = false;
    }
    if (!pm.m_handleSymmetry_internal) return;
    pm.monitor->BeginSubTask("analysing mesh", -1);
    if (!mesh.symmetryCache.isValidFor()) computeSymmetry(mesh);
    if (mesh.symmetryCache.pairing.size() != mesh.vertices.size()) {
        pm.m_handleSymmetry_internal = false;
    } else {
        unpairUnlike(mesh, needs.pairsMustShareColors);
        BuildSymmetrySlaves(pm);
        if (needs.planeQuadric)
            pm.symmetryPlaneQuadric = BuildSymmetryPlaneQuadric(mesh.symmetryCache);
    }
    pm.monitor->EndSubTask();
}

void prepareUVs(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    if (mesh.indicesUV.empty() && mesh.coordsUV.size() == mesh.triangles.size()) {
        weldAllCorners(mesh);
    }
    // COMPAT: also true without any triangles; a flag in .kvm files.
    pm.m_handleUVs_internal = mesh.indicesUV.size() == mesh.triangles.size();
    if (!pm.m_handleUVs_internal) return;
    BuildUVCorners(mesh);
    dropDeadUVCorners(mesh);
    ComputeUVSeams(mesh);
}

void computeColorScale(ProgressiveMesh& pm) {
    pm.colorScale = static_cast<double>(pm.mesh.boundingBox.diagonal() / 20000.0F * pm.colorWeight);
}

void prepareInMemoryDriver(ProgressiveMesh& pm, bool planeQuadric) {
    pm.monitor->BeginMainTask();
    prepareAdjacency(pm);
    pm.monitor->step(RunStep::CornerListsBuilt);
    pm.monitor->step(RunStep::BordersFound);
    prepareSymmetry(pm, {.pairsMustShareColors = false, .planeQuadric = planeQuadric});
    pm.monitor->step(RunStep::SymmetryDecided);
    pm.monitor->step(RunStep::AttributesDecided);
}

template <typename Metric>
void prepareLowMemoryRun(ProgressiveMesh& pm, const LowMemoryPreparation& preparation) {
    RunMonitor& progress = *pm.monitor;
    progress.BeginMainTask();
    prepareAdjacency(pm);
    pm.monitor->step(RunStep::CornerListsBuilt);
    if (preparation.raiseStageFlags) progress.raiseStageFlags();
    pm.monitor->step(RunStep::BordersFound);
    prepareSymmetry(pm, {.pairsMustShareColors = true, .planeQuadric = true});
    pm.monitor->step(RunStep::SymmetryDecided);
    prepareUVs(pm);
    if (pm.m_useVertexColors_internal) computeColorScale(pm);
    pm.monitor->step(RunStep::AttributesDecided);
    progress.BeginSubTask("analysing mesh", -1);
    InitVerticesCost_LM<Metric>(pm, pm, preparation.logCostForms);
    progress.EndSubTask();
    pm.monitor->step(RunStep::VerticesQueued);
}

template void prepareLowMemoryRun<PlainMetric>(ProgressiveMesh&, const LowMemoryPreparation&);
template void prepareLowMemoryRun<ColorMetric>(ProgressiveMesh&, const LowMemoryPreparation&);

void openVSplitList(ProgressiveMesh& pm, std::uint32_t threadCount) {
    constexpr std::uint32_t kAppendsPerTurn = 2;
    if (!pm.recordVSplits) return;
    pm.vsplitList.open({pm.m_useVertexColors_internal, pm.m_handleUVs_internal},
                       static_cast<std::uint32_t>(pm.mesh.vertices.size()),
                       kAppendsPerTurn * threadCount);
}

}  // namespace korvalite::core
