// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"
#include "shell/apply_settings.h"

#include <cstdint>

namespace korvalite::core::bench {

/// Applies the settings of a job without other keys to a mesh that has been read.
inline void askForPercent(ProgressiveMesh& pm, float percent) {
    BatchSettings settings;
    settings.DecimationTargetPourcent = percent;
    applySettings(settings, pm);
    const auto vertexCount = static_cast<std::uint32_t>(pm.mesh.vertices.size());
    pm.TargetNumItem = static_cast<std::uint32_t>(targetVertexCount(settings, vertexCount));
}

}  // namespace korvalite::core::bench
