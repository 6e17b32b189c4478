// SPDX-License-Identifier: MIT
#include "formats/vok_reader.h"

#include "support/scratch_folder.h"
#include "support/vok_builder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using test::ScratchFolder;
using test::VokBuilder;

constexpr std::uint32_t kTriangle = VokBuilder::kTriangle;

// Every tag that means something to the reader, except the end and the three pure markers.
constexpr std::array<std::uint32_t, 15> kTagsWithPayload{5000,  5001,  10000, 10001, 10002,
                                                         20000, 20001, 20002, 20003, 25001,
                                                         25002, 30001, 30002, 35001, 77777};
constexpr std::array<std::uint32_t, 3> kMarkerTags{25000, 30000, 35000};

bool import(const VokBuilder& vok, DMesh& mesh) {
    const ScratchFolder folder;
    return importDMesh(vok.writeTo(folder).c_str(), mesh);
}

// The mesh of a file with a valid header.
DMesh imported(const VokBuilder& vok) {
    DMesh mesh;
    EXPECT_TRUE(import(vok, mesh));
    return mesh;
}

std::vector<float> flat(const std::vector<UVCoord>& uvs) {
    std::vector<float> values;
    for (const UVCoord& uv : uvs) {
        values.push_back(uv.u);
        values.push_back(uv.v);
    }
    return values;
}

void expectAllActive(const DMesh& mesh) {
    EXPECT_EQ(mesh.vertexActive.count(), mesh.vertexCount());
    EXPECT_EQ(mesh.vertexActive.CountSet(), mesh.vertexCount());
    EXPECT_EQ(mesh.numActiveVertices, mesh.vertices.size());
    EXPECT_EQ(mesh.triangleActive.count(), mesh.triangleCount());
    EXPECT_EQ(mesh.triangleActive.CountSet(), mesh.triangleCount());
    EXPECT_EQ(mesh.numActiveTriangles, mesh.triangles.size() / 3);
}

//   3---2     a quad and a triangle next to it
//   |   | \.
//   0---1--4
VokBuilder quadAndTriangle() {
    VokBuilder vok;
    vok.points({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0}});
    vok.faces({{0, 1, 2, 3}, {1, 4, 2, kTriangle}});
    return vok;
}

const std::vector<std::uint32_t> kQuadAndTriangleSplit{0, 1, 2, 0, 2, 3, 1, 4, 2};

TEST(VokReader, HeaderAloneIsAnEmptyMesh) {
    const DMesh mesh = imported(VokBuilder());
    EXPECT_TRUE(mesh.vertices.empty());
    EXPECT_TRUE(mesh.triangles.empty());
    EXPECT_TRUE(mesh.boundingBox.isEmpty());
    EXPECT_EQ(mesh.boundingBox.min.x, 0);
    EXPECT_EQ(mesh.boundingBox.max.x, -1);
    expectAllActive(mesh);
}

TEST(VokReader, UnopenableFileFailsAndLeavesTheMesh) {
    const ScratchFolder folder;
    DMesh mesh;
    mesh.vertices.resize(1);
    EXPECT_FALSE(importDMesh((folder / u8"missing.Vok").c_str(), mesh));
    EXPECT_FALSE(importDMesh(folder.path().c_str(), mesh));
    EXPECT_FALSE(importDMesh("", mesh));
    EXPECT_FALSE(importDMesh(HeapString(), mesh));
    EXPECT_EQ(mesh.vertices.size(), 1U);
    EXPECT_EQ(mesh.vertexActive.count(), 0);
}

TEST(VokReader, OtherMagicFailsAndLeavesTheMesh) {
    for (const char* magic : {"Vokc", "vokb", "GoZb", "\0\0\0\0"}) {
        DMesh mesh;
        mesh.vertices.resize(1);
        VokBuilder vok(std::string_view(magic, 4));
        EXPECT_FALSE(import(vok.points({{0, 0, 0}, {1, 1, 1}}), mesh));
        EXPECT_EQ(mesh.vertices.size(), 1U);
    }
}

TEST(VokReader, HeaderOf31BytesFails) {
    const ScratchFolder folder;
    const std::string path = folder / u8"short.Vok";
    for (const std::size_t length : {0U, 3U, 4U, 31U}) {
        test::writeWhole(path, VokBuilder().bytes().substr(0, length));
        DMesh mesh;
        EXPECT_FALSE(importDMesh(path.c_str(), mesh)) << length;
    }
}

