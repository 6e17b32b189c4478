// SPDX-License-Identifier: MIT
//
// The effect of UseVtxColorsCoef: the higher it is, the less a run blurs the boundary between two
// colours.
#include "property/run_cases.h"

#include "shell/apply_settings.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvalite::core::test {
namespace {

constexpr std::uint32_t kRed = packColor(250, 10, 20);
constexpr std::uint32_t kBlue = packColor(20, 10, 240);

class VertexColors : public DecimationTest {
protected:
    // A ball of two colours that meet along a wavy line.
    static DMesh twoColors(std::uint32_t seed) {
        DMesh mesh = sphere(4);
        jitter(mesh, 0.01F, seed);
        addColors(mesh, [](const FloatVec3& p) {
            return p.z < 0.25F * std::sin(4.0F * std::atan2(p.y, p.x)) ? kRed : kBlue;
        });
        return mesh;
    }
    static MeshPtr withCoefficient(const DMesh& mesh, float coefficient, float percent) {
        return decimated(mesh, [&](ProgressiveMesh& pm) {
            pm.colorWeight = colorWeightOf(coefficient);
            targetPercent(pm, percent);
            pm.DoReorder = false;
        });
    }
    // The distance of the colours from the original: for each original vertex, the difference
    // between its red and that of the nearest remaining vertex.
    static double colorError(const DMesh& original, const DMesh& mesh) {
        double sum = 0;
        for (std::size_t v = 0; v < original.vertices.size(); ++v) {
            std::size_t nearest = 0;
            float least = std::numeric_limits<float>::max();
            for (std::size_t w = 0; w < mesh.vertices.size(); ++w) {
                if (!mesh.vertexActive.Test(static_cast<std::int32_t>(w))) continue;
                const FloatVec3 d = mesh.vertices[w].position() - original.vertices[v].position();
                const float square = d.x * d.x + d.y * d.y + d.z * d.z;
                if (square < least) {
                    least = square;
                    nearest = w;
                }
            }
            sum += std::abs(static_cast<double>(original.vertexColors[v] & 0xFFU) -
                            static_cast<double>(mesh.vertexColors[nearest] & 0xFFU));
        }
        return sum / static_cast<double>(original.vertices.size());
    }
    // The area of triangles whose corners have different colours.
    static double blurredArea(const DMesh& mesh) {
        double area = 0;
        for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
            if (!mesh.triangleActive.Test(t)) continue;
            const std::uint32_t* v = &mesh.triangles[3 * static_cast<std::size_t>(t)];
            const auto red = [&](int k) {
                return static_cast<int>(mesh.vertexColors[v[k]] & 0xFFU);
            };
            if (std::abs(red(0) - red(1)) < 60 && std::abs(red(1) - red(2)) < 60 &&
                std::abs(red(2) - red(0)) < 60)
                continue;
            const FloatVec3 p = mesh.vertices[v[0]].position();
            const FloatVec3 a = mesh.vertices[v[1]].position() - p;
            const FloatVec3 b = mesh.vertices[v[2]].position() - p;
            area += 0.5 * std::hypot(double{a.y * b.z - a.z * b.y}, double{a.z * b.x - a.x * b.z},
                                     double{a.x * b.y - a.y * b.x});
        }
        return area;
    }
};

TEST_F(VertexColors, AHighCoefficientKeepsTheBoundarySharper) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const DMesh original = twoColors(seed);
        const MeshPtr low = withCoefficient(original, 1, 12);
        const MeshPtr high = withCoefficient(original, 90, 12);
        ASSERT_TRUE(high->m_useVertexColors_internal);
        EXPECT_EQ(low->mesh.numActiveVertices, high->mesh.numActiveVertices);
        EXPECT_LT(blurredArea(high->mesh), blurredArea(low->mesh) * 0.7) << seed;
        EXPECT_LT(colorError(original, high->mesh), colorError(original, low->mesh) * 0.7) << seed;
        EXPECT_TRUE(isClosedManifold(high->mesh));
    }
}

// A channel without weight has no best value, so it stays that of the kept vertex.
TEST_F(VertexColors, ACoefficientOfOneKeepsColorsUnchanged) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const MeshPtr pm = withCoefficient(twoColors(seed), 1, 12);
        for (const std::uint32_t color : pm->mesh.vertexColors)
            EXPECT_TRUE(color == kRed || color == kBlue);
    }
}

// A uniform colour carries no information and comes out almost unchanged.
TEST_F(VertexColors, AUniformColorIsKept) {
    DMesh mesh = sphere(3);
    jitter(mesh, 0.05F, 1);
    addColors(mesh, [](const FloatVec3&) { return packColor(90, 120, 200, 77); });
    const MeshPtr pm = withCoefficient(mesh, 50, 20);
    EXPECT_LT(pm->mesh.numActiveVertices, mesh.vertices.size() / 4);
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        if (!pm->mesh.vertexActive.Test(v)) continue;
        const std::uint32_t color = pm->mesh.vertexColors[static_cast<std::size_t>(v)];
        EXPECT_EQ(color >> 24U, 77U) << "the fourth byte never changes";
        // Values are truncated, so each collapse may lose one.
        for (unsigned channel = 0; channel < 3; ++channel) {
            const int is = static_cast<int>((color >> (8 * channel)) & 0xFFU);
            const int was = static_cast<int>((mesh.vertexColors[0] >> (8 * channel)) & 0xFFU);
            EXPECT_NEAR(is, was, 25) << v;
        }
    }
}

TEST_F(VertexColors, ColorsThatDoNotFitTheVerticesAreIgnored) {
    DMesh mesh = twoColors(1);
    DMesh plain = mesh;
    plain.vertexColors.clear();
    mesh.vertexColors.pop_back();
    const MeshPtr with = withCoefficient(mesh, 90, 20);
    const MeshPtr without = withCoefficient(plain, 90, 20);
    EXPECT_FALSE(with->m_useVertexColors_internal);
    EXPECT_TRUE(surfaceOf(with->mesh) == surfaceOf(without->mesh));
}

}  // namespace
}  // namespace korvalite::core::test
