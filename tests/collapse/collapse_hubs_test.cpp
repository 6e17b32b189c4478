// SPDX-License-Identifier: MIT
//
// The normal test of a collapse where many triangles meet at one vertex and where everything is
// flat: it must refuse exactly what a check of every triangle of the mesh refuses.
#include "collapse/collapse.h"

#include "support/mesh_validator.h"
#include "support/prepared_mesh.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace korvalite::core {
namespace {

// A hub, vertex 0, with `rim` vertices around it and a second row of triangles outside: rim vertex
// i is 1 + i, and the vertex outside it is 1 + rim + i. The coordinates are whole, so that
// triangles without area and triangles that keep their direction are frequent.
DMesh hub(std::uint32_t rim, float height) {
    test::Points points{{0, 0, height}};
    for (const float radius : {40.0F, 80.0F}) {
        for (std::uint32_t i = 0; i < rim; ++i) {
            const double angle = 2 * 3.14159265358979 * i / rim;
            points.push_back({std::round(radius * static_cast<float>(std::cos(angle))),
                              std::round(radius * static_cast<float>(std::sin(angle))), 0});
        }
    }
    test::Faces faces;
    for (std::uint32_t i = 0; i < rim; ++i) {
        const std::uint32_t inner = 1 + i;
        const std::uint32_t next = 1 + (i + 1) % rim;
        faces.push_back({0, inner, next});
        faces.push_back({inner, inner + rim, next + rim});
        faces.push_back({inner, next + rim, next});
    }
    return test::buildMesh(points, faces);
}

FloatVec3 normalOf(const std::array<FloatVec3, 3>& points) {
    return cross(points[1] - points[0], points[2] - points[0]);
}

// Checks every triangle with one of the two vertices but not both.
bool anyTurnsOver(const DMesh& mesh, std::uint32_t v, std::uint32_t w, const FloatVec3& position) {
    for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
        std::array<FloatVec3, 3> before;
        std::array<FloatVec3, 3> after;
        bool hasV = false;
        bool hasW = false;
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint32_t vertex = mesh.triangles[t + k];
            hasV = hasV || vertex == v;
            hasW = hasW || vertex == w;
            before[k] = mesh.vertices[vertex].position();
            after[k] = vertex == v || vertex == w ? position : before[k];
        }
        if (hasV != hasW && dot(normalOf(after), normalOf(before)) < 0) return true;
    }
    return false;
}

class HubsAndFlatGround : public testing::Test {
protected:
    // Collapses v onto w and undoes it.
    void tryCollapse(std::int32_t v, std::int32_t w, const FloatVec3& position) {
        const bool refused = anyTurnsOver(pm_.mesh, static_cast<std::uint32_t>(v),
                                          static_cast<std::uint32_t>(w), position);
        CollapseRecord record;
        const CollapseResult result =
            CollapseEdge(pm_, v, w, position, record, scratch_, Alone(pm_));
        ASSERT_EQ(result, refused ? CollapseResult::Refused : CollapseResult::Done)
            << v << " onto " << w << " at " << position.x << ' ' << position.y << ' ' << position.z;
        refused_ += refused ? 1 : 0;
        done_ += refused ? 0 : 1;
        if (!refused) UndoCollapse(pm_.mesh, v, w, record, scratch_, Alone(pm_));
    }
    // Tries collapses along random edges, to random places near them.
    void tryMany(DMesh mesh, std::uint32_t seed) {
        test::prepare(pm_, std::move(mesh));
        pm_.ProtectTopology = false;
        test::Random random(seed);
        for (int i = 0; i < 2000 && !HasFatalFailure(); ++i) {
            const std::uint32_t corner = 3 * random.below(pm_.mesh.numActiveTriangles);
            const std::uint32_t k = random.below(3);
            const auto v = static_cast<std::int32_t>(pm_.mesh.triangles[corner + k]);
            const auto w = static_cast<std::int32_t>(pm_.mesh.triangles[corner + (k + 1) % 3]);
            tryCollapse(v, w, placeNear(v, w, random));
        }
        EXPECT_GT(refused_, 100);
        EXPECT_GT(done_, 100);
        EXPECT_TRUE(test::cornerListsAreSound(pm_.mesh));
    }

private:
    FloatVec3 placeNear(std::int32_t v, std::int32_t w, test::Random& random) const {
        const FloatVec3 from = pm_.mesh.vertices[static_cast<std::size_t>(v)].position();
        const FloatVec3 to = pm_.mesh.vertices[static_cast<std::size_t>(w)].position();
        if (random.onceIn(3)) return to;
        if (random.onceIn(2)) {
            return {(from.x + to.x) / 2, (from.y + to.y) / 2, (from.z + to.z) / 2};
        }
        return to + FloatVec3{std::round(random.around(20)), std::round(random.around(20)), 0};
    }

    ProgressiveMesh pm_;
    CollapseScratch scratch_;
    int refused_ = 0;
    int done_ = 0;
};

TEST_F(HubsAndFlatGround, AFlatHubRefusesFlips) {
    tryMany(hub(200, 0), 1);
}

TEST_F(HubsAndFlatGround, APointedHubRefusesFlips) {
    tryMany(hub(200, 30), 2);
}

TEST_F(HubsAndFlatGround, AFlatGridRefusesFlips) {
    DMesh flat = test::grid(12, 12);
    for (VertexRecord& vertex : flat.vertices) {
        vertex.x *= 10;
        vertex.y *= 10;
    }
    tryMany(flat, 3);
}

TEST_F(HubsAndFlatGround, AHubWithDoubledTrianglesRefusesFlips) {
    DMesh doubled = hub(60, 10);
    for (std::size_t i = 0; i < 30; ++i)
        doubled.triangles.push_back(doubled.triangles[i]);
    test::completeMesh(doubled);
    tryMany(doubled, 4);
}

}  // namespace
}  // namespace korvalite::core