TEST(VokReader, ReservedBytesOfTheHeaderAreIgnored) {
    const ScratchFolder folder;
    const std::string path = folder / u8"mesh.Vok";
    test::writeWhole(path, "Vokb" + std::string(28, '\x7F'));
    DMesh mesh;
    EXPECT_TRUE(importDMesh(path.c_str(), mesh));
}

TEST(VokReader, ClosedFileHasNoHeader) {
    platform::File closed;
    VokBlockHeader header;
    EXPECT_FALSE(readVokFileHeader(closed));
    EXPECT_FALSE(readVokBlockHeader(closed, header));
}

TEST(VokReader, BlockHeaderIsFourWordsAndCountsAs16Bytes) {
    const ScratchFolder folder;
    const std::string path = folder / u8"blocks";
    test::writeWhole(path, VokBuilder().block(20003, 28, 1, "abc").bytes().substr(32));
    platform::File file = platform::File::open(path.c_str(), "rb");
    VokBlockHeader header;
    ASSERT_TRUE(readVokBlockHeader(file, header));
    EXPECT_EQ(header.Tag, Vok_TAG_FACE3_LIST);
    EXPECT_EQ(header.Size, 28U);
    EXPECT_EQ(header.Count, 1U);
    EXPECT_EQ(file.tell(), 16);
    EXPECT_FALSE(readVokBlockHeader(file, header)) << "three bytes are left";
}

TEST(VokReader, PointsAndTrianglesAreReadUnchanged) {
    VokBuilder vok;
    vok.points({{1, -2, 3}, {4, 5, -6}, {0.5F, 0, 0}}).triangles({{0, 1, 2}, {2, 1, 0}}).end();
    const DMesh mesh = imported(vok);
    ASSERT_EQ(mesh.vertices.size(), 3U);
    EXPECT_EQ(mesh.vertices[1].x, 4);
    EXPECT_EQ(mesh.vertices[1].y, 5);
    EXPECT_EQ(mesh.vertices[1].z, -6);
    EXPECT_EQ(mesh.vertices[1].partner, kNone);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 1, 2, 2, 1, 0}));
    EXPECT_EQ(mesh.boundingBox.min.y, -2);
    EXPECT_EQ(mesh.boundingBox.max.x, 4);
    expectAllActive(mesh);
}

TEST(VokReader, ActivityBitsFillWholeBytes) {
    VokBuilder vok;
    vok.points(std::vector<std::array<float, 3>>(9)).triangles({{0, 1, 2}});
    const DMesh mesh = imported(vok);
    ASSERT_EQ(mesh.vertexActive.byteCount(), 2U);
    EXPECT_EQ(mesh.vertexActive.data()[1], 0xFF);
    EXPECT_EQ(mesh.triangleActive.data()[0], 0xFF);
}

TEST(VokReader, BoundingBoxCoversUnusedVerticesToo) {
    const DMesh mesh = imported(VokBuilder().points({{1, 1, 1}, {-9, 2, 8}}));
    EXPECT_EQ(mesh.boundingBox.min.x, -9);
    EXPECT_EQ(mesh.boundingBox.max.z, 8);
}

TEST(VokReader, Face4ListOfTrianglesGivesOneTrianglePerFace) {
    VokBuilder vok;
    vok.faces({{0, 1, 2, kTriangle}, {3, 4, 5, kTriangle}});
    // As every face has the marker, each takes three pairs.
    vok.faceUVs({{0, 1, 2, 3, 4, 5, -1, -1}, {6, 7, 8, 9, 10, 11, -1, -1}});
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(flat(mesh.coordsUV), (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    expectAllActive(mesh);
}

TEST(VokReader, QuadIsSplitAlongCorners0And2) {
    const DMesh mesh = imported(VokBuilder().faces({{7, 8, 9, 10}}));
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{7, 8, 9, 7, 9, 10}));
}

TEST(VokReader, FourthIndexBelowAllOnesMakesAQuad) {
    for (const std::uint32_t fourth : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU}) {
        const DMesh mesh = imported(VokBuilder().faces({{7, 8, 9, fourth}}));
        EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{7, 8, 9, 7, 9, fourth}));
    }
}

