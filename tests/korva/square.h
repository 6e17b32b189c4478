// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

#include <cstddef>

namespace korva::test {

/// A square of two triangles, bent so that no coordinate is the same everywhere.
inline korvalite::Mesh square() {
    korvalite::Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0.1F};
    mesh.triangles = {0, 1, 2, 0, 2, 3};
    return mesh;
}

/// Gives the square colours, a mask, and UVs with a seam at vertex 0.
inline void addEverything(korvalite::Mesh& mesh) {
    mesh.colors = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 252, 253, 254, 255};
    mesh.mask = {0, 1, 128, 255};
    mesh.uvs = {0, 0, 1, 0, 1, 1, 0, 1, 0.5F, 0.5F};
    mesh.triangleUVs = {0, 1, 2, 4, 2, 3};
}

/// The corners have equal UVs, whatever the order of the UV points.
inline void expectSameUVs(const korvalite::Mesh& a, const korvalite::Mesh& b) {
    ASSERT_EQ(a.triangleUVs.size(), b.triangleUVs.size());
    for (std::size_t i = 0; i < a.triangleUVs.size(); ++i)
        for (std::size_t c = 0; c < 2; ++c)
            EXPECT_EQ(a.uvs.at(2 * std::size_t{a.triangleUVs[i]} + c),
                      b.uvs.at(2 * std::size_t{b.triangleUVs[i]} + c));
}

}  // namespace korva::test
