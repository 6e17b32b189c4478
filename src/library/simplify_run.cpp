// SPDX-License-Identifier: MIT
#include "library/simplify_run.h"

#include "drivers/run_decimation.h"
#include "library/blocked_edges.h"
#include "library/mesh_copy.h"
#include "library/option_range.h"
#include "library/paths.h"
#include "library/watched_run.h"
#include "shell/apply_settings.h"

#include <new>
#include <string>

namespace korvalite {

namespace {

core::BatchSettings settingsOf(const Options& options) {
    requireBetween("colorWeight", options.colorWeight, 1.0F, 100.0F);
    requireThreads(options.threads);
    core::BatchSettings settings;
    settings.Symmetry = static_cast<std::int32_t>(options.symmetry);
    settings.FreezeBorder = options.freezeBorder;
    settings.ProtectTopology = options.protectTopology;
    settings.AvoidNormalReverse = options.protectNormals;
    settings.UseAreaWeighting = options.weightByArea;
    settings.UseVtxColorsCoef = options.colorWeight;
    settings.NumThread = options.threads;
    return settings;
}

static_assert(static_cast<int>(Symmetry::None) == core::kSymmetryNone &&
              static_cast<int>(Symmetry::X) == core::kSymmetryX &&
              static_cast<int>(Symmetry::Z) == core::kSymmetryZ);

core::HeapString scratchFolderOf(const Options& options) {
    if (!options.scratchFolder.empty()) return pathText(options.scratchFolder);
    std::error_code none;
    return pathText(std::filesystem::temp_directory_path(none));
}

void decimate(core::ProgressiveMesh& pm, const Monitor& monitor, Report& report) {
    // Several threads report their progress in vertices, and a mesh has about half as many vertices
    // as triangles.
    const bool countsTriangles = !pm.targetCountsVertices;
    const std::uint32_t left =
        countsTriangles && pm.NumThread > 1 ? report.asked / 2 : report.asked;
    WatchedRun watched(pm, monitor, Phase::Analysing, left);
    watched.onLoopEnded = [&] {
        report.missed = pm.activeCount() > report.asked;
        if (!report.missed) return;
        report.blockedEdges = countBlockedEdges(pm);
        report.advice = adviceFor(report.blockedEdges, pm);
    };
    const int result = core::RunDecimation(pm);
    watched.finish();
    if (result != 0) throw std::bad_alloc();
    pm.CurVtxSplitPos = static_cast<std::int32_t>(pm.vsplitList.NumVtxSplit());
}

}  // namespace

std::uint32_t Target::countFor(std::uint32_t vertexCount) const {
    if (unit_ != Unit::Percent) return count_;
    requireBetween("target", percentage_, 0.0F, 100.0F);
    core::BatchSettings settings;
    settings.DecimationTargetPourcent = percentage_;
    return static_cast<std::uint32_t>(core::targetVertexCount(settings, vertexCount));
}

std::uint32_t applyTarget(core::ProgressiveMesh& pm, const Target& target) {
    pm.targetCountsVertices = target.unit() != Target::Unit::Triangles;
    return target.countFor(static_cast<std::uint32_t>(pm.mesh.vertexCount()));
}

Report runSimplification(core::ProgressiveMesh& pm, const MeshView& mesh, const Options& options,
                         const Monitor& monitor) {
    core::applySettings(settingsOf(options), pm);
    pm.vsplitList.scratchFolder = scratchFolderOf(options);
    copyIn(mesh, pm.mesh);
    core::dropUniformMask(pm.mesh);
    Report report;
    report.inputVertices = static_cast<std::uint32_t>(pm.mesh.vertexCount());
    report.inputTriangles = static_cast<std::uint32_t>(pm.mesh.triangleCount());
    report.asked = applyTarget(pm, options.target);
    pm.TargetNumItem = report.asked;
    decimate(pm, monitor, report);
    report.reached = pm.activeCount();
    return report;
}

}  // namespace korvalite
