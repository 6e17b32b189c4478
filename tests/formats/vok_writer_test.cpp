// SPDX-License-Identifier: MIT
#include "formats/vok_writer.h"

#include "formats/vok_reader.h"
#include "platform/platform.h"
#include "support/full_disk.h"
#include "support/no_more_files.h"
#include "support/scratch_folder.h"
#include "support/vok_builder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

using test::ScratchFolder;
using test::VokBuilder;

// What the writer puts before every mesh.
VokBuilder expectedStart() {
    VokBuilder vok;
    vok.block(5001, 20, 1, std::string(4, '\0'));
    return vok;
}

// The bytes of a mesh's file; empty if it could not be written.
std::string exported(const DMesh& mesh) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.Vok";
    return exportDMesh(path.c_str(), mesh) ? test::readWhole(path) : std::string();
}

void activate(BitArray& bits, std::int32_t count) {
    bits.Free();
    bits.Resize(count, true);
}

//   3---2     two triangles, all active, with room for UVs, mask and colours
//   | \ |
//   0---1
DMesh square() {
    DMesh mesh;
    mesh.vertices.resize(4);
    mesh.vertices[1].setPosition({1, 0, 0.5F});
    mesh.vertices[2].setPosition({1, 1, -0.0F});
    mesh.vertices[3].setPosition({0, 1, 0});
    mesh.triangles = {0, 1, 3, 1, 2, 3};
    activate(mesh.vertexActive, 4);
    activate(mesh.triangleActive, 2);
    return mesh;
}

const std::vector<std::array<float, 3>> kSquarePoints{
    {0, 0, 0}, {1, 0, 0.5F}, {1, 1, -0.0F}, {0, 1, 0}};

TEST(VokWriter, WritesAPlainMesh) {
    const std::string expected =
        expectedStart().points(kSquarePoints).triangles({{0, 1, 3}, {1, 2, 3}}).end().bytes();
    EXPECT_EQ(exported(square()), expected);
}

TEST(VokWriter, AnEmptyMeshGivesEmptyBlocks) {
    // Counts of 0 match everything, so even the lists without elements are written.
    const std::string expected =
        expectedStart().points({}).triangles({}).triangleUVs({}).mask("").colors({}).end().bytes();
    EXPECT_EQ(exported(DMesh()), expected);
    EXPECT_EQ(expected.size(), 32U + 20 + 6 * 16);
}

TEST(VokWriter, WithoutActiveVerticesWritesEmptyPointsAndTriangles) {
    DMesh mesh = square();
    mesh.vertexActive.Reset(4);
    mesh.triangleActive.Reset(2);
    EXPECT_EQ(exported(mesh), expectedStart().points({}).triangles({}).end().bytes());
}

TEST(VokWriter, WithoutTrianglesWritesAnEmptyUVBlock) {
    DMesh mesh = square();
    mesh.triangles.clear();
    activate(mesh.triangleActive, 0);
    EXPECT_EQ(exported(mesh),
              expectedStart().points(kSquarePoints).triangles({}).triangleUVs({}).end().bytes());
}

TEST(VokWriter, OmitsDeadVerticesAndKeepsIndicesDense) {
    DMesh mesh = square();
    mesh.vertexActive.Clear(0);
    mesh.triangleActive.Clear(0);
    mesh.maskValues = {'a', 'b', 'c', 'd'};
    mesh.vertexColors = {1, 0x44332211, 0xFF00FF00, 0};
    EXPECT_EQ(exported(mesh),
              expectedStart()
                  .points({kSquarePoints[1], kSquarePoints[2], kSquarePoints[3]})
                  .triangles({{0, 1, 2}})
                  .mask("bcd")
                  .colors({{0x33, 0x22, 0x11, 0}, {0x00, 0xFF, 0x00, 0}, {0, 0, 0, 0}})
                  .end()
                  .bytes());
}

TEST(VokWriter, ActiveTriangleAtADeadVertexGetsIndexMinusOne) {
    DMesh mesh = square();
    mesh.vertexActive.Clear(0);
    EXPECT_EQ(exported(mesh), expectedStart()
                                  .points({kSquarePoints[1], kSquarePoints[2], kSquarePoints[3]})
                                  .triangles({{0xFFFFFFFF, 0, 2}, {0, 1, 2}})
                                  .end()
                                  .bytes());
}