TEST(VokReader, Face4UVsFollowTheSplitOfTheFaces) {
    VokBuilder vok = quadAndTriangle();
    vok.faceUVs({{0, 1, 2, 3, 4, 5, 6, 7}, {10, 11, 12, 13, 14, 15, 16, 17}}).end();
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.triangles, kQuadAndTriangleSplit);
    EXPECT_EQ(flat(mesh.coordsUV),
              (std::vector<float>{0, 1, 2, 3, 4, 5, 0, 1, 4, 5, 6, 7, 10, 11, 12, 13, 14, 15}));
    EXPECT_TRUE(mesh.indicesUV.empty());
}

TEST(VokReader, Face4UVsWithoutFace4ListAreDropped) {
    const std::vector<std::array<float, 8>> uvs{{0, 1, 2, 3, 4, 5, 6, 7}};
    EXPECT_TRUE(imported(VokBuilder().faceUVs(uvs)).coordsUV.empty());
    EXPECT_TRUE(imported(VokBuilder().triangles({{0, 1, 2}}).faceUVs(uvs)).coordsUV.empty());
    EXPECT_TRUE(imported(VokBuilder().faceUVs(uvs).faces({{0, 1, 2, 3}})).coordsUV.empty());
}

TEST(VokReader, Face4UVsWithoutFace4ListLeaveEarlierUVs) {
    VokBuilder vok;
    vok.triangles({{0, 1, 2}}).triangleUVs({{0, 1, 2, 3, 4, 5}});
    vok.faceUVs({{9, 9, 9, 9, 9, 9, 9, 9}});
    EXPECT_EQ(flat(imported(vok).coordsUV), (std::vector<float>{0, 1, 2, 3, 4, 5}));
}

TEST(VokReader, TriangleUVsAreReadUnchanged) {
    const DMesh mesh = imported(VokBuilder().triangleUVs({{0, 1, 2, 3, 4, 5}}));
    EXPECT_EQ(flat(mesh.coordsUV), (std::vector<float>{0, 1, 2, 3, 4, 5}));
}

TEST(VokReader, MarkerOfSize16IsHarmless) {
    for (const std::uint32_t tag : kMarkerTags) {
        const DMesh mesh = imported(VokBuilder().block(tag, 16, 0).points({{1, 2, 3}}).end());
        EXPECT_EQ(mesh.vertices.size(), 1U) << tag;
    }
}

TEST(VokReader, MarkersIgnoreTheirSize) {
    for (const std::uint32_t tag : kMarkerTags) {
        for (const std::uint32_t size : {0U, 15U, 24U, 0xFFFFFFFFU}) {
            const DMesh mesh = imported(VokBuilder().block(tag, size, 9).points({{1, 2, 3}}));
            EXPECT_EQ(mesh.vertices.size(), 1U) << tag << " of size " << size;
        }
    }
}

TEST(VokReader, PayloadOfAMarkerIsReadAsTheNextHeader) {
    VokBuilder vok;
    // The eight bytes are the tag and size of a block; the tag and size of the point list become
    // its count and reserved word.
    vok.block(25000, 24, 0, VokBuilder().word(77777).word(16 + 8).bytes().substr(32));
    vok.points({{1, 2, 3}}).mask("ab");
    const DMesh mesh = imported(vok);
    EXPECT_TRUE(mesh.vertices.empty());
    // That block skips the rest of the point list's header, and the bytes that follow are not a
    // header either.
    EXPECT_TRUE(mesh.maskValues.empty());
}

TEST(VokReader, GroupsAndUnknownBlocksAreSkipped) {
    for (const std::uint32_t tag : {5000U, 5001U, 10000U, 10002U, 20000U, 20002U, 1U, 77777U}) {
        for (const std::size_t length : {0U, 1U, 40U}) {
            VokBuilder vok;
            vok.list(tag, 3, std::string(length, '\x11')).points({{1, 2, 3}}).end();
            EXPECT_EQ(imported(vok).vertices.size(), 1U) << tag << " with " << length;
        }
    }
}

TEST(VokReader, SkippedBlockAbove2GiBSeeksForward) {
    DMesh mesh;
    EXPECT_TRUE(import(VokBuilder().block(77777, 0xFFFFFFF0, 0).points({{1, 2, 3}}), mesh));
    EXPECT_TRUE(mesh.vertices.empty());
}

