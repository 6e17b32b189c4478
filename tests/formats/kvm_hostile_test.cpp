// SPDX-License-Identifier: MIT
//
// Damaged or malicious files. Each is refused or yields what it contains; none leads out of an
// array, into an endless walk, or to memory that the file could not fill.
#include "formats/kvm_samples.h"
#include "formats/vok_writer.h"
#include "support/allocation_limit.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using test::KvmFile;
using test::KvmTest;
using test::wordsOf;

constexpr std::size_t kTriangleCountAt = 75;
constexpr std::size_t kVertexCountAt = 79;
constexpr std::size_t kNumVtxSplitAt = 60;

void setWord(std::string& bytes, std::size_t offset, std::uint32_t value) {
    bytes.replace(offset, 4, test::bytesOf({value}));
}

class KvmHostile : public KvmTest {
protected:
    // A small mesh with every kind of data, decimated as far as possible.
    static KvmFile everything() {
        DMesh mesh = test::torus(5, 4);
        test::addCornerUVs(mesh);
        test::addColors(mesh,
                        [](const FloatVec3& p) { return p.x > 0 ? 0x000000FFU : 0x0000FF00U; });
        test::addMask(mesh, [](const FloatVec3& p) { return p.y > 0 ? 255 : 120; });
        const test::MeshPtr pm = test::decimated(std::move(mesh), [](ProgressiveMesh&) {});
        EXPECT_GT(pm->vsplitList.NumVtxSplit(), 3U);
        EXPECT_TRUE(pm->m_handleUVs_internal && pm->m_useVertexColors_internal);
        return test::kvmFileOf(*pm);
    }

    // Loads the bytes and, if that works, takes the mesh through its levels and saves one. Returns
    // whether it loaded.
    bool survives(const std::string& bytes, std::int32_t wanted) const {
        ProgressiveMesh pm;
        if (load(pm, bytes, wanted) != 0) return false;
        updateMeshAtLevel(pm, wanted);
        test::goAllUp(pm);
        test::goAllDown(pm);
        EXPECT_TRUE(exportDMesh(path(u8"level.Vok").c_str(), pm.mesh));
        return true;
    }
};

TEST_F(KvmHostile, TruncationWithinTheHeaderIsRefusedOrGivesAnEmptyMesh) {
    const std::string bytes = everything().bytes();
    for (std::size_t length = 0; length < 40; ++length) {
        ProgressiveMesh pm;
        EXPECT_EQ(load(pm, bytes.substr(0, length), 5), 0)
            << "the driver field is incomplete, so there is no body";
        EXPECT_EQ(pm.mesh.vertices.size(), 0U);
    }
    for (std::size_t length = 40; length < 99; ++length)
        EXPECT_FALSE(survives(bytes.substr(0, length), 5)) << length;
}

TEST_F(KvmHostile, TruncationBeforeTheSplitsIsRefusedOrLeavesNone) {
    const KvmFile file = everything();
    const std::string bytes = file.bytes();
    for (std::size_t length = 99; length < file.startOf(9) + 4; ++length) {
        ProgressiveMesh pm;
        const bool loaded = load(pm, bytes.substr(0, length), length % 2 == 0 ? 0 : 6) == 0;
        // Without the activity there is no level. Missing attributes are zero.
        ASSERT_EQ(loaded, length >= file.startOf(5)) << length;
        if (!loaded) continue;
        EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 0U);
        EXPECT_EQ(pm.mesh.numActiveVertices, file.numActiveVertices);
        test::goAllUp(pm);
        EXPECT_TRUE(exportDMesh(path(u8"level.Vok").c_str(), pm.mesh));
    }
}

TEST_F(KvmHostile, TruncationWithinTheSplitsKeepsTheWholeOnes) {
    const KvmFile file = everything();
    const std::string bytes = file.bytes();
    std::vector<std::size_t> ends;
    std::size_t end = file.startOf(9) + 4;
    for (std::size_t i = file.splits.size(); i-- > 0;)
        ends.push_back(end += 4 * wordsOf(file.splits[i], file.format()).size());
    ASSERT_EQ(end, bytes.size());
    for (std::size_t length = file.startOf(9) + 4; length < bytes.size(); ++length) {
        const auto whole = static_cast<std::uint32_t>(
            std::upper_bound(ends.begin(), ends.end(), length) - ends.begin());
        ProgressiveMesh pm;
        ASSERT_EQ(load(pm, bytes.substr(0, length)), 0) << length;
        EXPECT_EQ(pm.vsplitList.NumVtxSplit(), whole) << length;
        EXPECT_EQ(pm.CurVtxSplitPos, static_cast<std::int32_t>(whole)) << length;
        // Goes as far up as the splits reach, and back.
        const auto lowest = test::surfaceOf(pm.mesh);
        test::goAllUp(pm);
        EXPECT_EQ(pm.mesh.numActiveVertices, file.numActiveVertices + whole) << length;
        test::goAllDown(pm);
        EXPECT_EQ(test::surfaceOf(pm.mesh), lowest) << length;
    }
}

