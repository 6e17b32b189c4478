// SPDX-License-Identifier: MIT
//
// Everyday meshes that are harder to decimate than a scan: flat ground, hubs, equal costs.
#pragma once

#include "mesh/dmesh.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvalite::test {

// The mesh of a kind, in a size of 3 or more; nothing for any other name or size.
//
// relief     height field of size x size vertices that is flat nowhere, for comparison
// terrain    the same with a flat sea wherever it would be below 0
// plate      flat, size x size vertices
// cube       closed, size x size flat squares on each side
// cylinders  50 closed cylinders, a fan of size triangles at either end of each
// fan        size triangles around one vertex, with an uneven rim
// patches    two narrow plates, far apart on either side of x = 0: a tolerance that goes with the
//            diagonal allows each vertex many mirror images
std::optional<DMesh> hardMesh(std::string_view kind, std::int32_t size);

}  // namespace korvalite::test
