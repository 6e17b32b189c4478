// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"
#include <korvalite/korvalite.h>

namespace korvalite {

/// Copies the mesh into a fresh `pm`, simplifies it there as a job of the batch tool with the same
/// settings would, and reports. Throws as simplify does.
[[nodiscard]] Report runSimplification(core::ProgressiveMesh& pm, const MeshView& mesh,
                                       const Options& options, const Monitor& monitor);

/// Makes the run count what the target counts, and returns how many are to be left. Throws
/// Error(BadOption).
std::uint32_t applyTarget(core::ProgressiveMesh& pm, const Target& target);

}  // namespace korvalite