TEST_F(KvmHostile, CountsThatTheFileCannotFillAllocateNothing) {
    const std::string bytes = everything().bytes();
    for (std::size_t offset = kTriangleCountAt; offset < 99; offset += 4) {
        for (const std::uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 0x55555556U}) {
            std::string hostile = bytes;
            setWord(hostile, offset, count);
            const test::AllocationLimit limit(1 << 20U);
            EXPECT_FALSE(survives(hostile, 0)) << offset;
            EXPECT_FALSE(survives(hostile, 5)) << offset;
        }
    }
}

TEST_F(KvmHostile, SurvivesCountsThatDisagreeWithTheSections) {
    const std::string bytes = everything().bytes();
    for (std::size_t offset = kTriangleCountAt; offset < 99; offset += 4) {
        for (const std::uint32_t count : {0U, 1U, 3U, 19U, 21U, 41U, 1000U}) {
            std::string hostile = bytes;
            setWord(hostile, offset, count);
            for (const std::int32_t wanted : {0, 1, 10})
                survives(hostile, wanted);
            if (offset <= kVertexCountAt) {
                EXPECT_FALSE(survives(hostile, 0)) << "the activity has another length";
            }
        }
    }
}

TEST_F(KvmHostile, AnySplitCountInTheHeaderKeepsPartialLoadsInBounds) {
    const std::string bytes = everything().bytes();
    for (const std::uint32_t count : {0U, 1U, 20U, 21U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::string hostile = bytes;
        setWord(hostile, kNumVtxSplitAt, count);
        for (const std::int32_t wanted : {0, 1, 10, 20, 1000})
            EXPECT_TRUE(survives(hostile, wanted)) << count << ' ' << wanted;
    }
}

TEST_F(KvmHostile, AnySplitCountInTheSectionLoadsOnlyExistingSplits) {
    const KvmFile file = everything();
    for (const std::uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::string hostile = file.bytes();
        setWord(hostile, file.startOf(9), count);
        const test::AllocationLimit limit(1 << 20U);
        ProgressiveMesh pm;
        ASSERT_EQ(load(pm, hostile), 0);
        EXPECT_EQ(pm.vsplitList.NumVtxSplit(), file.splits.size());
    }
}

TEST_F(KvmHostile, ActivityOfAnotherLengthIsRefused) {
    const KvmFile file = everything();
    for (const std::size_t section : {3U, 4U}) {
        for (const std::uint32_t bits : {0U, 1U, 7U, 100U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            std::string hostile = file.bytes();
            setWord(hostile, file.startOf(section), bits);
            const test::AllocationLimit limit(1 << 20U);
            EXPECT_FALSE(survives(hostile, 0)) << section << ' ' << bits;
        }
    }
}

TEST_F(KvmHostile, SurvivesActivityThatDisagreesWithItsCount) {
    for (const std::uint32_t count : {0U, 1U, 0x80000000U, 0xFFFFFFFFU}) {
        KvmFile file = everything();
        file.numActiveTriangles = count;
        file.numActiveVertices = count;
        EXPECT_TRUE(survives(file.bytes(), 5)) << count;
        file.activateAll();
        EXPECT_TRUE(survives(file.bytes(), 5));
        file.triangleActive.assign(file.triangleActive.size(), false);
        EXPECT_TRUE(survives(file.bytes(), 5));
    }
}

TEST_F(KvmHostile, UnorderedAndRepeatedSplitsTerminateAndStayInBounds) {
    const KvmFile file = everything();
    test::Random random(7);
    for (int round = 0; round < 50; ++round) {
        KvmFile hostile = file;
        for (VSplit& split : hostile.splits) {
            if (random.onceIn(2))
                split = file.splits[random.below(static_cast<std::uint32_t>(file.splits.size()))];
        }
        for (auto& vertex : hostile.vertices) {
            // Partners that form cycles.
            vertex.partner = static_cast<std::int32_t>(
                random.below(static_cast<std::uint32_t>(file.vertices.size())));
        }
        EXPECT_TRUE(survives(hostile.bytes(), 0));
        survives(hostile.bytes(), random.between(1, 20));
    }
}

TEST_F(KvmHostile, SurvivesAnyWordChanged) {
    const std::string bytes = everything().bytes();
    test::Random random(11);
    for (std::size_t offset = 36; offset + 4 <= bytes.size(); offset += 4) {
        for (const std::uint32_t value : {0xFFFFFFFFU, random.word()}) {
            // The counts of the header may claim 256 MiB, which takes time to clear.
            if (offset + 4 > kTriangleCountAt && offset < 99) continue;
            std::string hostile = bytes;
            setWord(hostile, offset, value);
            survives(hostile, random.onceIn(2) ? 0 : 9);
        }
    }
}

}  // namespace
}  // namespace korvalite::core