TEST(VokWriter, DoesNotFollowIndicesOutOfRange) {
    DMesh mesh = square();
    mesh.triangles[0] = 4;
    mesh.triangles[1] = 0xFFFFFFFF;
    mesh.coordsUV = {{1, 2}};
    mesh.indicesUV = {0, 1, 0xFFFFFFFF, 0, 0, 0};
    EXPECT_EQ(exported(mesh), expectedStart()
                                  .points(kSquarePoints)
                                  .triangles({{0xFFFFFFFF, 0xFFFFFFFF, 3}, {1, 2, 3}})
                                  .triangleUVs({{1, 2, 0, 0, 0, 0}, {1, 2, 1, 2, 1, 2}})
                                  .end()
                                  .bytes());
}

TEST(VokWriter, IgnoresActivityBitsBeyondTheArrays) {
    DMesh mesh;
    activate(mesh.vertexActive, 3);
    activate(mesh.triangleActive, 1);
    EXPECT_FALSE(exported(mesh).empty());
}

TEST(VokWriter, UVsAreWrittenPerCorner) {
    DMesh mesh = square();
    mesh.coordsUV = {{0, 0}, {1, 0}, {1, 1}, {0.25F, 1}};
    mesh.indicesUV = {0, 1, 3, 1, 2, 3};
    mesh.triangleActive.Clear(0);
    EXPECT_EQ(exported(mesh), expectedStart()
                                  .points(kSquarePoints)
                                  .triangles({{1, 2, 3}})
                                  .triangleUVs({{1, 0, 1, 1, 0.25F, 1}})
                                  .end()
                                  .bytes());
}

TEST(VokWriter, OmitsListsOfAnotherLength) {
    DMesh mesh = square();
    const std::string plain = exported(mesh);
    mesh.maskValues = {1, 2, 3};
    mesh.vertexColors = {1, 2, 3, 4, 5};
    mesh.indicesUV = {0, 0, 0};
    mesh.coordsUV = {{1, 1}};
    EXPECT_EQ(exported(mesh), plain);
}

TEST(VokWriter, FourthColorByteIsZero) {
    DMesh mesh = square();
    mesh.vertexColors = {0xFF030201, 0x80030201, 0x01030201, 0x00030201};
    EXPECT_EQ(exported(mesh), expectedStart()
                                  .points(kSquarePoints)
                                  .triangles({{0, 1, 3}, {1, 2, 3}})
                                  .colors({{3, 2, 1, 0}, {3, 2, 1, 0}, {3, 2, 1, 0}, {3, 2, 1, 0}})
                                  .end()
                                  .bytes());
}

// More than the writer buffers at a time.
DMesh longStrip(std::uint32_t count) {
    DMesh mesh;
    for (std::uint32_t i = 0; i < count; ++i) {
        mesh.vertices.push_back({static_cast<float>(i), 0.5F, static_cast<float>(i % 7)});
        mesh.maskValues.push_back(static_cast<std::uint8_t>(i));
        mesh.vertexColors.push_back(i & 0xFFFFFFU);
        mesh.coordsUV.push_back({static_cast<float>(i), 1});
    }
    for (std::uint32_t i = 0; i + 2 < count; ++i) {
        for (const std::uint32_t k : {0U, 1U, 2U}) {
            mesh.triangles.push_back(i + k);
            mesh.indicesUV.push_back(i + k);
        }
    }
    activate(mesh.vertexActive, mesh.vertexCount());
    activate(mesh.triangleActive, mesh.triangleCount());
    return mesh;
}

