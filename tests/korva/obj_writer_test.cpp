// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_writer.h"

#include "korva/files/obj/obj_reader.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace korva {
namespace {

using namespace korvalite::core::test;

class ObjOutput : public testing::Test {
protected:
    std::string textOf(const korvalite::Mesh& mesh) {
        writeObj(pathOfUtf8(path_), mesh);
        return readWhole(path_);
    }
    korvalite::Mesh readBack(const korvalite::Mesh& mesh) {
        writeObj(pathOfUtf8(path_), mesh);
        const ImportedMesh result = readObj(pathOfUtf8(path_));
        EXPECT_TRUE(result.notes.empty());
        return result.mesh;
    }

    ScratchFolder folder_;
    std::string path_ = folder_ / u8"out.obj";
};

korvalite::Mesh triangle() {
    korvalite::Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0.5F, 0, -1e-20F, 0.1F, 1e20F};
    mesh.triangles = {0, 1, 2};
    return mesh;
}

TEST_F(ObjOutput, WritesVerticesAndTriangles) {
    EXPECT_EQ(textOf(triangle()), "v 0 0 0\nv 1 0.5 0\nv -1e-20 0.1 1e+20\nf 1 2 3\n");
}

TEST_F(ObjOutput, WritesColoursAfterTheCoordinates) {
    korvalite::Mesh mesh = triangle();
    mesh.colors = {255, 0, 51, 255, 0, 0, 0, 0, 1, 2, 255, 7};
    mesh.mask = {0, 1, 2};
    EXPECT_EQ(textOf(mesh), "v 0 0 0 1 0 0.2\nv 1 0.5 0 0 0 0\n"
                            "v -1e-20 0.1 1e+20 0.003921569 0.007843138 1\nf 1 2 3\n");
}

TEST_F(ObjOutput, WritesUVs) {
    korvalite::Mesh mesh = triangle();
    mesh.uvs = {0, 0, 0.25F, 1};
    mesh.triangleUVs = {1, 0, 1};
    EXPECT_EQ(textOf(mesh), "v 0 0 0\nv 1 0.5 0\nv -1e-20 0.1 1e+20\nvt 0 0\nvt 0.25 1\n"
                            "f 1/2 2/1 3/2\n");
}

TEST_F(ObjOutput, WritesANormalForEachVertex) {
    korvalite::Mesh mesh = triangle();
    const std::vector<float> normals{0, 0, 1, 0, 1, 0, 0.5F, 0, 0};
    const std::string vertices = "v 0 0 0\nv 1 0.5 0\nv -1e-20 0.1 1e+20\n";
    const std::string lines = "vn 0 0 1\nvn 0 1 0\nvn 0.5 0 0\n";
    writeObj(pathOfUtf8(path_), mesh, normals);
    EXPECT_EQ(readWhole(path_), vertices + lines + "f 1//1 2//2 3//3\n");
    mesh.uvs = {0, 0, 0.25F, 1};
    mesh.triangleUVs = {1, 0, 1};
    writeObj(pathOfUtf8(path_), mesh, normals);
    EXPECT_EQ(readWhole(path_), vertices + "vt 0 0\nvt 0.25 1\n" + lines + "f 1/2/1 2/1/2 3/2/3\n");
}

TEST_F(ObjOutput, LeavesOutUVsThatTheTrianglesDoNotUse) {
    korvalite::Mesh mesh = triangle();
    mesh.uvs = {0, 0};
    EXPECT_EQ(textOf(mesh).find("vt"), std::string::npos);
}

TEST_F(ObjOutput, WritesAnEmptyMesh) {
    EXPECT_EQ(textOf({}), "");
}

TEST_F(ObjOutput, KeepsAllFloatsExactly) {
    std::mt19937 random(7);
    korvalite::Mesh mesh;
    while (mesh.positions.size() < 300'000) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (value - value == 0) mesh.positions.push_back(value);
    }
    const korvalite::Mesh back = readBack(mesh);
    ASSERT_EQ(back.positions.size(), mesh.positions.size());
    for (std::size_t i = 0; i < mesh.positions.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(back.positions[i]),
                  std::bit_cast<std::uint32_t>(mesh.positions[i]));
}

TEST_F(ObjOutput, KeepsAllColoursExactly) {
    korvalite::Mesh mesh;
    for (unsigned i = 0; i < 256; ++i) {
        mesh.positions.insert(mesh.positions.end(), {0, 0, 0});
        for (const unsigned channel : {i, 255 - i, i ^ 0x55U, 255U})
            mesh.colors.push_back(static_cast<std::uint8_t>(channel));
    }
    EXPECT_EQ(readBack(mesh).colors, mesh.colors);
}

TEST_F(ObjOutput, KeepsUVsAndTheirOrder) {
    korvalite::Mesh mesh;
    std::mt19937 random(8);
    for (std::uint32_t i = 0; i < 3000; ++i) {
        mesh.positions.push_back(static_cast<float>(random()) / 1000);
        mesh.uvs.push_back(static_cast<float>(random()) / 4294967296.0F);
        mesh.triangles.push_back(static_cast<std::uint32_t>(random() % 1000));
        mesh.triangleUVs.push_back(static_cast<std::uint32_t>(random() % 1500));
    }
    const korvalite::Mesh back = readBack(mesh);
    EXPECT_EQ(back.positions, mesh.positions);
    EXPECT_EQ(back.triangles, mesh.triangles);
    EXPECT_EQ(back.uvs, mesh.uvs);
    EXPECT_EQ(back.triangleUVs, mesh.triangleUVs);
}

TEST_F(ObjOutput, FailsWithAnErrorAndLeavesNothing) {
    const std::string path = folder_ / u8"none/out.obj";
    try {
        writeObj(pathOfUtf8(path), triangle());
        ADD_FAILURE();
    } catch (const korvalite::Error& error) {
        EXPECT_EQ(error.code(), korvalite::ErrorCode::CannotWrite);
    }
}

}  // namespace
}  // namespace korva
