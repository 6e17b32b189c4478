// SPDX-License-Identifier: MIT
#include "shell/load_input.h"

#include "base/debug_log.h"
#include "formats/kvm_reader.h"
#include "formats/vok_reader.h"
#include "mesh/mesh_check.h"
#include "progressive/progressive_mesh.h"
#include "shell/save_output.h"
#include "shell/target_count.h"

#include <cmath>

namespace korvalite {

namespace {

bool loadVok(const HeapString& path, DMesh& mesh) {
    DebugLog("START LoadInputInProgMesh : loading Vok file...");
    if (!importDMesh(path, mesh) || !canBeDecimated(mesh)) return false;
    dropUniformMask(mesh);
    return true;
}

/// Reads only what the target needs.
bool loadKvm(const BatchSettings& settings, ProgressiveMesh& pm) {
    DebugLog("START LoadInputInProgMesh : loading .kvm file...");
    ProgMeshHeader header;
    if (!readProgMeshFileHeader(settings.InputFile, header)) return false;
    const std::int32_t wanted = targetVertexCount(settings, header.OriginalVertexCount);
    if (loadProgressiveMesh(pm, settings.InputFile, wanted) != 0) return false;
    DebugLog("    #VtxTotal=%d", pm.mesh.vertexCount());
    DebugLog("    #ActiveVtx=%d", pm.mesh.numActiveVertices);
    DebugLog("    HasMask=%s", trueOrFalse(pm.mesh.hasMask()));
    DebugLog("    HasColor=%s", trueOrFalse(pm.mesh.hasColors()));
    return true;
}

void applySymmetry(std::int32_t choice, ProgressiveMesh& pm) {
    if (choice == kSymmetryNone) {
        pm.mesh.symmetryAxis = kNone;
        pm.mesh.symmetryMode = 0;
        pm.handleSymmetry = false;
    } else if (choice >= kSymmetryX && choice <= kSymmetryZ) {
        pm.mesh.symmetryAxis = choice - kSymmetryX;
        pm.mesh.symmetryMode = 1;
        pm.handleSymmetry = true;
    }
    // "auto" keeps the defaults, which do not handle symmetry.
}

}  // namespace

EntryFiles LoadInputInProgMesh(const BatchSettings& settings, ProgressiveMesh& pm) {
    EntryFiles files;
    const OutputKind output = outputKindOf(settings.OutputFile);
    files.outputIsProgressive = output == OutputKind::Progressive;
    files.outputIsMesh = output == OutputKind::Mesh;
    if (settings.InputFile.EndsWith(".Vok"))
        files.inputMeshLoaded = loadVok(settings.InputFile, pm.mesh);
    else if (settings.InputFile.EndsWith(".kvm"))
        files.inputProgressiveLoaded = loadKvm(settings, pm);
    applySettings(settings, pm);
    return files;
}

void applySettings(const BatchSettings& settings, ProgressiveMesh& pm) {
    applySymmetry(settings.Symmetry, pm);
    pm.BorderMode = settings.FreezeBorder ? BORDERMODE_FREEZE : BORDERMODE_PROTECT;
    // Ignores the job's own MemSpeedTradeOff: only the number of threads counts.
    if (settings.NumThread > 1) {
        pm.MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM_MT;
        pm.NumThread = settings.NumThread;
    } else {
        pm.MemSpeedTradeOff = MEMSPEED_TRADEOFF_LOW_MEM;
    }
    pm.ProtectTopology = settings.ProtectTopology;
    pm.tryStoreDoubleMat = true;
    pm.tryStoreFloatMat = true;
    pm.AllowFinishStep = settings.AllowFinishStep;
    pm.UseAreaWeighting = settings.UseAreaWeighting;
    pm.AvoidNormalReverse = settings.AvoidNormalReverse;
    pm.recordVSplits = true;
    pm.DoReorder = settings.DoReorder;
    pm.colorWeight = colorWeightOf(settings.UseVtxColorsCoef);
}

float colorWeightOf(float coefficient) {
    if (!(coefficient > 1.0F)) return 0.0F;
    const double t = (double{coefficient} - 1.0) / 99.0;
    const double exponent = std::log10(0.01) * (1 - t) + std::log10(100.0) * t;
    return static_cast<float>(std::pow(10.0, exponent));
}

}  // namespace korvalite
