// SPDX-License-Identifier: MIT
//
// What remains of a mesh's mirror symmetry: all of it if the mesh was symmetric, and a sound mesh
// if it was not.
#include "property/run_cases.h"
#include "property/symmetry_cases.h"

#include "support/mesh_validator.h"
#include "symmetry/mirror_pairs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace korvalite::core::test {
namespace {

class SymmetricMesh : public SymmetryTest {};

INSTANTIATE_TEST_SUITE_P(Case, SymmetricMesh, testing::ValuesIn(symmetricMeshes()), nameOfSymmetry);

TEST_P(SymmetricMesh, IsStillSymmetricAfterARun) {
    const auto& [name, axis, original] = GetParam();
    ASSERT_EQ(pairsOf(original, axis, original).pairedCount, original.vertexCount());
    for (const float percent : {70.0F, 40.0F, 15.0F, 5.0F}) {
        const MeshPtr pm = decimated(original, [&, axis = axis](ProgressiveMesh& settings) {
            askForSymmetry(settings, axis);
            targetPercent(settings, percent);
        });
        EXPECT_LE(pm->activeCount(), pm->TargetNumItem);
        const DMesh result = compacted(pm->mesh);
        EXPECT_EQ(pairsOf(result, axis, original).pairedCount, result.vertexCount()) << percent;
        EXPECT_TRUE(isClosedManifold(result));
    }
}

// Without this, the test above could pass without any symmetry handling.
TEST_P(SymmetricMesh, LosesItsPairsWithoutSymmetryHandling) {
    const auto& [name, axis, original] = GetParam();
    const MeshPtr pm =
        decimated(original, [](ProgressiveMesh& settings) { targetPercent(settings, 40); });
    const DMesh result = compacted(pm->mesh);
    EXPECT_LT(pairsOf(result, axis, original).pairedCount, result.vertexCount());
}

class AsymmetricMesh : public DecimationTest, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Axis, AsymmetricMesh, testing::Values(0, 1, 2),
                         [](const auto& row) { return std::string(1, "XYZ"[row.param]); });

TEST_P(AsymmetricMesh, IsDecimatedNevertheless) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        DMesh strong = sphere(3);
        jitter(strong, 0.3F, seed);
        DMesh lopsided = unevenSphere(seed);
        for (VertexRecord& vertex : lopsided.vertices)
            vertex.setPosition(vertex.position() + FloatVec3{vertex.y * vertex.z, 0, vertex.x});
        recomputeBoundingBox(lopsided);
        for (const DMesh& original : {strong, lopsided, unevenHills(seed), torus(24, 11)}) {
            for (const float percent : {50.0F, 10.0F, 0.0F}) {
                const MeshPtr pm = decimated(original, [&](ProgressiveMesh& settings) {
                    askForSymmetry(settings, GetParam());
                    targetPercent(settings, percent);
                });
                EXPECT_TRUE(isSound(pm->mesh)) << seed << ' ' << percent;
                if (percent > 20) {
                    EXPECT_LE(pm->activeCount(), pm->TargetNumItem);
                }
            }
        }
    }
}

// One half is symmetric, the other is not; the uneven half must not affect the other.
TEST_P(AsymmetricMesh, KeepsThePairsFarFromItsUnevenPart) {
    const int axis = GetParam();
    const int along = (axis + 1) % 3;
    DMesh original = unevenMirrored(axis, 4);
    Random random(11);
    for (VertexRecord& vertex : original.vertices) {
        FloatVec3 p = vertex.position();
        if (component(p, along) > 0.55F && component(p, axis) > 0.0F) {
            setComponent(p, along, component(p, along) + 0.2F + random.around(0.15F));
            vertex.setPosition(p);
        }
    }
    // The centre of the box stays on the plane.
    recomputeBoundingBox(original);
    const MeshPtr pm = decimated(original, [&](ProgressiveMesh& settings) {
        askForSymmetry(settings, axis);
        targetPercent(settings, 40);
        settings.DoReorder = false;
    });
    EXPECT_TRUE(isClosedManifold(pm->mesh));
    DMesh far;
    for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v) {
        const VertexRecord& vertex = pm->mesh.vertices[static_cast<std::size_t>(v)];
        if (pm->mesh.vertexActive.Test(v) && component(vertex.position(), along) < -0.2F)
            far.vertices.push_back(vertex);
    }
    KRDMeshSymmetryCache cache;
    computeTolerance(cache, original, 0.01F);
    MirrorPairs pairs;
    ASSERT_TRUE(
        pairVertices(pairs, far, axis, symmetryCentre(original.boundingBox), cache.tolerance));
    EXPECT_EQ(pairs.pairedCount, far.vertexCount());
    EXPECT_GT(far.vertexCount(), 30);
}

}  // namespace
}  // namespace korvalite::core::test
