// SPDX-License-Identifier: MIT
#include "collapse/symmetric_collapse.h"

#include "metric/metric.h"
#include "support/mirrored_grid.h"
#include "symmetry/compute_symmetry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

namespace korvalite::core {
namespace {

struct Mirrored : test::MirroredGrid {
    EdgeEvaluation evaluation{1, {0.25F, 2, 3}, {}};
    SymmetricCollapse mirror;
    bool check(std::int32_t v, std::int32_t w) {
        evaluation = {1, {0.25F, 2, 3}, {}};
        KeptQuadrics<PlainMetric> quadrics;
        return CheckSymmetricCollapse(pm, v, w, evaluation, mirror, quadrics);
    }
};

constexpr std::int32_t at(std::int32_t column, std::int32_t row) {
    return Mirrored::at(column, row);
}

TEST(BuildSymmetrySlaves, AreTheSecondSideIfEverythingIsPaired) {
    Mirrored m;
    BuildSymmetrySlaves(m.pm);
    for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v)
        EXPECT_EQ(m.pm.symmetrySlaves.Test(v), m.position(v).x > 0) << v;
}

TEST(BuildSymmetrySlaves, KeepTwoRingsAwayFromEveryUnpairedVertex) {
    for (const std::int32_t loner : {at(4, 4), at(2, 2), at(0, 0), at(1, 3)}) {
        Mirrored m;
        m.unpair(loner);
        BuildSymmetrySlaves(m.pm);
        std::set<std::int32_t> near{loner};
        for (int ringNumber = 0; ringNumber < 2; ++ringNumber) {
            const std::set<std::int32_t> inner = near;
            for (const std::int32_t v : inner) {
                IndexList ring;
                GetVertexNeighbours(m.pm.mesh, v, ring);
                near.insert(ring.begin(), ring.end());
            }
        }
        for (std::int32_t v = 0; v < m.pm.mesh.vertexCount(); ++v) {
            EXPECT_EQ(m.pm.symmetrySlaves.Test(v), m.position(v).x > 0 && near.count(v) == 0) << v;
            EXPECT_EQ(m.pm.symmetryInterior.Test(v), near.count(v) == 0) << v;
            EXPECT_EQ(m.pm.symmetryPaired.Test(v), v != loner) << v;
        }
    }
}

TEST(BuildSymmetrySlaves, NeverIncludeAVertexOnThePlane) {
    Mirrored m;
    m.pm.mesh.symmetryCache.secondSide.Resize(0, true);
    m.pm.mesh.symmetryCache.secondSide.Resize(m.pm.mesh.vertexCount(), true);
    BuildSymmetrySlaves(m.pm);
    for (std::int32_t row = 0; row < 5; ++row)
        EXPECT_FALSE(m.pm.symmetrySlaves.Test(at(0, row)));
    EXPECT_TRUE(m.pm.symmetrySlaves.Test(at(1, 1)));
}

TEST(BuildSymmetrySlaves, AcceptsAnEmptyMesh) {
    ProgressiveMesh pm;
    BuildSymmetrySlaves(pm);
    EXPECT_EQ(pm.symmetrySlaves.count(), 0);
}

TEST(CheckSymmetricCollapse, ACollapseOnOneSideIsMirrored) {
    Mirrored m;
    ASSERT_TRUE(m.check(at(2, 2), at(3, 2)));
    EXPECT_EQ(m.mirror.mirrorRemoved, m.image(at(2, 2)));
    EXPECT_EQ(m.mirror.mirrorKept, m.image(at(3, 2)));
    EXPECT_TRUE(m.mirror.doMirror);
    EXPECT_FALSE(m.mirror.mirrorOntoPlane);
    EXPECT_FALSE(m.mirror.positionFixed);
    EXPECT_EQ(m.evaluation.position.x, 0.25F);  // unchanged
    KeptQuadrics<PlainMetric> quadrics;
    const EdgeEvaluation own =
        evaluateCollapse(m.pm.mesh, m.pm, m.mirror.mirrorRemoved, m.mirror.mirrorKept, quadrics);
    EXPECT_EQ(m.mirror.evaluation.cost, own.cost);
    EXPECT_EQ(m.mirror.evaluation.position.x, own.position.x);
    EXPECT_LT(own.position.x, 0.0F);
}

TEST(CheckSymmetricCollapse, OntoThePlaneBothMoveToOnePositionOnIt) {
    Mirrored m;
    ASSERT_TRUE(m.check(at(1, 2), at(0, 2)));
    EXPECT_TRUE(m.mirror.doMirror);
    EXPECT_TRUE(m.mirror.mirrorOntoPlane);
    EXPECT_TRUE(m.mirror.positionFixed);
    EXPECT_EQ(m.mirror.mirrorKept, at(0, 2));
    EXPECT_EQ(m.evaluation.position.x, 0.0F);
    EXPECT_EQ(m.evaluation.position.y, 2.0F);
    EXPECT_EQ(m.evaluation.position.z, 3.0F);
    EXPECT_EQ(m.mirror.evaluation.position.x, 0.0F);
    EXPECT_EQ(m.mirror.evaluation.position.z, 3.0F);
}

TEST(CheckSymmetricCollapse, OntoAnInfinitePlaneBothMoveToTheKeptVertex) {
    // If a coordinate of some vertex is infinite, so is the centre of the box.
    Mirrored m;
    auto& cache = m.pm.mesh.symmetryCache;
    buildTransforms(cache.planeProjection, cache.mirrorTransform, {1, 0, 0},
                    {0, std::numeric_limits<float>::infinity(), 0});
    ASSERT_TRUE(m.check(at(1, 2), at(0, 2)));
    EXPECT_TRUE(m.mirror.positionFixed);
    const FloatVec3 kept = m.position(at(0, 2));
    for (const EdgeEvaluation& evaluation : {m.evaluation, m.mirror.evaluation}) {
        EXPECT_EQ(evaluation.position.x, kept.x);
        EXPECT_EQ(evaluation.position.y, kept.y);
        EXPECT_EQ(evaluation.position.z, kept.z);
    }
}

TEST(CheckSymmetricCollapse, WithinThePlaneOneCollapseIsEnough) {
    Mirrored m;
    ASSERT_TRUE(m.check(at(0, 2), at(0, 3)));
    EXPECT_FALSE(m.mirror.doMirror);
    EXPECT_TRUE(m.mirror.mirrorOntoPlane);
    EXPECT_EQ(m.evaluation.position.x, 0.0F);
}

TEST(CheckSymmetricCollapse, AVertexOnThePlaneCollapsesOnlyWithinIt) {
    Mirrored m;
    EXPECT_FALSE(m.check(at(0, 2), at(1, 2)));
    EXPECT_EQ(m.evaluation.position.x, 0.25F);
}

TEST(CheckSymmetricCollapse, AVertexMayCollapseOntoItsMirrorImage) {
    // Two adjacent columns without a vertex on the plane: 0 and 1, 2 and 3 and so on are pairs.
    ProgressiveMesh pm;
    test::prepare(pm, test::grid(1, 4));
    auto& cache = pm.mesh.symmetryCache;
    cache.pairing = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8};
    buildTransforms(cache.planeProjection, cache.mirrorTransform, {1, 0, 0}, {0.5F, 0, 0});
    EdgeEvaluation evaluation{1, {0.75F, 2, 3}, {}};
    SymmetricCollapse mirror;
    KeptQuadrics<PlainMetric> quadrics;
    EXPECT_TRUE(CheckSymmetricCollapse(pm, 4, 5, evaluation, mirror, quadrics));
    EXPECT_FALSE(mirror.doMirror);
    EXPECT_TRUE(mirror.mirrorOntoPlane);
    EXPECT_EQ(evaluation.position.x, 0.5F);
}

