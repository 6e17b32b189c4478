// SPDX-License-Identifier: MIT
//
// Levels of a decimated mesh: each looks the same every time, from wherever it is reached, and with
// the splits in memory or in pages on disk. A reordered mesh has the same surfaces, and its levels
// are prefixes of its arrays.
#include "property/run_cases.h"

#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>

namespace korvalite::core::test {
namespace {

class LevelWalk : public RunTest {
protected:
    // The mesh at a low level, with a number of records per page.
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

TEST_P(LevelWalk, FindsEachLevelUnchanged) {
    for (const std::uint32_t pageCapacity : {VSplitList::kAllRecords, 7U}) {
        const MeshPtr pm = lowest(pageCapacity);
        ASSERT_EQ(comparableUVs(*pm), UVs::Compared);
        Random random(17);
        std::map<std::int32_t, Words> seen{{pm->CurVtxSplitPos, arraysOf(pm->mesh, Part::Active)}};
        int revisits = 0;
        for (int step = 0; step < 24; ++step) {
            // Every other step goes to one of six places, so that some are visited again.
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

TEST_P(LevelWalk, RestoresTheInputAtTheTop) {
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
        const DMesh before = welded(original);
        EXPECT_EQ(pm->mesh.indicesUV, before.indicesUV);
        EXPECT_TRUE(surfaceOf(pm->mesh) == surfaceOf(before));
    }
}

TEST_P(LevelWalk, GivesTheSameSurfacesWithAndWithoutReordering) {
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

TEST_P(LevelWalk, VisitsOnlyPrefixesOfAReorderedMesh) {
    const MeshPtr pm = lowest(50);
    Random random(29);
    for (int step = 0; step < 8; ++step) {
        ASSERT_TRUE(isAPrefix(pm->mesh));
        updateMeshAtLevel(*pm, randomLevel(random, *pm));
    }
}

TEST_P(LevelWalk, CanCountTriangles) {
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
}  // namespace korvalite::core::test
