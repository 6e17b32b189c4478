// SPDX-License-Identifier: MIT
#include "formats/kvm_reader.h"

#include "formats/kvm_samples.h"
#include "formats/kvm_writer.h"
#include "progressive/level_update.h"
#include "support/level_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

namespace korvalite::core {
namespace {

using test::KvmFile;
using test::KvmTest;
using test::readWhole;
using test::rowOfSplits;
using test::squareWithOneSplit;
using test::wordsOf;
using test::writeWhole;

class KvmReader : public KvmTest {
protected:
    // The bytes of the mesh when saved again.
    std::string saved(ProgressiveMesh& pm) const {
        EXPECT_EQ(saveProgressiveMesh(pm, path(u8"saved.kvm").c_str()), 0);
        return readWhole(path(u8"saved.kvm"));
    }
};

// The number of leading vertices that were read; no record in the samples is all zeros.
std::size_t recordsRead(const DMesh& mesh) {
    const auto isZero = [](const VertexRecord& vertex) {
        return vertex.x == 0 && vertex.y == 0 && vertex.z == 0 && vertex.partner == 0;
    };
    const auto end = std::find_if(mesh.vertices.begin(), mesh.vertices.end(), isZero);
    EXPECT_TRUE(std::all_of(end, mesh.vertices.end(), isZero));
    return static_cast<std::size_t>(end - mesh.vertices.begin());
}

TEST_F(KvmReader, AFullLoadRestoresEverythingSaved) {
    for (KvmFile file : {squareWithOneSplit(), rowOfSplits(100, 80), rowOfSplits(5000, 4990)}) {
        file.version = 3;
        file.floats = {1, 2, 3, 4, 5, 6};
        file.flags = {1, 0, 1, 0};
        file.tradeOff = 2;
        file.finishMark = 12;
        ProgressiveMesh pm;
        ASSERT_EQ(load(pm, file.bytes()), 0);
        EXPECT_EQ(test::kvmFileOf(pm).bytes(), file.bytes());
        EXPECT_EQ(saved(pm), file.bytes());
    }
}

TEST_F(KvmReader, ZeroAndNegativeWantedCountsLoadInFull) {
    for (const std::int32_t wanted : {0, -1, -50, std::numeric_limits<std::int32_t>::min()}) {
        ProgressiveMesh pm;
        ASSERT_EQ(load(pm, rowOfSplits(100, 80).bytes(), wanted), 0);
        EXPECT_EQ(recordsRead(pm.mesh), 100U);
        EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 80U);
        EXPECT_EQ(pm.CurVtxSplitPos, 80);
    }
}

TEST_F(KvmReader, AnUnreorderedFileLoadsInFull) {
    KvmFile file = rowOfSplits(100, 80);
    file.switches[KvmFile::kReordered] = 0;
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes(), 50), 0);
    EXPECT_EQ(recordsRead(pm.mesh), 100U);
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 80U);
    EXPECT_EQ(pm.CurVtxSplitPos, 80);
    EXPECT_FALSE(pm.IsReordered);
}

// From 100 vertices with 80 splits, so 20 are left at the lowest level.
struct PartialRow {
    std::int32_t wanted;
    std::size_t vertices;
    std::uint32_t splits;
};
void PrintTo(const PartialRow& row, std::ostream* out) {
    *out << row.wanted << " of 100";
}

class KvmReaderPartial : public KvmReader, public testing::WithParamInterface<PartialRow> {};

INSTANTIATE_TEST_SUITE_P(
    Wanted, KvmReaderPartial,
    testing::Values(PartialRow{1, 20, 0}, PartialRow{10, 20, 0}, PartialRow{20, 20, 0},
                    PartialRow{21, 21, 1}, PartialRow{50, 50, 30}, PartialRow{99, 99, 79},
                    PartialRow{100, 100, 80}, PartialRow{500, 100, 80},
                    PartialRow{std::numeric_limits<std::int32_t>::max(), 100, 80}),
    [](const auto& row) { return std::to_string(row.param.wanted) + "Of100"; });

