// SPDX-License-Identifier: MIT
#include "metric/mesh_quadrics.h"

#include "support/prepared_mesh.h"

#include <gtest/gtest.h>

#include <limits>

namespace korvalite::core {
namespace {

using Doubles = std::array<double, 10>;

struct MeshWithQuadrics : ProgressiveMesh {
    std::vector<Quadric3D> triangleQuadrics;
};

// Every slot of the quadric of triangle t is t + 1.
void storeNumberedQuadrics(MeshWithQuadrics& pm) {
    pm.triangleQuadrics.clear();
    for (std::int32_t t = 0; t < pm.mesh.triangleCount(); ++t) {
        Quadric3D quadric;
        quadric.q.fill(static_cast<double>(t + 1));
        pm.triangleQuadrics.push_back(quadric);
    }
}

Quadric3D filled(double value) {
    Quadric3D quadric;
    quadric.q.fill(value);
    return quadric;
}

void putOnPlane(ProgressiveMesh& pm, std::int32_t vertex) {
    pm.handleSymmetry = true;
    pm.mesh.symmetryCache.pairing.assign(pm.mesh.vertices.size(), kNone);
    pm.mesh.symmetryCache.pairing[static_cast<std::size_t>(vertex)] = vertex;
    pm.symmetryPlaneQuadric.asDouble = filled(0.5);
}

TEST(AccumulateVertexQuadric, AddsTheStoredTriangleQuadrics) {
    MeshWithQuadrics pm;
    test::prepare(pm, test::tetrahedron());
    storeNumberedQuadrics(pm);
    Quadric3D quadric = filled(100);
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 0);  // triangles 0, 1, 2
    EXPECT_EQ(quadric.q, filled(106).q);
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 3);  // triangles 1, 2, 3
    EXPECT_EQ(quadric.q, filled(115).q);
}

TEST(AccumulateVertexQuadric, AddsFromTheHighestCornerDown) {
    MeshWithQuadrics pm;
    test::prepare(pm, test::tetrahedron());
    storeNumberedQuadrics(pm);
    pm.triangleQuadrics[0] = filled(1.0);
    pm.triangleQuadrics[1] = filled(1e16);
    pm.triangleQuadrics[2] = filled(-1e16);
    Quadric3D quadric;
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 0);
    EXPECT_EQ(quadric.q[0], (-1e16 + 1e16) + 1.0);
    pm.triangleQuadrics[0] = filled(1e16);
    pm.triangleQuadrics[1] = filled(1.0);
    quadric = {};
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 0);
    EXPECT_EQ(quadric.q[0], (-1e16 + 1.0) + 1e16);
}

TEST(AccumulateVertexQuadric, TheBorderFactorScalesTheInitialValueToo) {
    for (const auto& [mode, factor] : {std::pair{BORDER_MODE_NONE, 1.0},
                                       {BORDERMODE_PROTECT, 100.0},
                                       {BORDERMODE_FREEZE, 50.0}}) {
        MeshWithQuadrics pm;
        test::prepare(pm, test::oneTriangle());
        storeNumberedQuadrics(pm);
        pm.BorderMode = mode;
        Quadric3D quadric = filled(2);
        AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 1);
        EXPECT_EQ(quadric.q, filled(3 * factor).q) << mode;
    }
}

TEST(AccumulateVertexQuadric, AVertexOutsideTheBorderBitsIsNotBorder) {
    MeshWithQuadrics pm;
    test::prepare(pm, test::oneTriangle());
    storeNumberedQuadrics(pm);
    pm.mesh.borderVertices.Free();
    Quadric3D quadric;
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 1);
    EXPECT_EQ(quadric.q, filled(1).q);
}

TEST(AccumulateVertexQuadric, AddsThePlaneQuadricAfterTheBorderFactor) {
    MeshWithQuadrics pm;
    test::prepare(pm, test::oneTriangle());
    storeNumberedQuadrics(pm);
    putOnPlane(pm, 1);
    Quadric3D quadric;
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 1);
    EXPECT_EQ(quadric.q, filled(100.5).q);
    quadric = {};
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 0);
    EXPECT_EQ(quadric.q, filled(100).q);
}

TEST(AccumulateVertexQuadric, AddsThePlaneQuadricOnlyOnRequestAndOnThePlane) {
    MeshWithQuadrics pm;
    test::prepare(pm, test::tetrahedron());
    storeNumberedQuadrics(pm);
    putOnPlane(pm, 0);
    pm.mesh.symmetryCache.pairing = {1, 0};  // vertices 2 and 3 are out of range
    for (std::int32_t v = 0; v < 4; ++v) {
        Quadric3D quadric;
        AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, v);
        EXPECT_EQ(quadric.q[0], 10.0 - (v == 0 ? 4 : v == 1 ? 3 : v == 2 ? 2 : 1));
    }
    putOnPlane(pm, 0);
    pm.handleSymmetry = false;
    Quadric3D quadric;
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 0);
    EXPECT_EQ(quadric.q[0], 6.0);
}

