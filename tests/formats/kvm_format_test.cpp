// SPDX-License-Identifier: MIT
#include "formats/kvm_format.h"

#include "formats/kvm_samples.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace korvalite::core {
namespace {

using test::KvmFile;
using test::KvmTest;
using test::readWhole;
using test::writeWhole;

class KvmHeader : public KvmTest {
protected:
    std::string written(const ProgMeshHeader& header) const {
        platform::File file = platform::File::open(path().c_str(), "wb");
        EXPECT_EQ(writeProgMeshHeader(header, file), 0);
        file.close();
        return readWhole(path());
    }
    ProgMeshHeader read(const std::string& bytes) const {
        writeWhole(path(), bytes);
        ProgMeshHeader header;
        platform::File file = platform::File::open(path().c_str(), "rb");
        EXPECT_EQ(readProgMeshHeader(header, file), 0);
        return header;
    }
};

// Every field has a different value.
ProgMeshHeader distinctHeader() {
    ProgMeshHeader header;
    header.headerReserved = 0x01010101;
    header.meshFormatVersion = 0x02020202;
    header.headerFloats = {1.5F, 2.5F, 3.5F, 4.5F, 5.5F, -0.0F};
    header.headerFlags = {true, false, true, true};
    header.MemSpeedTradeOff = 0x03030303;
    header.BorderMode = 0x04040404;
    header.TargetNumItem = 0xF5050505;
    header.askedNumItem = -6;
    header.finalDecimNumItem = 0x07070707;
    header.CurVtxSplitPos = -8;
    header.NumVtxSplit = 0xF9090909;
    header.decimationFinishTriangleCount = -10;
    header.ProtectTopology = true;
    header.UseAreaWeighting = true;
    header.IsReordered = true;
    header.HandleUVs_Internal = true;
    header.OriginalTriangleCount = 0x11111111;
    header.OriginalVertexCount = 0x12121212;
    header.OriginalIndicesUVCount = 0x13131313;
    header.OriginalCoordsUVCount = 0x14141414;
    header.OriginalColorCount = 0x15151515;
    header.OriginalMaskCount = 0x16161616;
    return header;
}

std::uint32_t wordAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;)
        word = (word << 8U) | static_cast<unsigned char>(bytes.at(offset + i));
    return word;
}

constexpr std::size_t kByteFields[] = {32, 33, 34, 35, 68, 69, 70, 71, 72, 73, 74};

TEST_F(KvmHeader, EveryFieldIsAtItsOffset) {
    const std::string bytes = written(distinctHeader());
    ASSERT_EQ(bytes.size(), 99U);
    struct Row {
        std::size_t offset;
        std::uint32_t value;
    };
    for (const Row& row :
         {Row{0, 0x01010101},  Row{4, 0x02020202},  Row{8, 0x3FC00000},  Row{12, 0x40200000},
          Row{16, 0x40600000}, Row{20, 0x40900000}, Row{24, 0x40B00000}, Row{28, 0x80000000},
          Row{36, 0x03030303}, Row{40, 0x04040404}, Row{44, 0xF5050505}, Row{48, 0xFFFFFFFA},
          Row{52, 0x07070707}, Row{56, 0xFFFFFFF8}, Row{60, 0xF9090909}, Row{64, 0xFFFFFFF6},
          Row{75, 0x11111111}, Row{79, 0x12121212}, Row{83, 0x13131313}, Row{87, 0x14141414},
          Row{91, 0x15151515}, Row{95, 0x16161616}}) {
        EXPECT_EQ(wordAt(bytes, row.offset), row.value) << row.offset;
    }
    EXPECT_EQ(bytes.substr(32, 4), std::string("\1\0\1\1", 4));
    EXPECT_EQ(bytes.substr(68, 7), std::string("\1\0\1\0\1\0\1", 7));
}

TEST_F(KvmHeader, ReadsBackWhatItWrote) {
    const std::string bytes = written(distinctHeader());
    EXPECT_EQ(written(read(bytes)), bytes);
}

TEST_F(KvmHeader, NonzeroByteFieldsReadAsOne) {
    for (const std::size_t offset : kByteFields) {
        for (const char value : {'\x02', '\x80', '\xFF'}) {
            std::string bytes(99, '\0');
            bytes[offset] = value;
            std::string expected(99, '\0');
            expected[offset] = 1;
            EXPECT_EQ(written(read(bytes)), expected) << offset;
        }
    }
}

TEST_F(KvmHeader, ReadsWhatAShortFileHas) {
    const std::string bytes = written(distinctHeader());
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const std::string again = written(read(bytes.substr(0, length)));
        // A truncated word does not count at all.
        std::size_t same = 0;
        while (same < again.size() && again[same] == bytes[same])
            ++same;
        EXPECT_GE(same + 3, length) << length;
        for (std::size_t i = length; i < again.size(); ++i)
            ASSERT_EQ(again[i], 0) << length << ' ' << i;
    }
}

TEST_F(KvmHeader, AClosedFileHasNoEffect) {
    platform::File closed;
    EXPECT_EQ(writeProgMeshHeader(distinctHeader(), closed), 0);
    ProgMeshHeader header = distinctHeader();
    EXPECT_EQ(readProgMeshHeader(header, closed), 0);
    EXPECT_EQ(written(header), written(distinctHeader()));
}

TEST_F(KvmHeader, FillTakesEveryFieldFromTheMesh) {
    KvmFile file = test::squareWithOneSplit();
    file.version = 77;
    file.floats = {9, 8, 7, 6, 5, 4};
    file.flags = {0, 1, 0, 1};
    file.tradeOff = 2;
    file.borderMode = 2;
    file.target = 0xFFFFFFFF;
    file.asked = 12;
    file.finalCount = 34;
    file.position = 56;
    file.finishMark = 78;
    for (std::size_t i = 0; i < KvmFile::kSwitchCount; ++i) {
        file.switches = {};
        file.switches[i] = 1;
        ProgressiveMesh pm;
        test::fillFrom(file, pm);
        ProgMeshHeader header = distinctHeader();
        fillProgMeshHeader(header, pm);
        EXPECT_EQ(written(header), file.header()) << i;
    }
}

TEST_F(KvmHeader, ApplyCopiesAllButTheReservedWordAndTheCounts) {
    ProgressiveMesh pm;
    applyProgMeshHeader(distinctHeader(), pm);
    ProgMeshHeader again = distinctHeader();
    fillProgMeshHeader(again, pm);
    ProgMeshHeader expected = distinctHeader();
    expected.headerReserved = 0;
    expected.NumVtxSplit = 0;
    expected.OriginalTriangleCount = 0;
    expected.OriginalVertexCount = 0;
    expected.OriginalIndicesUVCount = 0;
    expected.OriginalCoordsUVCount = 0;
    expected.OriginalColorCount = 0;
    expected.OriginalMaskCount = 0;
    EXPECT_EQ(written(again), written(expected));
}

TEST_F(KvmHeader, OnlyLowMemoryDriversWriteABody) {
    for (std::int32_t value = -1; value < 8; ++value) {
        ProgMeshHeader header;
        header.MemSpeedTradeOff = value;
        EXPECT_EQ(hasBody(header), value == 1 || value == 2) << value;
    }
}

}  // namespace
}  // namespace korvalite::core