TEST_P(KvmReaderPartial, ReadsOnlyThePrefixesTheLevelNeeds) {
    const PartialRow row = GetParam();
    const KvmFile file = rowOfSplits(100, 80);
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes(), row.wanted), 0);
    EXPECT_EQ(pm.mesh.vertices.size(), 100U);
    EXPECT_EQ(recordsRead(pm.mesh), row.vertices);
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), row.splits);
    EXPECT_EQ(pm.CurVtxSplitPos, 80 - static_cast<std::int32_t>(100 - row.vertices));
    EXPECT_EQ(pm.vsplitList.pageCount(), row.splits) << "all in one page";

    // The loaded splits are the newest ones.
    const KvmFile loaded = test::kvmFileOf(pm);
    const std::uint32_t leftBehind = 80 - row.splits;
    for (std::uint32_t i = 0; i < row.splits; ++i)
        EXPECT_EQ(wordsOf(loaded.splits[i], {}), wordsOf(file.splits[leftBehind + i], {}));
    EXPECT_EQ(loaded.vertexActive, file.vertexActive) << "as at the saved level";

    // The mesh goes as far up as the splits reach, and no further.
    test::goAllUp(pm);
    EXPECT_EQ(pm.mesh.numActiveVertices, row.vertices);
    EXPECT_EQ(pm.CurVtxSplitPos, 0);
    test::goAllDown(pm);
    EXPECT_EQ(pm.mesh.numActiveVertices, 20U);
}

TEST_F(KvmReader, APartialLoadReadsAllButVerticesAndSplitsInFull) {
    KvmFile file = squareWithOneSplit();
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes(), 4), 0);
    file.vertices[4] = {0, 0, 0, 0};
    file.splits.clear();
    file.position = 0;
    EXPECT_EQ(test::kvmFileOf(pm).bytes(), file.bytes());
}

TEST_F(KvmReader, TheBoundingBoxCoversAllRecords) {
    ProgressiveMesh full;
    ASSERT_EQ(load(full, rowOfSplits(100, 80).bytes()), 0);
    EXPECT_EQ(full.mesh.boundingBox.min.x, 1.0F);
    EXPECT_EQ(full.mesh.boundingBox.max.x, 100.0F);
    ProgressiveMesh partial;
    ASSERT_EQ(load(partial, rowOfSplits(100, 80).bytes(), 50), 0);
    EXPECT_EQ(partial.mesh.boundingBox.min.x, 0.0F) << "records that were not read are zero";
    EXPECT_EQ(partial.mesh.boundingBox.max.x, 50.0F);
}

TEST_F(KvmReader, NonzeroByteFieldsReadAsOne) {
    KvmFile file = squareWithOneSplit();
    file.flags = {2, 2, 2, 2};
    file.switches.fill(2);
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes()), 0);
    file.flags.fill(1);
    file.switches.fill(1);
    EXPECT_EQ(saved(pm), file.bytes());
}

TEST_F(KvmReader, TheReservedWordIsIgnored) {
    KvmFile file = squareWithOneSplit();
    file.reserved = 0xDEADBEEF;
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes()), 0);
    EXPECT_EQ(saved(pm), squareWithOneSplit().bytes());
}

TEST_F(KvmReader, NothingAfterTheSplitsIsRead) {
    const KvmFile file = squareWithOneSplit();
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes() + "and more"), 0);
    EXPECT_EQ(saved(pm), file.bytes());
}

TEST_F(KvmReader, AFileOfAnotherDriverGivesSizedArraysWithoutData) {
    for (const std::int32_t tradeOff : {0, 3, 4, 5, 6, -1}) {
        KvmFile file = squareWithOneSplit();
        file.tradeOff = tradeOff;
        for (const std::string& bytes : {file.header(), file.bytes()}) {
            ProgressiveMesh pm;
            ASSERT_EQ(load(pm, bytes, 4), 0) << tradeOff;
            EXPECT_EQ(pm.MemSpeedTradeOff, tradeOff);
            EXPECT_EQ(pm.CurVtxSplitPos, 1);
            EXPECT_EQ(pm.mesh.vertices.size(), 5U);
            EXPECT_EQ(recordsRead(pm.mesh), 0U);
            EXPECT_EQ(pm.mesh.triangles, std::vector<std::uint32_t>(12, 0));
            EXPECT_EQ(pm.mesh.vertexColors, std::vector<std::uint32_t>(5, 0));
            EXPECT_EQ(pm.mesh.maskValues, std::vector<std::uint8_t>(5, 0));
            EXPECT_EQ(pm.mesh.indicesUV, std::vector<std::uint32_t>(12, 0));
            EXPECT_EQ(pm.mesh.coordsUV.size(), 5U);
            EXPECT_EQ(pm.mesh.numActiveVertices, 0U);
            EXPECT_EQ(pm.mesh.vertexActive.count(), 0);
            EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 0U);
            // The level in the header does not exist, so the mesh cannot leave it.
            EXPECT_EQ(updateMeshAtLevel(pm, 5), 0);
            EXPECT_EQ(pm.mesh.numActiveVertices, 0U);
        }
    }
}

