// SPDX-License-Identifier: MIT
#pragma once

#include "collapse/sharing.h"
#include "mesh/corner_lists.h"
#include "mesh/dmesh.h"
#include "splits/vsplit.h"

#include <cstdint>

namespace korvalite {

/// Updates the UVs after a successful collapse of `removed` onto `kept`: merges the UV indices of
/// the removed vertex into those of the kept one, places the surviving UVs, and fills the UV lists
/// of `split` so that everything can be reversed. In `triangles` the corners of `removed` are
/// already `kept`, but the record of `removed` still holds its position. `scratch` is any list.
/// REQUIRES: UVs are handled, so the UV corner lists and seam bits exist.
///
/// Shared, it moves a seam corner mark only together with a seam.
template <SharingPolicy Sharing>
void UpdateUVsAfterCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                            IndexList& scratch, const Sharing& sharing);

}  // namespace korvalite
