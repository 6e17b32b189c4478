// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/vsplit.h"
#include "mesh/corner_lists.h"
#include "mesh/dmesh.h"

#include <cstdint>

namespace korvalite {

struct CriticalSections;

/// Lets the UVs follow a collapse of `removed` onto `kept` that stands: merges the UV indices of
/// the removed vertex into those of the kept one, places the surviving UVs, and fills the UV lists
/// of `split` so that all of it can be reversed. `triangles` already names `kept` in the corners of
/// `removed`, whose record still holds its position. `scratch` is any list.
/// REQUIRES: UVs are handled, so that the UV corner lists and seam bits are there.
void UpdateUVsAfterCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                            IndexList& scratch);

/// The same for a thread that has reserved both vertices and their rings. Unlike the plain form it
/// lets the mark of a seam corner travel only with a seam.
void UpdateUVsAfterCollapse_MT(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                               IndexList& scratch, CriticalSections& sections);

}  // namespace korvalite
