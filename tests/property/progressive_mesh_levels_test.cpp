// SPDX-License-Identifier: MIT
//
// A saved progressive mesh, loaded in full or in part, has the same levels as in memory, and the
// same as a decimation to the same count.
#include "property/level_cases.h"

#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace korvalite::core::test {
namespace {

class ProgressiveMeshLevels : public LevelTest {};

INSTANTIATE_TEST_SUITE_P(Case, ProgressiveMeshLevels, testing::ValuesIn(levelCases()), nameOf);

TEST_P(ProgressiveMeshLevels, AFullLoadHasTheLevelsOfTheMeshInMemory) {
    const MeshPtr inMemory = lowest();
    save(*inMemory);
    const MeshPtr fromFile = loaded();
    ASSERT_TRUE(bytesOf(*fromFile) == readWhole(path()));
    // The walk goes up, down and past both ends.
    std::vector<std::int32_t> levels = levelsOf(*inMemory, 5);
    levels.insert(levels.end(), {levels[2], 1000000, levels[1], levels[3], -1, levels[2], 0});
    for (const std::int32_t level : levels) {
        updateMeshAtLevel(*inMemory, level);
        updateMeshAtLevel(*fromFile, level);
        ASSERT_TRUE(bytesOf(*inMemory) == bytesOf(*fromFile)) << level;
        EXPECT_TRUE(isSound(fromFile->mesh)) << level;
    }
}

TEST_P(ProgressiveMeshLevels, APartialLoadHasTheSurfaceOfAFullOne) {
    const MeshPtr inMemory = lowest();
    save(*inMemory);
    std::vector<std::int32_t> levels = levelsOf(*inMemory, 12);
    // These are one vertex above the lowest, one below the full count, and past both ends.
    levels.insert(levels.end(), {levels.front() + 1, levels.back() - 1, 1, levels.back() + 5});
    for (const std::int32_t level : levels) {
        const MeshPtr full = loaded();
        const MeshPtr partial = loaded(level);
        EXPECT_LE(partial->vsplitList.NumVtxSplit(), full->vsplitList.NumVtxSplit());
        updateMeshAtLevel(*full, level);
        updateMeshAtLevel(*partial, level);
        EXPECT_EQ(partial->mesh.numActiveVertices, full->mesh.numActiveVertices) << level;
        EXPECT_EQ(partial->mesh.numActiveTriangles, full->mesh.numActiveTriangles) << level;
        ASSERT_TRUE(surfaceOf(partial->mesh) == surfaceOf(full->mesh)) << level;
        EXPECT_TRUE(isSound(partial->mesh)) << level;
    }
}

TEST_P(ProgressiveMeshLevels, ALevelEqualsADecimationToItsCount) {
    save(*lowest());
    const MeshPtr fromFile = loaded();
    for (const std::int32_t level : levelsOf(*fromFile, 5)) {
        const MeshPtr direct = decimatedTo(static_cast<std::uint32_t>(level));
        // A decimation ends after a mirrored pair and may miss the count by one; a progressive mesh
        // moves by single splits.
        const auto reached = static_cast<std::int32_t>(direct->mesh.numActiveVertices);
        EXPECT_TRUE(reached == level || (reached == level - 1 && direct->m_handleSymmetry_internal))
            << level << ' ' << reached;
        updateMeshAtLevel(*fromFile, reached);
        EXPECT_EQ(fromFile->mesh.numActiveVertices, direct->mesh.numActiveVertices) << level;
        ASSERT_TRUE(surfaceOf(fromFile->mesh) == surfaceOf(direct->mesh)) << level;
    }
}

TEST_P(ProgressiveMeshLevels, AnyPageSizeGivesTheSameLevels) {
    const MeshPtr neverPages = decimatedTo(
        4, [](ProgressiveMesh& pm) { pm.vsplitList.pageCapacity = VSplitList::kAllRecords; });
    ASSERT_EQ(neverPages->vsplitList.pageCount(), neverPages->vsplitList.NumVtxSplit());
    const MeshPtr pages =
        decimatedTo(4, [](ProgressiveMesh& pm) { pm.vsplitList.pageCapacity = 13; });
    ASSERT_GT(pages->vsplitList.NumVtxSplit(), 13U * 20);
    ASSERT_LE(pages->vsplitList.pageCount(), 14U) << "most of them are on disk";
    const std::vector<std::int32_t> levels = levelsOf(*pages, 6);
    std::vector<std::int32_t> walk(levels.rbegin(), levels.rend());
    walk.insert(walk.begin(), {levels[3], levels[1], levels[5]});
    walk.insert(walk.end(), levels.begin(), levels.end());
    for (const std::int32_t level : walk) {
        updateMeshAtLevel(*pages, level);
        updateMeshAtLevel(*neverPages, level);
        ASSERT_TRUE(arraysOf(pages->mesh, Part::All) == arraysOf(neverPages->mesh, Part::All))
            << level;
    }
    ASSERT_TRUE(bytesOf(*pages) == bytesOf(*neverPages));
}

TEST_P(ProgressiveMeshLevels, AFullLoadWithoutReorderingHasTheSameLevels) {
    const MeshPtr inMemory = decimatedTo(4, [](ProgressiveMesh& pm) { pm.DoReorder = false; });
    const MeshPtr reordered = lowest();
    save(*inMemory);
    for (const std::int32_t level : levelsOf(*inMemory, 5)) {
        const MeshPtr fromFile = loaded(level);
        EXPECT_EQ(fromFile->vsplitList.NumVtxSplit(), inMemory->vsplitList.NumVtxSplit())
            << "only a reordered file can be loaded in part";
        updateMeshAtLevel(*fromFile, level);
        updateMeshAtLevel(*reordered, level);
        EXPECT_EQ(fromFile->mesh.numActiveVertices, reordered->mesh.numActiveVertices);
        ASSERT_TRUE(surfaceOf(fromFile->mesh) == surfaceOf(reordered->mesh)) << level;
    }
}

}  // namespace
}  // namespace korvalite::core::test
