// SPDX-License-Identifier: MIT
//
// Finite in, finite out: whatever a mesh contains, no run moves a vertex to a position that is not
// finite. Coordinates that are not finite do not change and do not spread.
#include "property/run_cases.h"

#include "support/level_walk.h"
#include "support/mesh_validator.h"
#include "support/thread_run.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace korvalite::core::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kLargest = std::numeric_limits<float>::max();

// How a mesh is spoiled.
enum class Spoilt { NaNs, Infinities, HugeAndTiny, Folded, AllOfThem };
constexpr std::array kSpoilt{Spoilt::NaNs, Spoilt::Infinities, Spoilt::HugeAndTiny, Spoilt::Folded,
                             Spoilt::AllOfThem};
constexpr std::array kSpoiltNames{"NaNs", "Infinities", "HugeAndTiny", "Folded", "AllOfThem"};

float spoiltCoordinate(Random& random, Spoilt how) {
    constexpr std::array kExtremes{1e-45F, 1e-38F, 1e-30F, 1e-20F, 1e13F, 1e19F, 1e30F, kLargest};
    const float sign = random.onceIn(2) ? -1.0F : 1.0F;
    switch (how) {
    case Spoilt::NaNs: return kNaN;
    case Spoilt::Infinities: return sign * kInfinity;
    case Spoilt::HugeAndTiny: return sign * kExtremes[random.below(kExtremes.size())];
    case Spoilt::Folded: return std::round(random.around(2));
    default: return spoiltCoordinate(random, kSpoilt[random.below(4)]);
    }
}

DMesh randomSurface(Random& random) {
    switch (random.below(4)) {
    case 0: return sphere(2);
    case 1: return grid(3 + random.below(6), 3 + random.below(6), hills);
    case 2: return torus(4 + random.below(6), 4 + random.below(4));
    default: return withMirrorImage(grid(2 + random.below(4), 2 + random.below(4), hills), 0);
    }
}

DMesh spoiltMesh(Random& random, Spoilt how) {
    DMesh mesh = randomSurface(random);
    if (random.onceIn(2)) jitter(mesh, 0.1F, random.word());
    const std::uint32_t oneIn = 1 + random.below(how == Spoilt::Folded ? 3 : 40);
    for (VertexRecord& vertex : mesh.vertices) {
        for (float* coordinate : {&vertex.x, &vertex.y, &vertex.z}) {
            if (random.onceIn(oneIn)) *coordinate = spoiltCoordinate(random, how);
        }
    }
    recomputeBoundingBox(mesh);
    return mesh;
}

void addRandomAttributes(DMesh& mesh, Random& random, bool colored) {
    if (colored) {
        const std::uint32_t shades = random.onceIn(2) ? 2 : 256;
        for (std::size_t v = 0; v < mesh.vertices.size(); ++v)
            mesh.vertexColors.push_back(random.below(shades) * 0x7F3F01U);
    }
    if (random.onceIn(3)) addMask(mesh, [&](const FloatVec3&) { return 255 - random.below(256); });
    if (random.onceIn(3)) addCornerUVs(mesh, [&](std::uint32_t) { return random.below(2); });
}

MeshPtr randomRun(Random& random, Spoilt how, bool colored, std::int32_t driver) {
    DMesh mesh = spoiltMesh(random, how);
    addRandomAttributes(mesh, random, colored);
    MeshPtr pm = prepared(mesh);
    pm->MemSpeedTradeOff = driver;
    pm->NumThread = 2;
    pm->DoReorder = false;
    pm->ProtectTopology = !random.onceIn(3);
    pm->AvoidNormalReverse = !random.onceIn(3);
    pm->UseAreaWeighting = random.onceIn(2);
    pm->BorderMode = random.between(BORDER_MODE_NONE, BORDERMODE_FREEZE);
    pm->tryStoreDoubleMat = !random.onceIn(4);
    pm->colorWeight = random.onceIn(3) ? 0.0F : 100.0F * random.unit();
    if (random.onceIn(3)) askForSymmetry(*pm, random.between(0, 2));
    targetPercent(*pm, 60 * random.unit());
    return pm;
}

