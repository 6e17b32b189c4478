// SPDX-License-Identifier: MIT
//
// Vertices that a run must leave as they are.
#pragma once

#include "mesh/borders.h"
#include "mesh/corner_lists.h"
#include "mesh/dmesh.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace korvalite::test {

// Active, and its position and colour bit for bit as before.
inline testing::AssertionResult isUntouched(const DMesh& mesh, const DMesh& original,
                                            std::int32_t v) {
    const auto i = static_cast<std::size_t>(v);
    if (!mesh.vertexActive.Test(v)) return testing::AssertionFailure() << v << " is gone";
    const FloatVec3 is = mesh.vertices[i].position();
    const FloatVec3 was = original.vertices[i].position();
    if (is.x != was.x || is.y != was.y || is.z != was.z)
        return testing::AssertionFailure() << v << " has moved";
    if (mesh.hasColors() && mesh.vertexColors[i] != original.vertexColors[i])
        return testing::AssertionFailure() << v << " has another colour";
    return testing::AssertionSuccess();
}

// The vertices of the surface that lie on its borders.
inline std::vector<std::int32_t> borderOf(DMesh mesh) {
    BuildVertexCorners(mesh);
    ComputeBorderVertices(mesh);
    std::vector<std::int32_t> border;
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        if (mesh.borderVertices.Test(v)) border.push_back(v);
    }
    return border;
}

}  // namespace korvalite::test
