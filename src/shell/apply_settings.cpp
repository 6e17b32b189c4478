// SPDX-License-Identifier: MIT
#include "shell/apply_settings.h"

#include "base/numeric.h"
#include "progressive/progressive_mesh.h"

#include <cmath>

namespace korvalite::core {

namespace {

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
    // COMPAT: "auto" keeps the defaults, which do not handle symmetry; outputs depend on it.
}

}  // namespace

void applySettings(const BatchSettings& settings, ProgressiveMesh& pm) {
    applySymmetry(settings.Symmetry, pm);
    pm.BorderMode = settings.FreezeBorder ? BORDERMODE_FREEZE : BORDERMODE_PROTECT;
    // COMPAT: ignores the job's own MemSpeedTradeOff; old jobs set it to anything.
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

std::int32_t targetVertexCount(const BatchSettings& settings, std::uint32_t vertexCount) {
    // COMPAT: exactly -1 means not set, any other negative percentage counts; old jobs rely on it.
    if (settings.DecimationTargetPourcent == kNoPercent) return settings.DecimationTargetNum;
    // COMPAT: computed in single precision; counts in outputs depend on it.
    const float count = static_cast<float>(vertexCount);
    const float target = count * (settings.DecimationTargetPourcent / 100.0F);
    return truncateToInt32(double{target});
}

float colorWeightOf(float coefficient) {
    // COMPAT: jumps from 0 to 0.01 just above 1; outputs of old jobs depend on it.
    if (!(coefficient > 1.0F)) return 0.0F;
    const double t = (double{coefficient} - 1.0) / 99.0;
    const double exponent = std::log10(0.01) * (1 - t) + std::log10(100.0) * t;
    return static_cast<float>(std::pow(10.0, exponent));
}

}  // namespace korvalite::core
