// SPDX-License-Identifier: MIT
//
// What a frozen border and a mask do to a run: which vertices do not change, and where the
// triangles end up.
#include "property/kept_vertices.h"
#include "property/run_cases.h"

#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace korvalite::core::test {
namespace {

constexpr std::uint32_t kSeeds[] = {1, 2, 3};

class BorderAndMask : public DecimationTest {
protected:
    static DMesh coloredHills(std::uint32_t seed) {
        DMesh mesh = unevenHills(seed);
        addColors(mesh, redOrBlue);
        return mesh;
    }
    // The number of active vertices with a positive x, and with a negative one.
    static std::pair<int, int> sidesOf(const DMesh& mesh) {
        std::pair<int, int> sides{0, 0};
        for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
            if (!mesh.vertexActive.Test(v)) continue;
            const float x = mesh.vertices[static_cast<std::size_t>(v)].x;
            if (x > 0.1F) ++sides.first;
            if (x < -0.1F) ++sides.second;
        }
        return sides;
    }
};

TEST_F(BorderAndMask, AFrozenBorderKeepsItsVerticesBitForBit) {
    for (const std::uint32_t seed : kSeeds) {
        for (const DMesh& original : {unevenHills(seed), coloredHills(seed)}) {
            expectBorderKept(*decimatedInPlace(original, 0, freezeBorder), original);
        }
    }
}

TEST_F(BorderAndMask, AProtectedBorderIsDecimatedToo) {
    const DMesh original = unevenHills(1);
    const MeshPtr pm = decimatedInPlace(original, 10);
    std::uint32_t left = 0;
    for (const std::int32_t v : borderOf(original))
        left += pm->mesh.vertexActive.Test(v) ? 1U : 0U;
    EXPECT_LT(left, 60U);
}

TEST_F(BorderAndMask, AMaskOfZeroProtectsItsVertices) {
    for (const std::uint32_t seed : kSeeds) {
        for (const bool colored : {false, true}) {
            for (const int axis : {-1, 0}) {
                const DMesh original = maskedBelow(axis, seed, colored);
                const MeshPtr pm = decimatedInPlace(original, 0, [&](ProgressiveMesh& settings) {
                    if (axis >= 0) askForSymmetry(settings, axis);
                });
                expectMaskedKept(*pm, original);
            }
        }
    }
}

TEST_F(BorderAndMask, AUniformMaskInAFileChangesNothing) {
    const std::string path = job.folder() / u8"mesh.Vok";
    for (const std::uint32_t seed : kSeeds) {
        const DMesh plain = unevenSphere(seed);
        const MeshPtr expected = decimatedInPlace(plain, 12);
        for (const int value : {0, 1, 7, 100, 254, 255}) {
            DMesh masked = plain;
            addMask(masked, [&](const FloatVec3&) { return value; });
            ASSERT_TRUE(exportDMesh(path.c_str(), masked));
            DMesh loaded;
            ASSERT_TRUE(importDMesh(path.c_str(), loaded));
            dropUniformMask(loaded);
            const MeshPtr pm = decimatedInPlace(loaded, 12);
            EXPECT_TRUE(arraysOf(pm->mesh, Part::All) == arraysOf(expected->mesh, Part::All))
                << value;
        }
    }
}

// The factor of 255 is 1, so even the costs are the same bit for bit.
TEST_F(BorderAndMask, AMaskOf255ChangesNothing) {
    for (const std::uint32_t seed : kSeeds) {
        const DMesh plain = unevenSphere(seed);
        DMesh masked = plain;
        addMask(masked, [](const FloatVec3&) { return 255; });
        const MeshPtr without = decimatedInPlace(plain, 12);
        const MeshPtr with = decimatedInPlace(masked, 12);
        with->mesh.maskValues.clear();
        EXPECT_TRUE(arraysOf(with->mesh, Part::All) == arraysOf(without->mesh, Part::All));
    }
}

// The lower a mask value, the costlier its edges: triangles survive where the mask is low.
TEST_F(BorderAndMask, TrianglesSurviveWhereTheMaskIsLow) {
    for (const std::uint32_t seed : kSeeds) {
        const DMesh plain = unevenSphere(seed);
        const auto [plainRight, plainLeft] = sidesOf(decimatedInPlace(plain, 20)->mesh);
        int before = plainLeft;
        // From weak to strong: factors of 3.75, 13.25 and 118.25, compared with 1.
        for (const int low : {200, 10, 4}) {
            DMesh masked = plain;
            addMask(masked, [&](const FloatVec3& p) { return p.x < 0 ? low : 255; });
            const MeshPtr pm = decimatedInPlace(masked, 20);
            const auto [right, left] = sidesOf(pm->mesh);
            EXPECT_GT(left, before) << low;
            EXPECT_LT(right, plainRight) << low;
            before = left;
        }
    }
}

TEST_F(BorderAndMask, ARealMaskKeepsMoreVerticesWhereItIsLow) {
    const DMesh masked = sample("fish-masked.Vok");
    DMesh plain = masked;
    plain.maskValues.clear();
    const MeshPtr with = decimatedInPlace(masked, 15);
    const MeshPtr without = decimatedInPlace(plain, 15);
    const auto leftBetween = [&](const DMesh& mesh, int low, int high) {
        int count = 0;
        for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
            const int value = masked.maskValues[static_cast<std::size_t>(v)];
            count += mesh.vertexActive.Test(v) && low <= value && value <= high ? 1 : 0;
        }
        return count;
    };
    EXPECT_TRUE(isClosedManifold(with->mesh));
    EXPECT_EQ(with->mesh.numActiveVertices, without->mesh.numActiveVertices);
    EXPECT_GT(leftBetween(with->mesh, 0, 59), leftBetween(without->mesh, 0, 59) * 5 / 4);
    EXPECT_LT(leftBetween(with->mesh, 200, 255), leftBetween(without->mesh, 200, 255) * 4 / 5);
}

}  // namespace
}  // namespace korvalite::core::test
