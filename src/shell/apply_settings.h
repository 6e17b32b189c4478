// SPDX-License-Identifier: MIT
//
// What the settings of an entry mean for a run.
#pragma once

#include "shell/job_config.h"

#include <cstdint>

namespace korvalite::core {

struct ProgressiveMesh;

/// Applies the settings that control a decimation.
void applySettings(const BatchSettings& settings, ProgressiveMesh& pm);

/// The target vertex count for a mesh with `vertexCount` vertex records: from the percentage if it
/// is set, else the number.
std::int32_t targetVertexCount(const BatchSettings& settings, std::uint32_t vertexCount);

/// The weight of colours relative to distances for a UseVtxColorsCoef: 0 for coefficients up to 1,
/// then a logarithmic scale from 0.01 just above 1 to 100 at 100 and beyond.
float colorWeightOf(float coefficient);

}  // namespace korvalite::core
