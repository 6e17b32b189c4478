// SPDX-License-Identifier: MIT
#include "metric/metric_rules.h"

#include "progressive/progressive_mesh.h"

#include <gtest/gtest.h>

#include <limits>

namespace korvalite::core {
namespace {

TEST(SymmetryPlaneQuadric, IsThePlaneTimesTwoHundredInAllThreeForms) {
    ProgressiveMesh pm;
    pm.mesh.symmetryCache.planeNormal = {1, 0, 0};
    pm.mesh.symmetryCache.planePoint = {3, 5, 7};
    pm.symmetryPlaneQuadric = BuildSymmetryPlaneQuadric(pm.mesh.symmetryCache);
    const SymmetryPlaneQuadric& plane = pm.symmetryPlaneQuadric;
    EXPECT_EQ(plane.asDouble.q, (std::array<double, 10>{200, 0, 0, 0, 0, 0, -600, 0, 0, 1800}));
    EXPECT_EQ(plane.asFloat.q, (std::array<float, 10>{200, 0, 0, 0, 0, 0, -600, 0, 0, 1800}));
    EXPECT_EQ(plane.asColor.A, (std::array<double, 6>{200, 0, 0, 0, 0, 0}));
    EXPECT_EQ(plane.asColor.b1, (std::array<double, 3>{-600, 0, 0}));
    EXPECT_EQ(plane.asColor.c, 1800.0);
    EXPECT_EQ(plane.asColor.C, 1.0);
}

TEST(SymmetryPlaneQuadric, ComputesTheOffsetInFloatsAndTheSlotsInDoubles) {
    ProgressiveMesh pm;
    const FloatVec3 n{0.6F, 0.8F, 0.1F};
    const FloatVec3 p{1.1F, 2.3F, 3.7F};
    pm.mesh.symmetryCache.planeNormal = n;
    pm.mesh.symmetryCache.planePoint = p;
    pm.symmetryPlaneQuadric = BuildSymmetryPlaneQuadric(pm.mesh.symmetryCache);
    const float offset = -((n.x * p.x + n.y * p.y) + n.z * p.z);
    const double e = static_cast<double>(offset);
    const double a = static_cast<double>(n.x);
    const double b = static_cast<double>(n.y);
    const auto& q = pm.symmetryPlaneQuadric.asDouble.q;
    EXPECT_EQ(q[1], a * b * 200.0);
    EXPECT_EQ(q[6], a * e * 200.0);
    EXPECT_EQ(q[9], e * e * 200.0);
    EXPECT_EQ(pm.symmetryPlaneQuadric.asFloat.q[9], static_cast<float>(e * e * 200.0));
}

TEST(SymmetryPlaneQuadric, WithoutAPlaneIsZero) {
    ProgressiveMesh pm;
    pm.symmetryPlaneQuadric = BuildSymmetryPlaneQuadric(pm.mesh.symmetryCache);
    EXPECT_EQ(evaluateQuadric(pm.symmetryPlaneQuadric.asDouble, {1, 2, 3}), 0.0);
    pm.mesh.symmetryCache.planePoint.x = std::numeric_limits<float>::quiet_NaN();
    pm.symmetryPlaneQuadric = BuildSymmetryPlaneQuadric(pm.mesh.symmetryCache);
}

}  // namespace
}  // namespace korvalite::core
