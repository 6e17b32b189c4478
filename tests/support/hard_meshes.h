// SPDX-License-Identifier: MIT
//
// Everyday meshes that are harder to decimate than a scan: flat ground, hubs, equal costs.
#pragma once

#include "mesh/dmesh.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvalite::core::test {

// The mesh of a kind, in a size of 3 or more; nothing for any other name or size.
//
// relief     height field of size x size vertices without flat parts, for comparison
// terrain    the same with a flat sea where it would be below 0
// plate      flat, size x size vertices
// cube       closed, size x size flat squares on each side
// cylinders  50 closed cylinders, with a fan of size triangles at both ends of each
// fan        size triangles around one vertex, with an uneven rim
// patches    two narrow plates, far apart on either side of x = 0: a tolerance proportional to
//            the diagonal allows each vertex many mirror images
std::optional<DMesh> hardMesh(std::string_view kind, std::int32_t size);

}  // namespace korvalite::core::test
