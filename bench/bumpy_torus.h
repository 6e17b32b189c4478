// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite {

struct DMesh;

namespace bench {

/// A closed torus of about so many triangles, in rows as an exporter writes it, all active.
///
/// It has broad bumps and, like a scan, a fine relief as high as a part of an edge. The relief goes
/// with the edges, so that every size has the same local shape and a collapse the same work: what a
/// larger mesh costs more for each collapse is then the reach for its memory.
void makeBumpyTorus(DMesh& mesh, std::int32_t triangles);

/// The mesh as a .Vok file. False if it could not be written.
bool writeBumpyTorus(const char* path, std::int32_t triangles);

}  // namespace bench
}  // namespace korvalite
