// SPDX-License-Identifier: MIT
//
// The place on a triangle that is nearest to a point (Ericson, "Real-Time Collision Detection",
// 2005, 5.1.5), for triangles of any shape.
#pragma once

#include "geometry/vec3.h"

#include <array>

namespace korvalite {

using TriangleCorners = std::array<core::DoubleVec3, 3>;

struct NearestPlace {
    core::DoubleVec3 offset;  // from the point to the place
    double square = 0;        // of the distance
};

inline core::DoubleVec3 operator*(double factor, const core::DoubleVec3& v) {
    return {factor * v.x, factor * v.y, factor * v.z};
}

/// The error is a few units of the last place of the corners and the point, even on slivers. A
/// triangle without area counts as the segment or point that it is. No overflow for coordinates in
/// the range of float.
[[nodiscard]] NearestPlace nearestPlace(const core::DoubleVec3& point,
                                        const TriangleCorners& triangle);

}  // namespace korvalite
