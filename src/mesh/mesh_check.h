// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

struct DMesh;

/// Whether the drivers can work on the mesh: every triangle index refers to a vertex, and vertices
/// and corners can each be counted in 31 bits. Readers pass on whatever a file contains, so this
/// check comes between them and the drivers. Coordinates may be anything.
bool canBeDecimated(const DMesh& mesh);

}  // namespace korvalite
