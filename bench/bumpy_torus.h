// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::core {

struct DMesh;

namespace bench {

/// A closed torus of about `triangles` triangles, in rows as an exporter would write it, all
/// active.
///
/// It has broad bumps and, like a scan, a fine relief with a height of a fraction of an edge. The
/// relief scales with the edges, so every size has the same local shape and a collapse takes the
/// same work: if a collapse costs more in a larger mesh, memory access is the reason.
void makeBumpyTorus(DMesh& mesh, std::int32_t triangles);

/// Writes that mesh as a .Vok file. False if it could not be written.
bool writeBumpyTorus(const char* path, std::int32_t triangles);

}  // namespace bench
}  // namespace korvalite::core