TEST(VokReader, EndStopsTheWalkWhateverItsSize) {
    for (const std::uint32_t size : {0U, 16U, 99U}) {
        const DMesh mesh = imported(VokBuilder().points({{1, 2, 3}}).block(0, size, 0).mask("a"));
        EXPECT_EQ(mesh.vertices.size(), 1U);
        EXPECT_TRUE(mesh.maskValues.empty());
    }
}

TEST(VokReader, SizeBelow16EndsTheWalk) {
    for (const std::uint32_t tag : kTagsWithPayload) {
        for (const std::uint32_t size : {0U, 1U, 15U}) {
            VokBuilder vok;
            vok.triangles({{0, 1, 2}}).block(tag, size, 1, std::string(32, '\0'));
            const DMesh mesh = imported(vok.points({{1, 2, 3}}).end());
            EXPECT_EQ(mesh.triangles.size(), 3U) << tag << " of size " << size;
            EXPECT_TRUE(mesh.vertices.empty()) << tag << " of size " << size;
        }
    }
}

TEST(VokReader, Mask16KeepsTheHighByte) {
    const DMesh mesh = imported(VokBuilder().mask16({0xAB12, 0x00FF, 0xFF00}));
    EXPECT_EQ(mesh.maskValues, (std::vector<std::uint8_t>{0xAB, 0x00, 0xFF}));
}

TEST(VokReader, ColorBytesAreSwappedAndTheMaskByteKept) {
    const DMesh mesh = imported(VokBuilder().colors({{10, 20, 30, 40}}));
    ASSERT_EQ(mesh.vertexColors.size(), 1U);
    EXPECT_EQ(mesh.vertexColors[0], 30U | 20U << 8U | 10U << 16U | 40U << 24U);
}

TEST(VokReader, UniformMaskIsDropped) {
    for (const char* mask : {"", "a", "aaaa"}) {
        DMesh mesh = imported(VokBuilder().mask(mask));
        dropUniformMask(mesh);
        EXPECT_TRUE(mesh.maskValues.empty()) << mask;
        EXPECT_EQ(mesh.maskValues.capacity(), 0U) << mask;
    }
    for (const char* mask : {"ab", "aaab", "baaa"}) {
        DMesh mesh = imported(VokBuilder().mask(mask));
        const auto before = mesh.maskValues;
        dropUniformMask(mesh);
        EXPECT_EQ(mesh.maskValues, before);
    }
}

TEST(VokReader, IndicesOutOfRangeAreAccepted) {
    const DMesh mesh = imported(VokBuilder().points({{0, 0, 0}}).triangles({{0, 5, 0xFFFFFFFF}}));
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 5, 0xFFFFFFFF}));
}

TEST(VokReader, SecondListReplacesTheFirst) {
    VokBuilder vok = quadAndTriangle();
    vok.mask("abcde").colors({{1, 2, 3, 4}});
    vok.points({{9, 9, 9}}).triangles({{0, 0, 0}}).mask("z").colors({{5, 6, 7, 8}, {0, 0, 0, 0}});
    const DMesh mesh = imported(vok);
    ASSERT_EQ(mesh.vertices.size(), 1U);
    EXPECT_EQ(mesh.vertices[0].x, 9);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 0, 0}));
    EXPECT_EQ(mesh.maskValues, (std::vector<std::uint8_t>{'z'}));
    EXPECT_EQ(mesh.vertexColors.size(), 2U);
    EXPECT_EQ(mesh.boundingBox.min.x, 9);
    expectAllActive(mesh);
}

TEST(VokReader, OrderOfBlocksIsFree) {
    VokBuilder vok;
    vok.colors({{10, 20, 30, 40}}).mask("m").triangleUVs({{0, 1, 2, 3, 4, 5}});
    vok.triangles({{0, 0, 0}}).points({{1, 2, 3}}).end();
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.vertices.size(), 1U);
    EXPECT_EQ(mesh.triangles.size(), 3U);
    EXPECT_EQ(mesh.coordsUV.size(), 3U);
    EXPECT_TRUE(mesh.hasMask());
    EXPECT_TRUE(mesh.hasColors());
}