std::array<std::uint32_t, 3> bitsOf(const VertexRecord& vertex) {
    return {std::bit_cast<std::uint32_t>(vertex.x), std::bit_cast<std::uint32_t>(vertex.y),
            std::bit_cast<std::uint32_t>(vertex.z)};
}

void expectFiniteWhereItWas(const VertexRecords& before, const VertexRecords& after) {
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t v = 0; v < before.size(); ++v) {
        if (isFinite(before[v].position())) {
            EXPECT_TRUE(isFinite(after[v].position())) << "vertex " << v;
        } else {
            EXPECT_EQ(bitsOf(before[v]), bitsOf(after[v])) << "vertex " << v;
        }
    }
}

// How the mesh is spoilt, whether it has colours, and the driver.
using Param = std::tuple<std::size_t, bool, std::int32_t>;

std::string nameOf(const testing::TestParamInfo<Param>& row) {
    const auto& [how, colored, driver] = row.param;
    return kSpoiltNames[how] + std::string(colored ? "Colored" : "Plain") + std::to_string(driver);
}

class FiniteNumbers : public testing::TestWithParam<Param> {
protected:
    JobFolder job;
    Watchdog watchdog{"FiniteNumbers"};
};

INSTANTIATE_TEST_SUITE_P(
    Case, FiniteNumbers,
    testing::Combine(testing::Range(std::size_t{0}, kSpoilt.size()), testing::Bool(),
                     testing::Values(MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_LOW_MEM,
                                     MEMSPEED_TRADEOFF_LOW_MEM_MT, MEMSPEED_TRADEOFF_MELAX)),
    nameOf);

TEST_P(FiniteNumbers, StayFiniteAndOthersDoNotSpread) {
    const auto& [how, colored, driver] = GetParam();
    std::uint32_t removed = 0;
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const MeshPtr pm = randomRun(random, kSpoilt[how], colored, driver);
        const VertexRecords before = pm->mesh.vertices;
        ASSERT_EQ(RunDecimation(*pm), 0);
        EXPECT_TRUE(isSound(pm->mesh));
        expectFiniteWhereItWas(before, pm->mesh.vertices);
        removed += static_cast<std::uint32_t>(before.size()) - pm->mesh.numActiveVertices;
        markAllApplied(*pm);
        goAllUp(*pm);
        expectFiniteWhereItWas(before, pm->mesh.vertices);
        if (HasFailure()) return;
    }
    EXPECT_GT(removed, 5U);
}

// All vertices are in one plane and have one colour: the blocks are singular except for rounding.
// Vertices change places and triangles fold, so that no run is like another.
DMesh flatMeshOfOneColor(std::uint32_t seed) {
    Random random(seed);
    DMesh mesh = grid(6, 6);
    for (VertexRecord& vertex : mesh.vertices) {
        const float dx = std::round(random.around(1.4F));
        const float dy = std::round(random.around(1.4F));
        vertex.setPosition({100 * (vertex.x + dx), 100 * (vertex.y + dy), 60});
    }
    recomputeBoundingBox(mesh);
    const std::uint32_t color = random.word();
    addColors(mesh, [color](const FloatVec3&) { return color; });
    return mesh;
}

class FlatAndOfOneColor : public DecimationTest {};

// Out of thirty thousand seeds, those that once led to infinity.
TEST_F(FlatAndOfOneColor, StaysFinite) {
    for (const std::uint32_t seed :
         {1538U, 7230U, 8362U, 9027U, 10163U, 10225U, 10702U, 14650U, 21878U, 23494U, 24132U}) {
        const DMesh mesh = flatMeshOfOneColor(seed);
        const MeshPtr pm =
            decimatedBy(MEMSPEED_TRADEOFF_LOW_MEM, mesh, [](ProgressiveMesh& settings) {
                settings.AvoidNormalReverse = false;
                settings.colorWeight = 50;
            });
        SCOPED_TRACE(seed);
        expectFiniteWhereItWas(mesh.vertices, pm->mesh.vertices);
        EXPECT_LT(pm->mesh.numActiveVertices, mesh.numActiveVertices);
    }
}

}  // namespace
}  // namespace korvalite::core::test
