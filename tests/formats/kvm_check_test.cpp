// SPDX-License-Identifier: MIT
#include "formats/kvm_check.h"

#include "formats/kvm_samples.h"
#include "progressive/level_update.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>

namespace korvalite::core {
namespace {

using test::KvmFile;
using test::KvmTest;

constexpr std::int64_t kAllowance = std::int64_t{256} << 20U;

TEST(CouldFill, AllowsNoMoreThanTheFilePlus256MiB) {
    ProgMeshHeader header;
    header.OriginalTriangleCount = 100;   // 1200
    header.OriginalVertexCount = 100;     // 1600
    header.OriginalIndicesUVCount = 100;  // 400
    header.OriginalCoordsUVCount = 100;   // 800
    header.OriginalColorCount = 100;      // 400
    header.OriginalMaskCount = 100;       // 100
    EXPECT_TRUE(couldFill(header, 0));
    const auto most = static_cast<std::uint32_t>(kAllowance - 4400);
    header.OriginalMaskCount = most;
    EXPECT_TRUE(couldFill(header, 0));
    EXPECT_TRUE(couldFill(header, -1)) << "a pipe has only the allowance";
    header.OriginalMaskCount = most + 1;
    EXPECT_FALSE(couldFill(header, 0));
    EXPECT_FALSE(couldFill(header, -1));
    EXPECT_TRUE(couldFill(header, 1));
}

TEST(CouldFill, AnySingleCountCanBeTooLarge) {
    constexpr std::uint32_t kHuge = std::numeric_limits<std::uint32_t>::max();
    constexpr std::uint32_t ProgMeshHeader::*kCounts[] = {
        &ProgMeshHeader::OriginalTriangleCount,  &ProgMeshHeader::OriginalVertexCount,
        &ProgMeshHeader::OriginalIndicesUVCount, &ProgMeshHeader::OriginalCoordsUVCount,
        &ProgMeshHeader::OriginalColorCount,     &ProgMeshHeader::OriginalMaskCount};
    for (const auto count : kCounts) {
        ProgMeshHeader header;
        header.*count = kHuge;
        EXPECT_FALSE(couldFill(header, 1000000));
    }
}

TEST(CouldFill, LimitsVerticesAndCornersTo31Bits) {
    constexpr std::int64_t kLargeFile = std::int64_t{1} << 50U;
    ProgMeshHeader header;
    header.OriginalTriangleCount = 0x7FFFFFFF / 3;
    header.OriginalVertexCount = 0x7FFFFFFF;
    EXPECT_TRUE(couldFill(header, kLargeFile));
    ++header.OriginalTriangleCount;
    EXPECT_FALSE(couldFill(header, kLargeFile));
    header.OriginalTriangleCount = 0;
    header.OriginalVertexCount = 0x80000000;
    EXPECT_FALSE(couldFill(header, kLargeFile));
}

// A change of the square that must be refused, because a level change would leave the bounds of an
// array.
struct Fault {
    const char* name;
    std::function<void(KvmFile&)> make;
};
void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.name;
}

class KvmFault : public KvmTest, public testing::WithParamInterface<Fault> {};

INSTANTIATE_TEST_SUITE_P(
    Index, KvmFault,
    testing::Values(
        Fault{"TriangleNamesNoVertex", [](KvmFile& file) { file.triangles[3] = 5; }},
        Fault{"TriangleNamesMinusOne", [](KvmFile& file) { file.triangles[0] = 0xFFFFFFFF; }},
        Fault{"DeadTriangleNamesNoVertex", [](KvmFile& file) { file.triangles[11] = 5; }},
        Fault{"CornerNamesNoUV", [](KvmFile& file) { file.indicesUV[0] = 5; }},
        Fault{"SplitOfNoVertex", [](KvmFile& file) { file.splits[0].vertex = 5; }},
        Fault{"SplitOfVertexMinusOne", [](KvmFile& file) { file.splits[0].vertex = -1; }},
        Fault{"PartnerIsNoVertex", [](KvmFile& file) { file.vertices[4].partner = 5; }},
        Fault{"PartnerIsMissing", [](KvmFile& file) { file.vertices[4].partner = -1; }},
        Fault{"CornerBehindTheLast", [](KvmFile& file) { file.splits[0].corners[1] = 12; }},
        Fault{"CornerMinusOne", [](KvmFile& file) { file.splits[0].corners[0] = -1; }},
        Fault{"UVIndexOfACornerIsNone",
              [](KvmFile& file) { file.splits[0].cornerUVIndices[3] = 5; }},
        Fault{"OldUVIndexIsNone",
              [](KvmFile& file) { file.splits[0].uvIndexPairs[0].oldIndex = 5; }},
        Fault{"NewUVIndexIsNone",
              [](KvmFile& file) { file.splits[0].uvIndexPairs[0].newIndex = -1; }},
        Fault{"FewerUVIndicesThanCorners",
              [](KvmFile& file) { file.splits[0].cornerUVIndices.pop_back(); }},
        Fault{"MoreUVIndicesThanCorners",
              [](KvmFile& file) { file.splits[0].cornerUVIndices.push_back(0); }},
        Fault{"FewerSavedUVsThanPairs", [](KvmFile& file) { file.splits[0].savedUVs.clear(); }},
        Fault{"FewerPairsThanSavedUVs", [](KvmFile& file) { file.splits[0].uvIndexPairs.clear(); }},
        Fault{"FewerColorsThanVertices", [](KvmFile& file) { file.colors.pop_back(); }},
        Fault{"NoColors", [](KvmFile& file) { file.colors.clear(); }},
        Fault{"FewerUVIndicesThanTriangleCorners",
              [](KvmFile& file) { file.indicesUV.pop_back(); }},
        Fault{"NoUVs",
              [](KvmFile& file) {
                  file.indicesUV.clear();
                  file.coordsUV.clear();
              }}),
    [](const auto& row) { return row.param.name; });

TEST_P(KvmFault, IsRefused) {
    KvmFile file = test::squareWithOneSplit();
    GetParam().make(file);
    ProgressiveMesh pm;
    EXPECT_EQ(load(pm, file.bytes()), 1);
}

TEST_P(KvmFault, IsRefusedByTheCheckOfALoadedMesh) {
    KvmFile file = test::squareWithOneSplit();
    ProgressiveMesh sound;
    test::fillFrom(file, sound);
    EXPECT_TRUE(canChangeLevel(sound));
    GetParam().make(file);
    ProgressiveMesh pm;
    test::fillFrom(file, pm);
    EXPECT_FALSE(canChangeLevel(pm));
}

// What can be processed is not refused, however odd it is.
class KvmOddity : public KvmTest, public testing::WithParamInterface<Fault> {};

INSTANTIATE_TEST_SUITE_P(
    Content, KvmOddity,
    testing::Values(
        Fault{"None", [](KvmFile&) {}},
        Fault{"RemovedTrianglesAreAnything",
              [](KvmFile& file) {
                  file.splits[0].removedTriangles = {-1, 1000000, 0};
              }},
        Fault{"PartnersOfVerticesThatStayAreAnything",
              [](KvmFile& file) { file.vertices[0].partner = 99; }},
        Fault{"VertexIsItsOwnPartner", [](KvmFile& file) { file.vertices[4].partner = 4; }},
        Fault{"CornerListedTwice", [](KvmFile& file) { file.splits[0].corners[1] = 2; }},
        Fault{"MaskOfAnotherLength", [](KvmFile& file) { file.mask.resize(2); }},
        Fault{"UVsThatNobodyNames", [](KvmFile& file) { file.coordsUV.resize(500); }},
        Fault{"ActiveCountsTooHigh",
              [](KvmFile& file) {
                  file.numActiveTriangles = 0xFFFFFFFF;
                  file.numActiveVertices = 0xFFFFFFFF;
              }},
        Fault{"ActiveCountsTooLow",
              [](KvmFile& file) {
                  file.numActiveTriangles = 0;
                  file.numActiveVertices = 0;
              }},
        Fault{"AllActiveAtTheLowestLevel", [](KvmFile& file) { file.activateAll(); }},
        Fault{"SameSplitTwice", [](KvmFile& file) { file.splits.push_back(file.splits[0]); }},
        Fault{"PositionBehindTheList", [](KvmFile& file) { file.position = 100; }},
        Fault{"PositionInFrontOfTheList", [](KvmFile& file) { file.position = -100; }}),
    [](const auto& row) { return row.param.name; });

TEST_P(KvmOddity, IsLoadedAndStaysInBounds) {
    KvmFile file = test::squareWithOneSplit();
    GetParam().make(file);
    for (const std::int32_t wanted : {0, 1, 4, 5}) {
        ProgressiveMesh pm;
        ASSERT_EQ(load(pm, file.bytes(), wanted), 0);
        for (const std::int32_t target : {5, 0, 4, 100, -1}) {
            EXPECT_EQ(updateMeshAtLevel(pm, target), 0);
            EXPECT_EQ(pm.mesh.vertices.size(), 5U);
        }
        EXPECT_TRUE(canChangeLevel(pm)) << "what was in range stays in range";
    }
}

}  // namespace
}  // namespace korvalite::core