TEST(VokReader, CountAboveThePayloadIsFilledWithZeros) {
    VokBuilder vok;
    vok.list(10001, 2, VokBuilder::bytesOf<std::array<float, 3>>({{1, 2, 3}}));
    vok.list(20003, 2, VokBuilder::bytesOf<std::array<std::uint32_t, 3>>({{1, 2, 3}}));
    vok.list(25002, 2, VokBuilder::bytesOf<std::array<float, 6>>({{1, 2, 3, 4, 5, 6}}));
    vok.list(35001, 2, "\x01\x02\x03\x04");
    vok.list(30001, 3, "a").end();
    const DMesh mesh = imported(vok);
    ASSERT_EQ(mesh.vertices.size(), 2U);
    EXPECT_EQ(mesh.vertices[0].z, 3);
    EXPECT_EQ(mesh.vertices[1].x, 0);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{1, 2, 3, 0, 0, 0}));
    EXPECT_EQ(flat(mesh.coordsUV), (std::vector<float>{1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(mesh.vertexColors, (std::vector<std::uint32_t>{0x04010203, 0}));
    EXPECT_EQ(mesh.maskValues, (std::vector<std::uint8_t>{'a', 0, 0}));
}

TEST(VokReader, Face4RecordsBeyondThePayloadAreZeroQuads) {
    VokBuilder vok;
    vok.list(20001, 2, VokBuilder::bytesOf<std::array<std::uint32_t, 4>>({{1, 2, 3, kTriangle}}));
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{1, 2, 3, 0, 0, 0, 0, 0, 0}));
}

TEST(VokReader, PayloadAboveTheCountIsSkipped) {
    VokBuilder vok;
    vok.list(10001, 1, VokBuilder::bytesOf<std::array<float, 3>>({{1, 2, 3}, {4, 5, 6}}));
    vok.list(20001, 1,
             VokBuilder::bytesOf<std::array<std::uint32_t, 4>>(
                 {{1, 2, 3, kTriangle}, {4, 5, 6, kTriangle}}));
    vok.list(30001, 1, "abc");
    vok.list(25001, 0, std::string(40, 'x'));
    vok.list(35001, 1, "\x01\x02\x03\x04garbage").triangleUVs({{0, 1, 2, 3, 4, 5}}).end();
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.vertices.size(), 1U);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(mesh.maskValues, (std::vector<std::uint8_t>{'a'}));
    EXPECT_EQ(mesh.vertexColors, (std::vector<std::uint32_t>{0x04010203}));
    EXPECT_EQ(mesh.coordsUV.size(), 3U) << "the next block is found";
}

TEST(VokReader, NegativeCountIsZero) {
    for (const std::uint32_t tag : kTagsWithPayload) {
        for (const std::uint32_t count : {0x80000000U, 0xFFFFFFFFU}) {
            VokBuilder vok;
            vok.block(tag, 16 + 48, count, std::string(48, '\1'));
            const DMesh mesh = imported(vok.triangleUVs({{0, 1, 2, 3, 4, 5}}).end());
            EXPECT_TRUE(mesh.vertices.empty()) << tag;
            EXPECT_TRUE(mesh.triangles.empty()) << tag;
            EXPECT_TRUE(mesh.maskValues.empty()) << tag;
            EXPECT_TRUE(mesh.vertexColors.empty()) << tag;
            EXPECT_EQ(mesh.coordsUV.size(), 3U) << tag;
        }
    }
}

TEST(VokReader, EnormousCountFailsInsteadOfAllocating) {
    for (const std::uint32_t tag :
         {10001U, 20001U, 20003U, 25001U, 25002U, 30001U, 30002U, 35001U}) {
        for (const std::uint32_t size : {16U, 16U + 48U, 0xFFFFFFFFU}) {
            DMesh mesh;
            VokBuilder vok;
            EXPECT_FALSE(import(vok.block(tag, size, 0x7FFFFFFF, std::string(48, '\0')), mesh))
                << tag << " of size " << size;
            EXPECT_TRUE(mesh.vertices.empty());
            EXPECT_TRUE(mesh.triangles.empty());
        }
    }
}

TEST(VokReader, MoreCornersThanAnIndexCanNameFail) {
    const ScratchFolder folder;
    for (const std::uint32_t tag : {20003U, 25002U}) {
        const std::string path = VokBuilder().block(tag, 16, 715827883).writeTo(folder);
        DMesh mesh;
        EXPECT_FALSE(importDMesh(path.c_str(), mesh, std::int64_t{1} << 50U)) << tag;
    }
}

