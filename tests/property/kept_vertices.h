// SPDX-License-Identifier: MIT
//
// Vertices that a run must not change.
#pragma once

#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "mesh/dmesh.h"
#include "progressive/progressive_mesh.h"
#include "property/run_cases.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace korvalite::core::test {

// The vertex is active, and its position and colour are the same bit for bit.
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

// The vertices on the borders of the surface.
inline std::vector<std::int32_t> borderOf(DMesh mesh) {
    BuildVertexCorners(mesh);
    ComputeBorderVertices(mesh);
    std::vector<std::int32_t> border;
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
        if (mesh.borderVertices.Test(v)) border.push_back(v);
    }
    return border;
}

inline void freezeBorder(ProgressiveMesh& pm) {
    pm.BorderMode = BORDERMODE_FREEZE;
}

// Expects that the border of unevenHills is unchanged, and that the rest is not.
inline void expectBorderKept(const ProgressiveMesh& pm, const DMesh& original) {
    const auto border = borderOf(original);
    EXPECT_EQ(border.size(), 2U * (22 + 18));
    EXPECT_LT(pm.mesh.numActiveVertices, original.vertices.size() * 2 / 3);
    for (const std::int32_t v : border)
        EXPECT_TRUE(isUntouched(pm.mesh, original, v));
}

// A ball with a mask of 0 below and of 255 above, mirrored across an axis of 0, 1 or 2.
inline DMesh maskedBelow(int axis, std::uint32_t seed, bool colored) {
    DMesh mesh = axis < 0 ? unevenSphere(seed) : unevenMirrored(axis, seed);
    if (colored) addColors(mesh, redOrBlue);
    addMask(mesh, [](const FloatVec3& p) { return p.y < -0.2F ? 0 : 255; });
    return mesh;
}

// Expects that the vertices of maskedBelow with a mask of 0 are unchanged, and that the rest is
// not.
inline void expectMaskedKept(const ProgressiveMesh& pm, const DMesh& original) {
    EXPECT_LT(pm.mesh.numActiveVertices, original.vertices.size() * 3 / 4);
    int masked = 0;
    for (std::int32_t v = 0; v < original.vertexCount(); ++v) {
        if (original.maskValues[static_cast<std::size_t>(v)] != 0) continue;
        ++masked;
        EXPECT_TRUE(isUntouched(pm.mesh, original, v));
    }
    EXPECT_GT(masked, 30);
}

}  // namespace korvalite::core::test
