// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

struct DMesh;

/// Finds the mirror pairs of `mesh` as its symmetryMode and symmetryAxis ask and leaves them in
/// its symmetryCache; `pairing` stays empty where symmetry is off or none is found. Must not run
/// while another thread uses the mesh. May throw std::bad_alloc.
void computeSymmetry(DMesh& mesh);

}  // namespace korvalite
