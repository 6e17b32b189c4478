// SPDX-License-Identifier: MIT
#include "drivers/preparation.h"

#include "mesh/corner_lists.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace korvalite::core {
namespace {

using test::MeshPtr;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

MeshPtr withCorners(DMesh mesh) {
    MeshPtr pm = test::prepared(std::move(mesh));
    BuildVertexCorners(pm->mesh);
    return pm;
}

MeshPtr withSymmetry(DMesh mesh, const SymmetryNeeds& needs = {}) {
    MeshPtr pm = withCorners(std::move(mesh));
    test::askForSymmetry(*pm, 0);
    prepareSymmetry(*pm, needs);
    return pm;
}

std::int32_t mirrorOf(const ProgressiveMesh& pm, std::int32_t v) {
    return pm.mesh.symmetryCache.pairing[static_cast<std::size_t>(v)];
}

// A vertex off the plane that has a mirror image on the other side.
std::int32_t pairedVertex(const ProgressiveMesh& pm) {
    std::int32_t v = 0;
    while (mirrorOf(pm, v) == kNone || mirrorOf(pm, v) == v)
        ++v;
    return v;
}

TEST(DriverPreparation, SymmetryIsHandledOnlyOnRequest) {
    const MeshPtr asked = withSymmetry(test::sphere(2));
    EXPECT_TRUE(asked->m_handleSymmetry_internal);
    EXPECT_GT(asked->symmetrySlaves.CountSet(), 0);

    const MeshPtr notAsked = withCorners(test::sphere(2));
    prepareSymmetry(*notAsked, {});
    EXPECT_FALSE(notAsked->m_handleSymmetry_internal);
    EXPECT_TRUE(notAsked->mesh.symmetryCache.pairing.empty());
}

TEST(DriverPreparation, NaNOrInfiniteXOfVertexZeroTurnsSymmetryOff) {
    for (const float x : {kNaN, kInfinity, -kInfinity}) {
        DMesh mesh = test::sphere(2);
        mesh.vertices[0].x = x;
        EXPECT_FALSE(withSymmetry(std::move(mesh))->m_handleSymmetry_internal) << x;
    }
}

TEST(DriverPreparation, NaNAnywhereElseLeavesSymmetryOn) {
    DMesh inAnother = test::sphere(2);
    inAnother.vertices[7].x = kNaN;
    EXPECT_TRUE(withSymmetry(std::move(inAnother))->m_handleSymmetry_internal);
    DMesh inY = test::sphere(2);
    inY.vertices[0].y = kNaN;
    EXPECT_TRUE(withSymmetry(std::move(inY))->m_handleSymmetry_internal);
}

TEST(DriverPreparation, WithoutVerticesNothingIsPaired) {
    const MeshPtr pm = withSymmetry(DMesh{});
    EXPECT_TRUE(pm->mesh.symmetryCache.pairing.empty());
}

TEST(DriverPreparation, SeparatesPairsWithDifferentMasks) {
    const std::int32_t v = pairedVertex(*withSymmetry(test::sphere(2)));
    DMesh mesh = test::sphere(2);
    test::addMask(mesh, [](const FloatVec3&) { return 200; });
    mesh.maskValues[static_cast<std::size_t>(v)] = 201;
    const MeshPtr pm = withSymmetry(mesh);
    EXPECT_EQ(mirrorOf(*pm, v), kNone);
    EXPECT_EQ(std::count(pm->mesh.symmetryCache.pairing.begin(),
                         pm->mesh.symmetryCache.pairing.end(), kNone),
              2);
}

TEST(DriverPreparation, AMaskOfTheWrongLengthSeparatesNoPair) {
    DMesh mesh = test::sphere(2);
    mesh.maskValues = {1, 2, 3};
    const MeshPtr pm = withSymmetry(mesh);
    EXPECT_TRUE(pm->m_handleSymmetry_internal);
    EXPECT_EQ(std::count(pm->mesh.symmetryCache.pairing.begin(),
                         pm->mesh.symmetryCache.pairing.end(), kNone),
              0);
}

TEST(DriverPreparation, SeparatesPairsWhoseColorsDifferByTwoInAnyChannel) {
    const std::int32_t v = pairedVertex(*withSymmetry(test::sphere(2)));
    const auto pairedWith = [v](std::uint32_t color) {
        DMesh mesh = test::sphere(2);
        test::addColors(mesh, [](const FloatVec3&) { return test::packColor(9, 9, 9, 9); });
        mesh.vertexColors[static_cast<std::size_t>(v)] = color;
        return mirrorOf(*withSymmetry(mesh), v) != kNone;
    };
    EXPECT_FALSE(pairedWith(test::packColor(11, 9, 9, 9)));
    EXPECT_FALSE(pairedWith(test::packColor(9, 7, 9, 9)));
    EXPECT_FALSE(pairedWith(test::packColor(9, 9, 11, 9)));
    EXPECT_TRUE(pairedWith(test::packColor(10, 8, 10, 9)));
    EXPECT_TRUE(pairedWith(test::packColor(9, 9, 9, 255)));
}

TEST(DriverPreparation, KeepsPairsOfAnyColorUnlessAsked) {
    const std::int32_t v = pairedVertex(*withSymmetry(test::sphere(2)));
    DMesh mesh = test::sphere(2);
    test::addColors(mesh, [](const FloatVec3&) { return test::packColor(9, 9, 9, 9); });
    mesh.vertexColors[static_cast<std::size_t>(v)] = test::packColor(200, 9, 9, 9);
    EXPECT_NE(mirrorOf(*withSymmetry(mesh, {.pairsMustShareColors = false}), v), kNone);
}

TEST(DriverPreparation, KeepsPairsThatFitTheMesh) {
    const MeshPtr pm = withSymmetry(test::sphere(2));
    const std::int32_t v = pairedVertex(*pm);
    auto& pairing = pm->mesh.symmetryCache.pairing;
    pairing[static_cast<std::size_t>(mirrorOf(*pm, v))] = kNone;
    pairing[static_cast<std::size_t>(v)] = kNone;
    prepareSymmetry(*pm, {});
    EXPECT_EQ(mirrorOf(*pm, v), kNone);
}

}  // namespace
}  // namespace korvalite::core
