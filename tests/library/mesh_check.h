// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

namespace korvalite::test {

// Compares all but the memory.
inline void expectEqual(const MeshCheck& check, const MeshCheck& expected) {
    EXPECT_EQ(check.vertices, expected.vertices);
    EXPECT_EQ(check.triangles, expected.triangles);
    EXPECT_EQ(check.components, expected.components);
    EXPECT_EQ(check.borderLoops, expected.borderLoops);
    EXPECT_EQ(check.seamEdges, expected.seamEdges);
#define KORVALITE_EXPECT_SAME(fault)                                                               \
    EXPECT_EQ(check.fault, expected.fault);                                                        \
    EXPECT_EQ(check.places.fault, expected.places.fault)
    KORVALITE_EXPECT_SAME(nonFiniteVertices);
    KORVALITE_EXPECT_SAME(badTriangles);
    KORVALITE_EXPECT_SAME(borderEdges);
    KORVALITE_EXPECT_SAME(nonManifoldEdges);
    KORVALITE_EXPECT_SAME(nonManifoldVertices);
    KORVALITE_EXPECT_SAME(flippedEdges);
    KORVALITE_EXPECT_SAME(degenerateTriangles);
    KORVALITE_EXPECT_SAME(duplicateTriangles);
    KORVALITE_EXPECT_SAME(unusedVertices);
    KORVALITE_EXPECT_SAME(repeatedPositions);
#undef KORVALITE_EXPECT_SAME
}

}  // namespace korvalite::test
