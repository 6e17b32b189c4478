// SPDX-License-Identifier: MIT
#include "formats/kvm_writer.h"

#include "formats/kvm_samples.h"
#include "progressive/level_update.h"
#include "support/full_disk.h"
#include "support/no_more_files.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace korvalite::core {
namespace {

using test::KvmFile;
using test::KvmTest;
using test::readWhole;

class KvmWriter : public KvmTest {
protected:
    std::string saved(const KvmFile& file) const {
        ProgressiveMesh pm;
        test::fillFrom(file, pm);
        return saved(pm);
    }
    std::string saved(ProgressiveMesh& pm) const {
        EXPECT_EQ(saveProgressiveMesh(pm, path().c_str()), 0);
        return readWhole(path());
    }
};

TEST_F(KvmWriter, WritesHeaderAndNineSectionsWithoutGaps) {
    const KvmFile file = test::squareWithOneSplit();
    const std::string bytes = saved(file);
    ASSERT_EQ(bytes, file.bytes());
    // There are 4 triangles, 5 vertices, 4 bits, 5 bits, colours, mask, 12 UV indices and 5 UVs,
    // and one split with 4 corners, 2 triangles, a colour, a UV, 4 indices and a pair.
    EXPECT_EQ(bytes.size(),
              99U + 48 + 80 + 9 + 9 + 20 + 5 + 48 + 40 + 4 + (24 + 24 + 4 + 12 + 8 + 16 + 8));
}

TEST_F(KvmWriter, TheCostIsNotStored) {
    // Each record of the samples has a cost, the fourth word; the partner is the fifth.
    const KvmFile file = test::rowOfSplits(3, 1);
    const std::string section = saved(file).substr(file.startOf(2), 48);
    EXPECT_EQ(section, file.sections()[1]);
    EXPECT_EQ(section.substr(28, 4), test::bytesOf({0U})) << "vertex 1 collapsed onto vertex 0";
}

TEST_F(KvmWriter, AnotherDriverWritesOnlyTheHeader) {
    for (const std::int32_t tradeOff : {0, 3, 4, 5, 6, -1}) {
        KvmFile file = test::squareWithOneSplit();
        file.tradeOff = tradeOff;
        EXPECT_EQ(saved(file), file.header()) << tradeOff;
        EXPECT_EQ(std::filesystem::file_size(test::pathOfUtf8(path())), 99U) << tradeOff;
    }
}

TEST_F(KvmWriter, BothLowMemoryDriversWriteACompleteFile) {
    for (const std::int32_t tradeOff : {1, 2}) {
        KvmFile file = test::squareWithOneSplit();
        file.tradeOff = tradeOff;
        EXPECT_EQ(saved(file), file.bytes());
    }
}

TEST_F(KvmWriter, WithoutColorsMaskAndUVsTheSplitsFollowTheVertexActivity) {
    const KvmFile file = test::rowOfSplits(9, 4);
    EXPECT_EQ(file.startOf(5), file.startOf(9));
    EXPECT_EQ(saved(file), file.bytes());
}

TEST_F(KvmWriter, TheLastActivityByteHoldsTheRemainingBits) {
    for (const std::uint32_t count : {1U, 7U, 8U, 9U, 15U, 16U, 17U}) {
        KvmFile file = test::rowOfSplits(count, 0);
        file.vertexActive[count / 2] = false;
        file.countActive();
        for (const bool spareBits : {false, true}) {
            file.spareBits = spareBits;
            const std::string bytes = saved(file);
            ASSERT_EQ(bytes, file.bytes()) << count;
            EXPECT_EQ(file.sections()[3].size(), 8 + (count + 7) / 8);
        }
    }
}

TEST_F(KvmWriter, NoBitsTakeNoBytes) {
    const KvmFile file = test::rowOfSplits(4, 0);
    const std::string bytes = saved(file);
    EXPECT_EQ(bytes.substr(file.startOf(3), 8), std::string(8, '\0')) << "no triangles";
    EXPECT_EQ(file.startOf(4) - file.startOf(3), 8U);
}

TEST_F(KvmWriter, NoSplitsAreFourZeroBytes) {
    const KvmFile file = test::rowOfSplits(4, 0);
    const std::string bytes = saved(file);
    EXPECT_EQ(bytes.substr(file.startOf(9)), std::string(4, '\0'));
}

TEST_F(KvmWriter, AnEmptyMeshIsTheHeaderAndThreeSectionCounts) {
    const KvmFile file;
    EXPECT_EQ(saved(file), file.bytes());
    EXPECT_EQ(file.bytes().size(), 99U + 8 + 8 + 4);
}

TEST_F(KvmWriter, SplitsAreStoredNewestFirst) {
    const KvmFile file = test::rowOfSplits(2000, 1990);
    const std::string bytes = saved(file);
    ASSERT_EQ(bytes, file.bytes()) << "a list of several pages";
    EXPECT_EQ(bytes.substr(file.startOf(9), 8), test::bytesOf({1990U, 10U}));
    EXPECT_EQ(bytes.substr(bytes.size() - 24, 4), test::bytesOf({1999U}));
}

TEST_F(KvmWriter, AHigherLevelIsSavedAsItIs) {
    const KvmFile lowest = test::squareWithOneSplit();
    ProgressiveMesh pm;
    test::fillFrom(lowest, pm);
    updateMeshAtLevel(pm, 5);
    const std::string bytes = saved(pm);

    // Everything that a split exchanges has changed places; nothing else in the vertices has
    // changed.
    KvmFile highest = lowest;
    highest.position = 0;
    highest.triangles = {1, 2, 4, 2, 3, 4, 3, 0, 4, 0, 1, 4};
    highest.activateAll();
    highest.spareBits = true;
    std::swap(highest.vertices[0].x, highest.splits[0].position.x);
    std::swap(highest.colors[0], highest.splits[0].savedColor);
    std::swap(highest.coordsUV[0], highest.splits[0].savedUVs[0]);
    highest.indicesUV = {1, 2, 4, 2, 3, 4, 3, 0, 4, 0, 1, 4};
    EXPECT_EQ(bytes, highest.bytes());
    EXPECT_EQ(lowest.startOf(3), highest.startOf(3));

    updateMeshAtLevel(pm, 4);
    KvmFile again = lowest;
    again.indicesUV = {1, 2, 0, 2, 3, 0, 3, 0, 0, 0, 1, 0};  // dead triangles are updated too
    EXPECT_EQ(saved(pm), again.bytes());
}

TEST_F(KvmWriter, AnUnopenableFileReturnsOne) {
    ProgressiveMesh pm;
    EXPECT_EQ(saveProgressiveMesh(pm, path(u8"no such folder/mesh.kvm").c_str()), 1);
    EXPECT_EQ(saveProgressiveMesh(pm, folder.path().c_str()), 1);
    EXPECT_EQ(saveProgressiveMesh(pm, ""), 1);
    EXPECT_EQ(saveProgressiveMesh(pm, HeapString()), 1);
}

#ifndef _WIN32
TEST_F(KvmWriter, AFullDiskLeavesAShortFileAndReturnsZero) {
    const KvmFile file = test::rowOfSplits(200, 190);
    for (const std::size_t bytesThatFit : {std::size_t{0}, std::size_t{50}, std::size_t{4096}}) {
        ProgressiveMesh pm;
        test::fillFrom(file, pm);
        int result = -1;
        {
            const test::FullDisk disk(bytesThatFit);
            result = saveProgressiveMesh(pm, path().c_str());
        }
        EXPECT_EQ(result, 0);
        EXPECT_EQ(readWhole(path()), file.bytes().substr(0, bytesThatFit));
    }
}

TEST_F(KvmWriter, TheCheckedWriterKeepsAFileThatItCannotOpen) {
    test::writeWhole(path(), "old");
    ProgressiveMesh pm;
    test::fillFrom(test::rowOfSplits(9, 4), pm);
    bool isWritten = true;
    {
        const test::NoMoreFiles noMore;
        isWritten = writeProgressiveMesh(pm, path().c_str());
    }
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(readWhole(path()), "old");
}
#endif

TEST_F(KvmWriter, AnOlderFileIsReplacedEntirely) {
    test::writeWhole(path(), std::string(100000, 'x'));
    const KvmFile file = test::squareWithOneSplit();
    EXPECT_EQ(saved(file), file.bytes());
}

}  // namespace
}  // namespace korvalite::core
