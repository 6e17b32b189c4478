// SPDX-License-Identifier: MIT
#include "mesh/dmesh.h"

#include <gtest/gtest.h>
#include <limits>

namespace korvalite::core {
namespace {

DMesh oneTriangle() {
    DMesh mesh;
    mesh.vertices.resize(3);
    mesh.triangles = {0, 1, 2};
    return mesh;
}

TEST(CanBeDecimated, AcceptsAMeshWhoseIndicesAllNameVertices) {
    EXPECT_TRUE(canBeDecimated(oneTriangle()));
    EXPECT_TRUE(canBeDecimated(DMesh()));
}

TEST(CanBeDecimated, RefusesAnIndexOutOfRangeAnywhere) {
    for (std::size_t corner = 0; corner < 3; ++corner) {
        for (const std::uint32_t index : {3U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            DMesh mesh = oneTriangle();
            mesh.triangles[corner] = index;
            EXPECT_FALSE(canBeDecimated(mesh)) << corner << ' ' << index;
        }
    }
}

TEST(CanBeDecimated, RefusesTrianglesWithoutVertices) {
    DMesh mesh;
    mesh.triangles = {0, 0, 0};
    EXPECT_FALSE(canBeDecimated(mesh));
}

TEST(CanBeDecimated, AcceptsAnyCoordinatesAndRepeatedIndices) {
    DMesh mesh = oneTriangle();
    mesh.vertices[0].x = std::numeric_limits<float>::quiet_NaN();
    mesh.vertices[1].y = std::numeric_limits<float>::infinity();
    mesh.triangles = {1, 1, 1};
    EXPECT_TRUE(canBeDecimated(mesh));
}

}  // namespace
}  // namespace korvalite::core
