// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

struct DMesh;

/// Finds the mirror pairs of `mesh` according to its symmetryMode and symmetryAxis and stores them
/// in its symmetryCache; `pairing` stays empty if symmetry is off or not found. Must not run while
/// another thread uses the mesh. May throw std::bad_alloc.
void computeSymmetry(DMesh& mesh);

}  // namespace korvalite
