// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

namespace korvalite {

struct ProgressiveMesh;

/// The types of an entry's files, and whether its input was loaded.
struct EntryFiles {
    bool outputIsProgressive = false;
    bool outputIsMesh = false;
    bool inputMeshLoaded = false;
    bool inputProgressiveLoaded = false;
};

/// Reads the entry's input into a fresh `pm` and applies the entry's settings to it, even if the
/// load fails. A mesh that no driver can work on counts as not loaded.
EntryFiles LoadInputInProgMesh(const BatchSettings& settings, ProgressiveMesh& pm);

/// Applies the settings that control a decimation.
void applySettings(const BatchSettings& settings, ProgressiveMesh& pm);

/// The weight of colours relative to distances for a UseVtxColorsCoef: 0 for coefficients up to 1,
/// then a logarithmic scale from 0.01 just above 1 to 100 at 100 and beyond.
float colorWeightOf(float coefficient);

}  // namespace korvalite