TEST(AccumulateVertexQuadric, AddsNothingForAVertexWithoutTriangles) {
    MeshWithQuadrics pm;
    test::prepare(pm, test::buildMesh({{0, 0, 0}}, {}));
    Quadric3D quadric = filled(3);
    AccumulateVertexQuadric(pm.mesh, pm, pm.triangleQuadrics, quadric, 0);
    ComputeVertexQuadricFromTriangles(pm.mesh, pm, quadric, 0);
    EXPECT_EQ(quadric.q, filled(3).q);
    pm.mesh.vertexColors = {0};
    ColorQuadric color;
    ComputeVertexColorQuadric(pm.mesh, pm, color, 0);
    EXPECT_EQ(color.C, 0.0);
}

TEST(ComputeVertexQuadricFromTriangles, AddsTheTrianglesAtTheirCurrentPositions) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    // Three planes through the origin, each with weight 1.
    Quadric3D quadric;
    ComputeVertexQuadricFromTriangles(pm.mesh, pm, quadric, 0);
    EXPECT_EQ(quadric.q, (Doubles{1, 0, 0, 1, 0, 1, 0, 0, 0, 0}));
    // When vertex 0 moves up by 1, the floor 0 2 1 slants, and the walls x = 0 and y = 0 shrink to
    // nothing, because 0 and 3 coincide.
    pm.mesh.vertices[0].z = 1;
    quadric = {};
    ComputeVertexQuadricFromTriangles(pm.mesh, pm, quadric, 0);
    EXPECT_EQ(quadric.q, ComputeTriangleQuadric(pm.mesh, pm, 0).q);
}

TEST(ComputeVertexQuadricFromTriangles, HasNoBorderFactorAndNoPlaneQuadric) {
    ProgressiveMesh pm;
    test::prepare(pm, test::oneTriangle());
    putOnPlane(pm, 1);
    Quadric3D quadric = filled(1);
    ComputeVertexQuadricFromTriangles(pm.mesh, pm, quadric, 1);
    Quadric3D expected = filled(1);
    expected += ComputeTriangleQuadric(pm.mesh, pm, 0);
    EXPECT_EQ(quadric.q, expected.q);
}

TEST(ComputeVertexColorQuadric, AddsTheColourQuadricOfEachTriangle) {
    ProgressiveMesh pm;
    test::prepare(pm, test::oneTriangle());
    pm.mesh.vertexColors = {test::packColor(10, 0, 0), test::packColor(20, 0, 0),
                            test::packColor(10, 0, 0)};
    pm.colorScale = 1;
    ColorQuadric quadric;
    ComputeVertexColorQuadric(pm.mesh, pm, quadric, 0);
    ComputeVertexColorQuadric(pm.mesh, pm, quadric, 0);
    EXPECT_EQ(quadric.A, (std::array<double, 6>{200, 0, 0, 0, 0, 2}));
    EXPECT_EQ(quadric.C, 2.0);
    EXPECT_EQ(quadric.c, 200.0);
}

TEST(AddBorderAndPlane, AddsToEachFormItsOwnPlaneQuadric) {
    ProgressiveMesh pm;
    test::prepare(pm, test::oneTriangle());
    putOnPlane(pm, 1);
    pm.symmetryPlaneQuadric.asFloat.q.fill(0.25F);
    pm.symmetryPlaneQuadric.asColor = ColorQuadric(filled(7));
    Quadric3DFloat narrow;
    narrow.q.fill(2);
    addBorderAndPlane(pm.mesh, pm, narrow, 1);
    EXPECT_EQ(narrow.q[9], 200.25F);
    ColorQuadric color(filled(1));
    addBorderAndPlane(pm.mesh, pm, color, 1);
    EXPECT_EQ(color.A[0], 107.0);
    EXPECT_EQ(color.C, 101.0);
}

TEST(VertexQuadrics, HandleCoordinatesThatAreNotFinite) {
    ProgressiveMesh pm;
    test::prepare(pm, test::tetrahedron());
    pm.mesh.vertices[2].x = std::numeric_limits<float>::infinity();
    pm.mesh.vertexColors.assign(4, 5);
    for (std::int32_t v = 0; v < 4; ++v) {
        Quadric3D quadric;
        ColorQuadric color;
        ComputeVertexQuadricFromTriangles(pm.mesh, pm, quadric, v);
        ComputeVertexColorQuadric(pm.mesh, pm, color, v);
    }
}

}  // namespace
}  // namespace korvalite::core