TEST(VokReader, AllBlocksShareOneAllowanceBeyondTheFile) {
    const ScratchFolder folder;
    VokBuilder vok;
    vok.block(30001, 16, 600).block(35001, 16 + 4, 101, "abcd").end();
    const std::string path = vok.writeTo(folder);
    DMesh mesh;
    EXPECT_TRUE(importDMesh(path.c_str(), mesh, 1000));
    EXPECT_EQ(mesh.maskValues.size(), 600U);
    EXPECT_EQ(mesh.vertexColors.size(), 101U);
    EXPECT_FALSE(importDMesh(path.c_str(), mesh, 999));
    EXPECT_FALSE(importDMesh(path.c_str(), mesh, 599));
}

TEST(VokReader, PromisedPayloadMustFitTheFileOrTheAllowance) {
    const ScratchFolder folder;
    const std::string path = VokBuilder().block(30001, 16 + 1000, 1000, "abcd").writeTo(folder);
    DMesh mesh;
    EXPECT_TRUE(importDMesh(path.c_str(), mesh, 996));
    EXPECT_EQ(mesh.maskValues.size(), 1000U);
    EXPECT_EQ(mesh.maskValues[3], 'd');
    EXPECT_EQ(mesh.maskValues[4], 0);
    EXPECT_FALSE(importDMesh(path.c_str(), mesh, 995));
}

TEST(VokReader, CompleteFileNeedsNoAllowance) {
    const ScratchFolder folder;
    VokBuilder vok;
    vok.points({{1, 2, 3}}).faces({{0, 0, 0, 0}, {0, 0, 0, 0}}).faceUVs({{}, {}});
    vok.mask("a").mask16({1}).colors({{1, 2, 3, 4}}).triangles({{0, 0, 0}}).triangleUVs({{}}).end();
    DMesh mesh;
    EXPECT_TRUE(importDMesh(vok.writeTo(folder).c_str(), mesh, 0));
    EXPECT_EQ(mesh.vertexColors.size(), 1U);
}

TEST(VokReader, ShortFace4ListHasNoEffect) {
    VokBuilder vok = quadAndTriangle();
    vok.block(20001, 16 + 32, 2, VokBuilder::bytesOf<std::array<std::uint32_t, 4>>({{3, 2, 1, 0}}));
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.triangles, kQuadAndTriangleSplit);
    expectAllActive(mesh);
}

TEST(VokReader, TruncatedFace4ListHasNoEffectEvenWithAllItsRecords) {
    VokBuilder vok = quadAndTriangle();
    vok.block(20001, 16 + 32, 1, VokBuilder::bytesOf<std::array<std::uint32_t, 4>>({{3, 2, 1, 0}}));
    EXPECT_EQ(imported(vok).triangles, kQuadAndTriangleSplit);
}

TEST(VokReader, ShortFace4UVsHaveNoEffect) {
    VokBuilder vok = quadAndTriangle();
    vok.block(25001, 16 + 64, 2, VokBuilder::bytesOf<std::array<float, 8>>({{1, 2, 3}}));
    EXPECT_TRUE(imported(vok).coordsUV.empty());
}

TEST(VokReader, Face4UVsOfAnotherLengthStayInBounds) {
    const std::array<float, 8> uv{0, 1, 2, 3, 4, 5, 6, 7};
    for (const std::size_t count : {0U, 1U, 2U, 3U, 50U}) {
        VokBuilder vok = quadAndTriangle();
        vok.faceUVs(std::vector<std::array<float, 8>>(count, uv));
        const DMesh mesh = imported(vok);
        ASSERT_EQ(mesh.coordsUV.size(), 9U) << count;
        EXPECT_EQ(mesh.coordsUV[8].u, count > 1 ? 4 : 0) << count;
    }
}

TEST(VokReader, Face4UVsFollowAShorterSecondFaceList) {
    VokBuilder vok = quadAndTriangle();
    vok.faces({{0, 1, 2, kTriangle}});
    vok.faceUVs({{0, 1, 2, 3, 4, 5, 6, 7}, {9, 9, 9, 9, 9, 9, 9, 9}});
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 1, 2}));
    EXPECT_EQ(flat(mesh.coordsUV), (std::vector<float>{0, 1, 2, 3, 4, 5}));
}

