// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

namespace korvalite {

struct ProgressiveMesh;

/// What the files of an entry turned out to be.
struct EntryFiles {
    bool outputIsProgressive = false;
    bool outputIsMesh = false;
    bool inputMeshLoaded = false;
    bool inputProgressiveLoaded = false;
};

/// Reads the entry's input into a fresh `pm` and moves the entry's settings there, also after a
/// failed load. A mesh that no driver can work on counts as not loaded.
EntryFiles LoadInputInProgMesh(const BatchSettings& settings, ProgressiveMesh& pm);

/// The settings that a decimation goes by.
void applySettings(const BatchSettings& settings, ProgressiveMesh& pm);

/// The weight of colours against distances for a UseVtxColorsCoef: 0 up to 1, then a logarithmic
/// scale from 0.01 just above 1 to 100 at 100, and on.
float colorWeightOf(float coefficient);

}  // namespace korvalite
