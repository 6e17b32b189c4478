// SPDX-License-Identifier: MIT
#include "drivers/preparation.h"

#include "mesh/corner_lists.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <utility>

namespace korvalite::core {
namespace {

using test::MeshPtr;

MeshPtr withCorners(DMesh mesh) {
    MeshPtr pm = test::prepared(std::move(mesh));
    BuildVertexCorners(pm->mesh);
    return pm;
}

TEST(AttributePreparation, CornerUVsAreWeldedAndHandled) {
    DMesh mesh = test::grid(3, 3);
    test::addCornerUVs(mesh);
    const MeshPtr pm = withCorners(mesh);
    prepareUVs(*pm);
    EXPECT_TRUE(pm->m_handleUVs_internal);
    EXPECT_EQ(pm->mesh.indicesUV.size(), pm->mesh.triangles.size());
    EXPECT_EQ(pm->mesh.coordsUV.size(), pm->mesh.vertices.size());
    EXPECT_EQ(pm->mesh.uvCornerHead.size(), pm->mesh.coordsUV.size());
}

TEST(AttributePreparation, UVsOfTheWrongLengthAreKeptButNotHandled) {
    DMesh mesh = test::grid(3, 3);
    mesh.coordsUV.resize(7);
    const MeshPtr pm = withCorners(mesh);
    prepareUVs(*pm);
    EXPECT_FALSE(pm->m_handleUVs_internal);
    EXPECT_EQ(pm->mesh.coordsUV.size(), 7U);
    EXPECT_TRUE(pm->mesh.indicesUV.empty());
}

TEST(AttributePreparation, UVsWithIndicesAreNotWeldedAgain) {
    DMesh mesh = test::grid(3, 3);
    test::addCornerUVs(mesh);
    ASSERT_EQ(mesh.coordsUV.size(), mesh.triangles.size());
    for (std::uint32_t corner = 0; corner < mesh.triangles.size(); ++corner)
        mesh.indicesUV.push_back(corner);
    const MeshPtr pm = withCorners(mesh);
    prepareUVs(*pm);
    EXPECT_TRUE(pm->m_handleUVs_internal);
    EXPECT_EQ(pm->mesh.indicesUV, mesh.indicesUV);
    EXPECT_EQ(pm->mesh.coordsUV.size(), mesh.coordsUV.size());
}

TEST(AttributePreparation, AMeshWithoutTrianglesHasItsUVsHandled) {
    const MeshPtr pm = withCorners(test::buildMesh({{0, 0, 0}}, {}));
    prepareUVs(*pm);
    EXPECT_TRUE(pm->m_handleUVs_internal);
}

TEST(AttributePreparation, ColorScaleIsTheDiagonalOver20000TimesTheWeight) {
    const MeshPtr pm = withCorners(test::buildMesh({{0, 0, 0}, {3, 4, 12}}, {}));
    pm->colorWeight = 100.0F;
    computeColorScale(*pm);
    EXPECT_EQ(pm->colorScale, static_cast<double>(13.0F / 20000.0F * 100.0F));
    pm->colorWeight = 0;
    computeColorScale(*pm);
    EXPECT_EQ(pm->colorScale, 0);
}

}  // namespace
}  // namespace korvalite::core