TEST(CheckSymmetricCollapse, APairedVertexMayNotCollapseOntoAnUnpairedOne) {
    Mirrored m;
    m.unpair(at(3, 2));
    EXPECT_FALSE(m.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(m.mirror.doMirror);
}

TEST(CheckSymmetricCollapse, AnUnpairedVertexCollapsesExactlyOntoAPairedOne) {
    Mirrored m;
    m.unpair(at(2, 2));
    ASSERT_TRUE(m.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(m.mirror.doMirror);
    EXPECT_EQ(m.evaluation.position.x, m.position(at(3, 2)).x);
    EXPECT_EQ(m.evaluation.position.y, m.position(at(3, 2)).y);
    EXPECT_EQ(m.evaluation.position.z, m.position(at(3, 2)).z);
}

TEST(CheckSymmetricCollapse, TwoUnpairedVerticesCollapseAlone) {
    Mirrored m;
    m.unpair(at(2, 2));
    m.unpair(at(3, 2));
    ASSERT_TRUE(m.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(m.mirror.doMirror);
    EXPECT_EQ(m.evaluation.position.x, 0.25F);
}

TEST(CheckSymmetricCollapse, AMirrorImageThatIsGoneOrNotAdjacentIsLeftOut) {
    Mirrored m;
    m.pm.mesh.vertexActive.Clear(m.image(at(2, 2)));
    EXPECT_TRUE(m.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(m.mirror.doMirror);

    Mirrored apart;
    auto& pairing = apart.pm.mesh.symmetryCache.pairing;
    pairing[static_cast<std::size_t>(at(3, 2))] = apart.image(at(4, 4));
    EXPECT_TRUE(apart.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(apart.mirror.doMirror);
}

TEST(CheckSymmetricCollapse, AMirrorImageThatMayNotCollapseIsLeftOut) {
    Mirrored m;
    m.pm.BorderMode = BORDERMODE_FREEZE;
    m.pm.mesh.borderVertices.Set(m.image(at(3, 2)));
    EXPECT_TRUE(m.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(m.mirror.doMirror);
}

TEST(CheckSymmetricCollapse, FewerThanEightTrianglesRefuseMirroredPairs) {
    Mirrored m;
    m.pm.mesh.numActiveTriangles = 8;
    EXPECT_TRUE(m.check(at(2, 2), at(3, 2)));
    m.pm.mesh.numActiveTriangles = 7;
    EXPECT_FALSE(m.check(at(2, 2), at(3, 2)));
    EXPECT_FALSE(m.check(at(1, 2), at(0, 2)));
    EXPECT_FALSE(m.check(at(0, 2), at(0, 3)));
    // An unpaired vertex is decided before the count is checked.
    m.unpair(at(2, 2));
    EXPECT_TRUE(m.check(at(2, 2), at(3, 2)));
}

TEST(CheckSymmetricCollapse, WithColoursTheMirrorImageGetsItsOwnColour) {
    Mirrored m;
    test::addColors(m.pm.mesh, [](const FloatVec3& p) {
        return test::packColor(static_cast<std::uint32_t>(100 + 10 * p.x), 50, 60);
    });
    m.pm.colorScale = 0.01;
    EdgeEvaluation evaluation;
    KeptQuadrics<ColorMetric> quadrics;
    ASSERT_TRUE(CheckSymmetricCollapse(m.pm, at(2, 2), at(3, 2), evaluation, m.mirror, quadrics));
    ASSERT_TRUE(m.mirror.doMirror);
    EXPECT_LT(m.mirror.evaluation.color[0], 100);
    EXPECT_NEAR(m.mirror.evaluation.color[1], 50, 1);
    // On the plane, it takes the colour of the first collapse.
    evaluation.color = {1, 2, 3};
    ASSERT_TRUE(CheckSymmetricCollapse(m.pm, at(1, 2), at(0, 2), evaluation, m.mirror, quadrics));
    EXPECT_EQ(m.mirror.evaluation.color, (std::array<std::uint8_t, 3>{1, 2, 3}));
}

}  // namespace
}  // namespace korvalite::core