TEST(VokWriter, CanBeReadBack) {
    const ScratchFolder folder;
    const std::string path = folder / u8"größe 大.Vok";
    const DMesh mesh = longStrip(30000);
    ASSERT_TRUE(exportDMesh(path.c_str(), mesh));
    DMesh back;
    ASSERT_TRUE(importDMesh(path.c_str(), back));
    EXPECT_EQ(back.triangles, mesh.triangles);
    EXPECT_EQ(back.maskValues, mesh.maskValues);
    EXPECT_EQ(back.vertexColors, mesh.vertexColors);
    ASSERT_EQ(back.vertices.size(), mesh.vertices.size());
    ASSERT_EQ(back.coordsUV.size(), mesh.triangles.size());
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        ASSERT_EQ(back.vertices[i].x, mesh.vertices[i].x);
        ASSERT_EQ(back.vertices[i].z, mesh.vertices[i].z);
    }
    for (std::size_t c = 0; c < mesh.triangles.size(); ++c)
        ASSERT_EQ(back.coordsUV[c].u, static_cast<float>(mesh.triangles[c]));
}

TEST(VokWriter, ReplacesAnExistingFile) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.Vok";
    test::writeWhole(path, std::string(100000, 'x'));
    ASSERT_TRUE(exportDMesh(path.c_str(), square()));
    EXPECT_EQ(test::readWhole(path), exported(square()));
}

TEST(VokWriter, UnopenablePathsFail) {
    const ScratchFolder folder;
    EXPECT_FALSE(exportDMesh("", square()));
    EXPECT_FALSE(exportDMesh(HeapString(), square()));
    EXPECT_FALSE(exportDMesh((folder / u8"missing/out.Vok").c_str(), square()));
    EXPECT_FALSE(exportDMesh(folder.path().c_str(), square()));
    EXPECT_TRUE(platform::exists(folder.path().c_str()));
}

TEST(VokWriter, FailsToWriteAHeaderToAClosedFile) {
    platform::File closed;
    EXPECT_FALSE(writeVokFileHeader(closed));
    EXPECT_FALSE(writeVokBlockHeader(closed, {}));
}

#ifndef _WIN32
TEST(VokWriter, AFullDiskAtAnyPointLeavesNoFile) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.Vok";
    const DMesh small = square();
    const DMesh large = longStrip(30000);
    const std::size_t smallSize = exported(small).size();
    const std::size_t largeSize = exported(large).size();
    std::vector<std::pair<const DMesh*, std::size_t>> cases;
    for (std::size_t room = 0; room < smallSize; room += 3)
        cases.emplace_back(&small, room);
    for (std::size_t room = 1; room < largeSize; room += 50000)
        cases.emplace_back(&large, room);
    cases.emplace_back(&small, smallSize - 1);
    cases.emplace_back(&large, largeSize - 1);
    for (const auto& [mesh, room] : cases) {
        bool written = true;
        {
            const test::FullDisk disk(room);
            written = exportDMesh(path.c_str(), *mesh);
        }
        EXPECT_FALSE(written) << room;
        EXPECT_FALSE(platform::exists(path.c_str())) << room;
    }
    const test::FullDisk disk(largeSize);
    EXPECT_TRUE(exportDMesh(path.c_str(), large));
}

TEST(VokWriter, DeletesAnOldFileThatItCannotOpen) {
    const ScratchFolder folder;
    const std::string path = folder / u8"out.Vok";
    ASSERT_TRUE(exportDMesh(path.c_str(), square()));
    {
        const test::NoMoreFiles noMore;
        EXPECT_FALSE(exportDMesh(path.c_str(), square()));
    }
    EXPECT_FALSE(platform::exists(path.c_str()));
}

TEST(VokWriter, KeepsADeviceThatItCannotOpen) {
    const ScratchFolder folder;
    const std::string link = folder / u8"null.Vok";
    std::filesystem::create_symlink("/dev/null", test::pathOfUtf8(link));
    {
        const test::NoMoreFiles noMore;
        EXPECT_FALSE(exportDMesh(link.c_str(), square()));
    }
    EXPECT_TRUE(platform::exists(link.c_str()));
}

TEST(VokWriter, AFailingDeviceIsKept) {
    ASSERT_TRUE(platform::exists("/dev/full"));
    // Written through a link, so that deleting the output by mistake does no harm.
    const ScratchFolder folder;
    const std::string link = folder / u8"full.Vok";
    std::filesystem::create_symlink("/dev/full", test::pathOfUtf8(link));
    EXPECT_FALSE(exportDMesh(link.c_str(), square()));
    EXPECT_TRUE(platform::exists(link.c_str()));
}
#endif

}  // namespace
}  // namespace korvalite::core
