// SPDX-License-Identifier: MIT
//
// Several runs on one object, by all drivers in every order. Each run starts from what the previous
// ones left: dead triangles and vertices, UVs as read or welded, a mesh at any level.
#include "property/chart_cases.h"
#include "property/run_cases.h"

#include "support/level_walk.h"
#include "support/mesh_validator.h"
#include "support/thread_run.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace korvalite::core::test {
namespace {

using Order = std::array<std::int32_t, 4>;

// In these orders, every driver follows every other, both directly and with another one in between.
std::vector<Order> allOrders() {
    Order order{MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_LOW_MEM,
                MEMSPEED_TRADEOFF_LOW_MEM_MT, MEMSPEED_TRADEOFF_MELAX};
    std::vector<Order> orders;
    do {
        orders.push_back(order);
    } while (std::next_permutation(order.begin(), order.end()));
    return orders;
}

std::string textOf(const Order& order) {
    std::string text;
    for (const std::int32_t driver : order)
        text += std::to_string(driver) + ' ';
    return text;
}

struct OrderCase {
    std::string name;
    std::function<DMesh()> mesh;
    std::function<void(ProgressiveMesh&)> set = [](ProgressiveMesh&) {};
    Degenerate degenerate = Degenerate::Refused;
};
void PrintTo(const OrderCase& orderCase, std::ostream* out) {
    *out << orderCase.name;
}

DMesh smallHills() {
    DMesh mesh = grid(9, 7, hills);
    jitter(mesh, 0.15F, 3);
    return mesh;
}

void addTwoCharts(DMesh& mesh) {
    addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle / 2 % 9 < 4 ? 0 : 1; });
}

DMesh hillsWithAll() {
    DMesh mesh = smallHills();
    addTwoCharts(mesh);
    addColors(mesh, redOrBlue);
    addMask(mesh, [](const FloatVec3& p) { return p.x < 2 ? 3 : 200; });
    return mesh;
}

DMesh mirroredHillsWithAll() {
    DMesh mesh = withMirrorImage(grid(5, 6, hills), 0);
    addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle % 12 < 6 ? 0 : 1; });
    addColors(mesh, [](const FloatVec3& p) { return packColor(p.y < 3 ? 250 : 10, 20, 90); });
    addMask(mesh, [](const FloatVec3& p) { return p.y < 2 ? 5 : 120; });
    return mesh;
}

DMesh dirtyHills() {
    DMesh mesh = smallHills();
    const Faces dirt{{12, 12, 13}, {30, 31, 41}, {30, 31, 41}, {44, 44, 44}};
    for (const auto& face : dirt)
        mesh.triangles.insert(mesh.triangles.end(), face.begin(), face.end());
    completeMesh(mesh);
    addTwoCharts(mesh);
    addColors(mesh, redOrBlue);
    return mesh;
}

std::vector<OrderCase> orderCases() {
    const auto mirrored = [](ProgressiveMesh& pm) { askForSymmetry(pm, 0); };
    return {
        {"Closed", [] { return unevenSphere(2); }},
        {"Charts",
         [] {
             DMesh mesh = smallHills();
             addTwoCharts(mesh);
             return mesh;
         }},
        {"ClosedWithColorsAndUVs",
         [] {
             DMesh mesh = colorfulBall();
             addCornerUVs(mesh);
             return mesh;
         }},
        {"HillsWithAll", hillsWithAll},
        {"FrozenWithAll", hillsWithAll,
         [](ProgressiveMesh& pm) { pm.BorderMode = BORDERMODE_FREEZE; }},
        {"WithoutArrays", hillsWithAll,
         [](ProgressiveMesh& pm) { pm.tryStoreDoubleMat = pm.tryStoreFloatMat = false; }},
        {"MirroredWithAll", mirroredHillsWithAll, mirrored},
        {"MirroredBall", [] { return unevenMirrored(0, 2); }, mirrored},
        {"Dirty", dirtyHills, [](ProgressiveMesh&) {}, Degenerate::Allowed},
    };
}

// The case, ProtectTopology and DoReorder.
using Param = std::tuple<OrderCase, bool, bool>;

std::string nameOf(const testing::TestParamInfo<Param>& row) {
    const auto& [orderCase, topology, reorder] = row.param;
    return orderCase.name + (topology ? "" : "TornApart") + (reorder ? "Reordered" : "");
}

class EveryOrder : public testing::TestWithParam<Param> {
protected:
    const OrderCase& orderCase() const { return std::get<0>(GetParam()); }

    MeshPtr ready() const {
        MeshPtr pm = prepared(orderCase().mesh());
        pm->ProtectTopology = std::get<1>(GetParam());
        pm->DoReorder = std::get<2>(GetParam());
        pm->NumThread = 2;
        orderCase().set(*pm);
        return pm;
    }

    void expectSound(const DMesh& mesh) const {
        EXPECT_TRUE(isSound(mesh, orderCase().degenerate));
        for (const std::uint32_t uv : mesh.indicesUV)
            ASSERT_LT(uv, mesh.coordsUV.size());
    }

    void run(ProgressiveMesh& pm, std::int32_t driver) const {
        const auto before = surfaceOf(pm.mesh, UVs::Ignored);
        pm.MemSpeedTradeOff = driver;
        pm.TargetNumItem = pm.mesh.numActiveVertices * 5 / 6;
        ASSERT_EQ(RunDecimation(pm), 0);
        expectSound(pm.mesh);
        // The Melax driver records no splits.
        if (driver != MEMSPEED_TRADEOFF_MELAX) walkLevels(pm, before);
    }

    // Goes to the top and back, and then half way up for the next run.
    void walkLevels(ProgressiveMesh& pm, const std::vector<Words>& before) const {
        markAllApplied(pm);
        const auto after = surfaceOf(pm.mesh, UVs::Ignored);
        const std::uint32_t fewest = pm.mesh.numActiveVertices;
        goAllUp(pm);
        expectSound(pm.mesh);
        EXPECT_TRUE(surfaceOf(pm.mesh, UVs::Ignored) == before);
        const std::uint32_t most = pm.mesh.numActiveVertices;
        goAllDown(pm);
        expectSound(pm.mesh);
        EXPECT_TRUE(surfaceOf(pm.mesh, UVs::Ignored) == after);
        updateMeshAtLevel(pm, static_cast<std::int32_t>((fewest + most) / 2));
    }

    JobFolder job;
    Watchdog watchdog{"EveryOrder"};
};

INSTANTIATE_TEST_SUITE_P(Case, EveryOrder,
                         testing::Combine(testing::ValuesIn(orderCases()), testing::Bool(),
                                          testing::Bool()),
                         nameOf);

TEST_P(EveryOrder, LeavesASoundMeshWithReversibleLevels) {
    for (const Order& order : allOrders()) {
        const MeshPtr pm = ready();
        for (const std::int32_t driver : order) {
            SCOPED_TRACE(textOf(order) + "at " + std::to_string(driver));
            run(*pm, driver);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_LT(pm->mesh.numActiveVertices, static_cast<std::uint32_t>(pm->mesh.vertexCount()));
    }
}

}  // namespace
}  // namespace korvalite::core::test
