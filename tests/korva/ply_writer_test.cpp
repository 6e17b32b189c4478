// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_writer.h"

#include "korva/ply_files.h"
#include "korva/square.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>

namespace korva::test {

namespace {

ImportedMesh throughFile(const korvalite::Mesh& mesh) {
    const ScratchFolder folder;
    const std::filesystem::path path = pathOfUtf8(folder / u8"mesh.ply");
    writePly(path, mesh);
    return readPly(path);
}

void expectSame(const korvalite::Mesh& a, const korvalite::Mesh& b) {
    EXPECT_EQ(a.positions, b.positions);
    EXPECT_EQ(a.triangles, b.triangles);
    EXPECT_EQ(a.colors, b.colors);
    EXPECT_EQ(a.mask, b.mask);
    expectSameUVs(a, b);
}

}  // namespace

TEST(PlyWriter, WritesANormalForEachVertex) {
    korvalite::Mesh mesh = square();
    addEverything(mesh);
    const ScratchFolder folder;
    const std::string path = folder / u8"mesh.ply";
    const std::vector<float> normals{0, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0, 1};
    writePly(pathOfUtf8(path), mesh, normals);
    const ImportedMesh read = readPly(pathOfUtf8(path));
    EXPECT_TRUE(read.hadNormals);
    expectSame(read.mesh, mesh);
    const std::string bytes = readWhole(path);
    EXPECT_NE(bytes.find("property float z\nproperty float nx\nproperty float ny\n"
                         "property float nz\nproperty uchar red\n"),
              std::string::npos);
    // The second vertex begins after one of three coordinates, a normal, a colour and a mask.
    const std::size_t second = bytes.find("end_header\n") + 11 + 29;
    std::array<float, 6> row{};
    std::memcpy(row.data(), &bytes[second], sizeof row);
    EXPECT_EQ(row, (std::array<float, 6>{1, 0, 0, 0, 1, 0}));
}

TEST(PlyWriter, WritesWhatTheReaderReads) {
    korvalite::Mesh mesh = square();
    expectSame(throughFile(mesh).mesh, mesh);
    addEverything(mesh);
    const ImportedMesh read = throughFile(mesh);
    expectSame(read.mesh, mesh);
    EXPECT_EQ(read.mesh.uvs.size(), mesh.uvs.size());
    EXPECT_EQ(read.notes, Notes{});
}

TEST(PlyWriter, EveryPartCanBeLeftOut) {
    for (unsigned parts = 0; parts < 8; ++parts) {
        korvalite::Mesh mesh = square();
        addEverything(mesh);
        if ((parts & 1U) == 0) mesh.colors.clear();
        if ((parts & 2U) == 0) mesh.mask.clear();
        if ((parts & 4U) == 0) mesh.uvs.clear();
        if ((parts & 4U) == 0) mesh.triangleUVs.clear();
        expectSame(throughFile(mesh).mesh, mesh);
    }
}

TEST(PlyWriter, KeepsEveryBitOfAFloat) {
    korvalite::Mesh mesh = square();
    mesh.positions[0] = std::numeric_limits<float>::denorm_min();
    mesh.positions[1] = -0.0F;
    mesh.positions[2] = std::nextafter(1.0F, 2.0F);
    const korvalite::Mesh read = throughFile(mesh).mesh;
    EXPECT_EQ(read.positions, mesh.positions);
    EXPECT_TRUE(std::signbit(read.positions[1]));
}

TEST(PlyWriter, WritesMeshesWithoutFacesOrAnything) {
    korvalite::Mesh mesh = square();
    mesh.triangles.clear();
    EXPECT_EQ(throughFile(mesh).mesh.positions, mesh.positions);
    EXPECT_EQ(throughFile({}).mesh.vertexCount(), 0U);
}

TEST(PlyWriter, EveryByteIsAsExpected) {
    korvalite::Mesh mesh;
    mesh.positions = {1, 2, 3};
    mesh.triangles = {0, 0, 0};
    mesh.colors = {1, 2, 3, 4};
    mesh.mask = {9};
    mesh.uvs = {0.5F, 0.25F};
    mesh.triangleUVs = {0, 0, 0};
    const ScratchFolder folder;
    writePly(pathOfUtf8(folder / u8"mesh.ply"), mesh);
    Bytes body;
    body.addAll<float>({1, 2, 3}).addAll<std::uint8_t>({1, 2, 3, 4, 9});
    body.add(std::uint8_t{3}).addAll<std::int32_t>({0, 0, 0});
    body.add(std::uint8_t{6}).addAll<float>({0.5F, 0.25F, 0.5F, 0.25F, 0.5F, 0.25F});
    EXPECT_EQ(readWhole(folder / u8"mesh.ply"),
              "ply\nformat binary_little_endian 1.0\nelement vertex 1\nproperty float x\n"
              "property float y\nproperty float z\nproperty uchar red\nproperty uchar green\n"
              "property uchar blue\nproperty uchar alpha\nproperty uchar quality\n"
              "element face 1\nproperty list uchar int vertex_indices\n"
              "property list uchar float texcoord\nend_header\n" +
                  body.text());
}

TEST(PlyWriter, FailsWhereTheFolderIsMissing) {
    const ScratchFolder folder;
    EXPECT_THROW(writePly(pathOfUtf8(folder / u8"none/mesh.ply"), square()), korvalite::Error);
}

TEST(PlyWriter, LargeMeshesComeBackWhole) {
    // More than any buffer holds, so that rows cross its end.
    korvalite::Mesh mesh;
    constexpr std::uint32_t kVertices = 100000;
    for (std::uint32_t i = 0; i < kVertices; ++i) {
        mesh.positions.insert(mesh.positions.end(), {static_cast<float>(i), 0.5F, -1});
        mesh.colors.insert(mesh.colors.end(), {static_cast<std::uint8_t>(i), 1, 2, 3});
        mesh.triangles.insert(mesh.triangles.end(), {i, (i * 7) % kVertices, (i * 3) % kVertices});
    }
    const ImportedMesh read = throughFile(mesh);
    EXPECT_EQ(read.mesh.positions, mesh.positions);
    EXPECT_EQ(read.mesh.colors, mesh.colors);
    EXPECT_EQ(read.mesh.triangles, mesh.triangles);
    EXPECT_EQ(read.mesh.triangles.capacity(), mesh.triangles.size());
}

}  // namespace korva::test
