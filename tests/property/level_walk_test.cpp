// SPDX-License-Identifier: MIT
//
// Levels of a decimated mesh: each looks the same whenever it is come to, from wherever, and with
// the splits in memory or in pages on disk. A reordered mesh has the same surfaces, and its levels
// are prefixes of its arrays.
#include "property/run_cases.h"

#include "mesh/corner_lists.h"
#include "mesh/uv_seams.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>

namespace korvalite::test {
namespace {

class LevelWalk : public RunTest {
protected:
    // Low, with a number of records per page.
    MeshPtr lowest(std::uint32_t pageCapacity, bool reorder = true) const {
        return decimatedTo(8, [&](ProgressiveMesh& pm) {
            pm.vsplitList.pageCapacity = pageCapacity;
            pm.DoReorder = reorder;
            pm.targetCountsVertices = true;
        });
    }
    static std::int32_t randomLevel(Random& random, const ProgressiveMesh& pm) {
        return random.between(0, pm.mesh.vertexCount() + 3);
    }
};

INSTANTIATE_TEST_SUITE_P(Case, LevelWalk, testing::ValuesIn(runCases()), nameOfRun);

// Where two UVs of a vertex merge into one, the two exchanges do not lead back: both go in the
// order of the pairs. The surface is compared without UVs then.
UVs comparableUVs(ProgressiveMesh& pm) {
    for (std::uint32_t i = 0; i < pm.vsplitList.NumVtxSplit(); ++i) {
        const auto words =
            pm.vsplitList.ensureLoaded(static_cast<std::int32_t>(i)).uvIndexPairWords();
        std::set<std::int32_t> merged;
        for (std::size_t k = 1; k < words.size(); k += 2) {
            if (words[k - 1] == words[k] || !merged.insert(words[k]).second) return UVs::Ignored;
        }
    }
    return UVs::Compared;
}

TEST_P(LevelWalk, FindsEachLevelAsItWas) {
    for (const std::uint32_t pageCapacity : {VSplitList::kAllRecords, 7U}) {
        const MeshPtr pm = lowest(pageCapacity);
        ASSERT_EQ(comparableUVs(*pm), UVs::Compared);
        Random random(17);
        std::map<std::int32_t, Words> seen{{pm->CurVtxSplitPos, arraysOf(pm->mesh, Part::Active)}};
        int revisits = 0;
        for (int step = 0; step < 24; ++step) {
            // Every other time to one of six places, so that some are come to again.
            const std::int32_t level = step % 2 == 0
                                           ? randomLevel(random, *pm)
                                           : pm->mesh.vertexCount() * random.between(0, 5) / 5;
            updateMeshAtLevel(*pm, level);
            ASSERT_TRUE(isSound(pm->mesh)) << level;
            const Words arrays = arraysOf(pm->mesh, Part::Active);
            const auto [place, isNew] = seen.try_emplace(pm->CurVtxSplitPos, arrays);
            ASSERT_TRUE(isNew || place->second == arrays) << "level " << level;
            revisits += isNew ? 0 : 1;
        }
        EXPECT_GT(revisits, 3);
    }
}

TEST_P(LevelWalk, LeadsBackToTheBeginning) {
    const DMesh original = GetParam().mesh();
    for (const std::uint32_t pageCapacity : {VSplitList::kAllRecords, 7U}) {
        const MeshPtr pm = lowest(pageCapacity, false);
        goAllUp(*pm);
        EXPECT_EQ(pm->mesh.triangles, original.triangles);
        EXPECT_EQ(pm->mesh.numActiveVertices, static_cast<std::uint32_t>(original.vertexCount()));
        for (std::size_t v = 0; v < original.vertices.size(); ++v) {
            const FloatVec3 is = pm->mesh.vertices[v].position();
            const FloatVec3 was = original.vertices[v].position();
            ASSERT_TRUE(is.x == was.x && is.y == was.y && is.z == was.z) << v;
        }
        EXPECT_EQ(pm->mesh.vertexColors, original.vertexColors);
        EXPECT_EQ(pm->mesh.maskValues, original.maskValues);
        if (!pm->m_handleUVs_internal) continue;
        DMesh welded = original;
        BuildVertexCorners(welded);
        WeldCornerUVs(welded);
        EXPECT_EQ(pm->mesh.indicesUV, welded.indicesUV);
        EXPECT_TRUE(surfaceOf(pm->mesh) == surfaceOf(welded));
    }
}

TEST_P(LevelWalk, GivesOneSurfaceWithReorderingAndWithout) {
    const MeshPtr reordered = lowest(50);
    const MeshPtr inPlace = lowest(50, false);
    EXPECT_TRUE(reordered->IsReordered);
    EXPECT_FALSE(inPlace->IsReordered);
    Random random(23);
    for (int step = 0; step < 8; ++step) {
        ASSERT_TRUE(surfaceOf(reordered->mesh) == surfaceOf(inPlace->mesh)) << step;
        const std::int32_t level = randomLevel(random, *inPlace);
        updateMeshAtLevel(*reordered, level);
        updateMeshAtLevel(*inPlace, level);
    }
}

TEST_P(LevelWalk, IsThroughPrefixesOfTheArraysOfAReorderedMesh) {
    const MeshPtr pm = lowest(50);
    Random random(29);
    for (int step = 0; step < 8; ++step) {
        const DMesh& mesh = pm->mesh;
        for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
            ASSERT_EQ(mesh.vertexActive.Test(v),
                      static_cast<std::uint32_t>(v) < mesh.numActiveVertices);
        }
        for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
            ASSERT_EQ(mesh.triangleActive.Test(t),
                      static_cast<std::uint32_t>(t) < mesh.numActiveTriangles);
        }
        for (std::size_t c = 0; c < 3 * std::size_t{mesh.numActiveTriangles}; ++c)
            ASSERT_LT(mesh.triangles[c], mesh.numActiveVertices);
        updateMeshAtLevel(*pm, randomLevel(random, *pm));
    }
}

TEST_P(LevelWalk, AlsoGoesByTriangles) {
    const MeshPtr pm = lowest(50);
    const MeshPtr twin = lowest(50);
    pm->targetCountsVertices = false;
    for (const int part : {3, 1, 2, 3, 0, 2}) {
        updateMeshAtLevel(*pm, pm->mesh.triangleCount() * part / 3);
        EXPECT_TRUE(countsMatchBits(pm->mesh));
        updateMeshAtLevel(*twin, static_cast<std::int32_t>(pm->mesh.numActiveVertices));
        ASSERT_TRUE(arraysOf(pm->mesh, Part::Active) == arraysOf(twin->mesh, Part::Active));
    }
}

}  // namespace
}  // namespace korvalite::test