TEST(VokReader, MarksOfAnEarlierFaceListAreForgotten) {
    VokBuilder vok;
    vok.faces({{0, 1, 2, kTriangle}}).faces({{0, 1, 2, 3}});
    vok.faceUVs({{0, 1, 2, 3, 4, 5, 6, 7}});
    EXPECT_EQ(flat(imported(vok).coordsUV),
              (std::vector<float>{0, 1, 2, 3, 4, 5, 0, 1, 4, 5, 6, 7}));
}

TEST(VokReader, Face4UVsAfterTrianglesFollowTheStaleSplit) {
    // Triangles do not change what is known about the quads before them.
    VokBuilder vok = quadAndTriangle();
    vok.triangles({{0, 1, 2}});
    vok.faceUVs({{0, 1, 2, 3, 4, 5, 6, 7}, {9, 9, 9, 9, 9, 9, 9, 9}});
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.triangles.size(), 3U);
    EXPECT_EQ(mesh.coordsUV.size(), 9U);
}

VokBuilder everyBlockKind() {
    VokBuilder vok;
    vok.list(5000, 1, "ab").list(5001, 1, std::string(4, '\0')).list(10000, 0, "");
    vok.points({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0}});
    vok.list(10002, 1, std::string(24, 'd')).list(20000, 0, "").list(20002, 1, "xyz");
    vok.triangles({{4, 4, 4}}).faces({{0, 1, 2, 3}, {1, 4, 2, kTriangle}});
    vok.block(25000, 16, 0).triangleUVs({{9, 9, 9, 9, 9, 9}});
    vok.faceUVs({{0, 1, 2, 3, 4, 5, 6, 7}, {10, 11, 12, 13, 14, 15, 16, 17}});
    vok.block(30000, 16, 0).mask("abcde").mask16({0x6100, 0x6200, 0x6300, 0x6400, 0x6500});
    vok.block(35000, 16, 0).colors({{1, 2, 3, 4}, {1, 2, 3, 4}, {1, 2, 3, 4}, {}, {}});
    vok.list(12345, 0, "unknown").end();
    return vok;
}

TEST(VokReader, TruncationAtEveryByteIsANormalEnd) {
    const ScratchFolder folder;
    const std::string path = folder / u8"cut.Vok";
    const std::string whole = everyBlockKind().bytes();
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        test::writeWhole(path, whole.substr(0, length));
        DMesh mesh;
        ASSERT_EQ(importDMesh(path.c_str(), mesh), length >= 32) << length;
        if (length < 32) continue;
        expectAllActive(mesh);
        EXPECT_EQ(mesh.triangles.size() % 3, 0U);
        EXPECT_TRUE(mesh.coordsUV.empty() || mesh.coordsUV.size() == 3 ||
                    mesh.coordsUV.size() == 9);
    }
    const DMesh mesh = imported(everyBlockKind());
    EXPECT_EQ(mesh.triangles, kQuadAndTriangleSplit);
    EXPECT_EQ(mesh.coordsUV.size(), 9U);
    EXPECT_EQ(mesh.maskValues, (std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e'}));
    EXPECT_EQ(mesh.vertexColors.size(), 5U);
}

TEST(VokReader, SurvivesEveryByteFlipped) {
    const ScratchFolder folder;
    const std::string path = folder / u8"flipped.Vok";
    const std::string whole = everyBlockKind().bytes();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string bytes = whole;
        bytes[at] = static_cast<char>(~bytes[at]);
        test::writeWhole(path, bytes);
        DMesh mesh;
        if (importDMesh(path.c_str(), mesh, 1 << 20U)) expectAllActive(mesh);
    }
}

TEST(VokReader, ArraysHaveNoSpareCapacity) {
    VokBuilder vok;
    for (std::size_t n = 1; n < 20; ++n) {
        vok.points(std::vector<std::array<float, 3>>(n));
        vok.triangles(std::vector<std::array<std::uint32_t, 3>>(n));
        vok.mask(std::string(n, 'm'));
    }
    const DMesh mesh = imported(vok);
    EXPECT_EQ(mesh.vertices.capacity(), 19U);
    EXPECT_EQ(mesh.triangles.capacity(), 57U);
    EXPECT_EQ(mesh.maskValues.capacity(), 19U);
}

}  // namespace
}  // namespace korvalite::core