TEST_F(KvmReader, ALoadReplacesTheOldMesh) {
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, rowOfSplits(5000, 4000).bytes(), 2000), 0);
    test::goAllUp(pm);
    pm.handleSymmetry = true;
    pm.mesh.symmetryAxis = 2;
    ASSERT_EQ(load(pm, squareWithOneSplit().bytes()), 0);
    EXPECT_EQ(saved(pm), squareWithOneSplit().bytes());
    EXPECT_FALSE(pm.handleSymmetry);
    EXPECT_EQ(pm.mesh.symmetryAxis, kNone);
}

TEST_F(KvmReader, AnUnopenableFileReturnsOneAndAFreshMesh) {
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, squareWithOneSplit().bytes()), 0);
    EXPECT_EQ(loadProgressiveMesh(pm, path(u8"no such.kvm").c_str(), 0), 1);
    EXPECT_TRUE(pm.mesh.vertices.empty());
    EXPECT_EQ(pm.CurVtxSplitPos, kNone);
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 0U);
    EXPECT_EQ(loadProgressiveMesh(pm, "", 0), 1);
    EXPECT_EQ(loadProgressiveMesh(pm, HeapString(), 0), 1);
}

TEST_F(KvmReader, TheHeaderAloneIsReadFromAnyFileThatOpens) {
    ProgMeshHeader header;
    EXPECT_FALSE(readProgMeshFileHeader(path(u8"no such.kvm").c_str(), header));
    EXPECT_FALSE(readProgMeshFileHeader("", header));
    writeWhole(path(), rowOfSplits(100, 80).header());
    EXPECT_TRUE(readProgMeshFileHeader(path().c_str(), header));
    EXPECT_EQ(header.OriginalVertexCount, 100U);
    EXPECT_EQ(header.NumVtxSplit, 80U);
    writeWhole(path(), "x");
    ProgMeshHeader none;
    EXPECT_TRUE(readProgMeshFileHeader(path().c_str(), none)) << "its content is not checked";
    EXPECT_EQ(none.OriginalVertexCount, 0U);
}

TEST_F(KvmReader, AMeshSavedAtAHigherLevelContinuesFromThere) {
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, squareWithOneSplit().bytes()), 0);
    test::goAllUp(pm);
    const std::string highest = saved(pm);
    ProgressiveMesh again;
    ASSERT_EQ(load(again, highest), 0);
    EXPECT_EQ(again.CurVtxSplitPos, 0);
    test::goAllDown(again);
    test::goAllDown(pm);
    EXPECT_EQ(saved(again), saved(pm));
}

// Every dropped record moves the position of the level down with it, even if the level is not the
// lowest. A position outside the remaining list means that records in between were not read, so the
// level cannot change.
TEST_F(KvmReader, APartialLoadOfAHigherLevelCannotMove) {
    KvmFile file = rowOfSplits(100, 80);
    file.position = 0;
    file.activateAll();
    ProgressiveMesh pm;
    ASSERT_EQ(load(pm, file.bytes(), 50), 0);
    EXPECT_EQ(pm.CurVtxSplitPos, -50);
    test::goAllDown(pm);
    EXPECT_EQ(pm.CurVtxSplitPos, -50);
    EXPECT_EQ(pm.mesh.numActiveVertices, 100U);
}

}  // namespace
}  // namespace korvalite::core
