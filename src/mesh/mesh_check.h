// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

struct DMesh;

/// Whether the drivers can work on the mesh: every triangle index names a vertex, and all vertices
/// and corners can be counted in 31 bits. Readers pass on what a file says, so this stands between
/// them and the drivers. Coordinates may be anything.
bool canBeDecimated(const DMesh& mesh);

}  // namespace korvalite
