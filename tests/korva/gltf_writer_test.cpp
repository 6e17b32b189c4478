// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_writer.h"

#include "korva/gltf_files.h"
#include "korva/square.h"

#include <cmath>
#include <filesystem>
#include <limits>

namespace korva::test {

namespace {

Scene sceneOf(korvalite::Mesh mesh, const std::string& name = "") {
    Scene scene;
    scene.meshes.push_back({name, std::move(mesh)});
    return scene;
}

/// What is read back from a .glb and a .gltf file, which must agree.
Scene throughFiles(const Scene& scene) {
    const ScratchFolder folder;
    Scene copy = scene;
    writeGlb(pathOfUtf8(folder / u8"a b.glb"), copy);
    copy = scene;
    writeGltf(pathOfUtf8(folder / u8"ä日本 #%.gltf"), copy);
    EXPECT_TRUE(std::filesystem::exists(pathOfUtf8(folder / u8"ä日本 #%.bin")));
    Scene fromGlb = readGltf(pathOfUtf8(folder / u8"a b.glb"));
    const Scene fromGltf = readGltf(pathOfUtf8(folder / u8"ä日本 #%.gltf"));
    EXPECT_EQ(fromGlb.meshes.size(), fromGltf.meshes.size());
    for (std::size_t i = 0; i < fromGlb.meshes.size(); ++i) {
        EXPECT_EQ(fromGlb.meshes[i].mesh.positions, fromGltf.meshes.at(i).mesh.positions);
        EXPECT_EQ(fromGlb.meshes[i].mesh.triangles, fromGltf.meshes.at(i).mesh.triangles);
    }
    return fromGlb;
}

void expectSame(const korvalite::Mesh& a, const korvalite::Mesh& b) {
    EXPECT_EQ(a.positions, b.positions);
    EXPECT_EQ(a.triangles, b.triangles);
    EXPECT_EQ(a.colors, b.colors);
    expectSameUVs(a, b);
}

std::uint32_t wordAt(const std::string& bytes, std::size_t at) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

/// The bytes of a GLB file.
std::string bytesOf(Scene scene) {
    const ScratchFolder folder;
    writeGlb(pathOfUtf8(folder / u8"x.glb"), scene);
    return readWhole(folder / u8"x.glb");
}

Json jsonIn(const std::string& glb) {
    return Json::parse(glb.substr(20, wordAt(glb, 12)));
}

}  // namespace

TEST(GltfWriter, WritesWhatTheReaderReads) {
    korvalite::Mesh mesh = square();
    expectSame(throughFiles(sceneOf(mesh)).meshes.at(0).mesh, mesh);
    addEverything(mesh);
    const Scene read = throughFiles(sceneOf(mesh, "ä \"日本\""));
    EXPECT_EQ(read.meshes.at(0).name, "ä \"日本\"");
    expectSame(read.meshes.at(0).mesh, mesh);
    EXPECT_FALSE(read.hadNormals);
}

TEST(GltfWriter, KeepsSeveralMeshesApart) {
    Scene scene = sceneOf(square(), "plain");
    scene.meshes.push_back({"empty", {}});
    scene.meshes.push_back({"full", square()});
    addEverything(scene.meshes[2].mesh);
    const Scene read = throughFiles(scene);
    ASSERT_EQ(read.meshes.size(), 2U);
    EXPECT_EQ(read.meshes[0].name, "plain");
    EXPECT_EQ(read.meshes[1].name, "full");
    expectSame(read.meshes[0].mesh, scene.meshes[0].mesh);
    expectSame(read.meshes[1].mesh, scene.meshes[2].mesh);
}

TEST(GltfWriter, SplitsVerticesOnlyWhereUVsDiffer) {
    korvalite::Mesh mesh = square();
    addEverything(mesh);
    EXPECT_EQ(jsonIn(bytesOf(sceneOf(mesh)))["accessors"][0]["count"], 5);
    // A point for each corner, most with equal values.
    mesh.uvs = {0, 0, 1, 0, 1, 1, 0, 0, 1, 1, 0, 1};
    mesh.triangleUVs = {0, 1, 2, 3, 4, 5};
    EXPECT_EQ(jsonIn(bytesOf(sceneOf(mesh)))["accessors"][0]["count"], 4);
}

TEST(GltfWriter, LaysTheFileOutAsTheFormatRequires) {
    korvalite::Mesh mesh = square();
    addEverything(mesh);
    mesh.triangles.resize(3);
    mesh.triangleUVs.resize(3);
    Scene scene = sceneOf(mesh, "abc");
    scene.hadNormals = true;
    const std::string glb = bytesOf(scene);
    EXPECT_EQ(glb.substr(0, 4), "glTF");
    EXPECT_EQ(wordAt(glb, 8), glb.size());
    EXPECT_EQ(wordAt(glb, 12) % 4, 0U);
    const Json json = jsonIn(glb);
    const std::size_t binary = 20 + wordAt(glb, 12);
    EXPECT_EQ(glb.substr(binary + 4, 4), std::string("BIN\0", 4));
    EXPECT_EQ(wordAt(glb, binary) + binary + 8, glb.size());
    EXPECT_EQ(json["buffers"], Json::array({{{"byteLength", wordAt(glb, binary)}}}));
    EXPECT_EQ(json["asset"]["generator"], "Korvalite " + std::string(korvalite::version()));
    EXPECT_EQ(json["meshes"][0]["name"], "abc");
    EXPECT_EQ(json["nodes"], Json::array({{{"name", "abc"}, {"mesh", 0}}}));
    EXPECT_EQ(json["scenes"], Json::array({{{"nodes", {0}}}}));
    EXPECT_EQ(json["accessors"][0]["max"], (Json{1, 1, double{0.1F}}));
    std::uint64_t end = 0;
    for (const Json& view : json["bufferViews"]) {
        EXPECT_EQ(view["byteOffset"], end);
        EXPECT_EQ(end % 4, 0U);
        end += view["byteLength"].get<std::uint64_t>();
    }
    EXPECT_EQ(end, wordAt(glb, binary));
}

TEST(GltfWriter, WritesNormalsThatDoNotShowSeams) {
    korvalite::Mesh mesh = square();
    addEverything(mesh);
    Scene scene = sceneOf(mesh);
    scene.hadNormals = true;
    const std::string glb = bytesOf(scene);
    const Json json = jsonIn(glb);
    const std::size_t view =
        json["accessors"][json["meshes"][0]["primitives"][0]["attributes"]["NORMAL"]
                              .get<std::size_t>()]["bufferView"];
    const std::size_t begin =
        28 + wordAt(glb, 12) + json["bufferViews"][view]["byteOffset"].get<std::size_t>();
    std::vector<float> normals(15);
    std::memcpy(normals.data(), glb.data() + begin, 60);
    for (std::size_t axis = 0; axis < 3; ++axis)
        EXPECT_EQ(normals[axis], normals[12 + axis]);  // vertex 0 and its copy
    EXPECT_NEAR(std::hypot(normals[0], normals[1], normals[2]), 1, 1e-6);
    EXPECT_TRUE(throughFiles(scene).hadNormals);
}

TEST(GltfWriter, UsesWideIndicesWhereShortOnesEnd) {
    for (const std::size_t vertices : {65534U, 65535U, 65536U}) {
        korvalite::Mesh mesh;
        for (std::size_t i = 0; i < vertices; ++i)
            mesh.positions.insert(mesh.positions.end(), {static_cast<float>(i), 0, 0});
        mesh.triangles = {0, 1, static_cast<std::uint32_t>(vertices - 1)};
        const std::string glb = bytesOf(sceneOf(mesh));
        EXPECT_EQ(jsonIn(glb)["accessors"][1]["componentType"], vertices < 65535 ? 5123 : 5125);
        expectSame(readBytes(glb).meshes.at(0).mesh, mesh);
    }
}

TEST(GltfWriter, BoundsAreFinite) {
    korvalite::Mesh mesh = square();
    mesh.positions[0] = std::numeric_limits<float>::quiet_NaN();
    mesh.positions[1] = std::numeric_limits<float>::infinity();
    for (const std::size_t i : {2U, 5U, 8U, 11U})
        mesh.positions[i] = -std::numeric_limits<float>::infinity();
    const Json accessor = jsonIn(bytesOf(sceneOf(mesh)))["accessors"][0];
    EXPECT_EQ(accessor["min"], (Json{0, 0, 0}));
    EXPECT_EQ(accessor["max"], (Json{1, 1, 0}));
}

TEST(GltfWriter, WritesAValidFileWithoutMeshes) {
    const ScratchFolder folder;
    Scene scene = sceneOf({});
    const std::string glb = bytesOf(scene);
    EXPECT_EQ(glb.size(), 20 + wordAt(glb, 12));
    EXPECT_EQ(jsonIn(glb).size(), 1U);  // only the asset: empty arrays are not allowed
    writeGltf(pathOfUtf8(folder / u8"x.gltf"), scene);
    EXPECT_FALSE(std::filesystem::exists(pathOfUtf8(folder / u8"x.bin")));
}

TEST(GltfWriter, RefusesGlbOfMoreThan4GiB) {
    constexpr std::uint64_t kMost = 0xFFFFFFFF;
    EXPECT_EQ(glbBytes("x.glb", 5, 100), 12U + 8 + 8 + 8 + 100);
    EXPECT_EQ(glbBytes("x.glb", 8, 0), 12U + 8 + 8);
    EXPECT_EQ(glbBytes("x.glb", 4, kMost - 35), kMost - 3);
    for (const std::uint64_t bytes : {kMost - 28, kMost, kMost + 10, std::uint64_t{1} << 40U}) {
        try {
            (void)glbBytes("x.glb", 4, bytes);
            ADD_FAILURE() << bytes;
        } catch (const korvalite::Error& error) {
            EXPECT_EQ(error.code(), korvalite::ErrorCode::CannotWrite);
            EXPECT_TRUE(contains(error.what(), "write .gltf or .ply instead")) << error.what();
        }
    }
}

TEST(GltfWriter, LeavesBothFilesAloneIfOneFails) {
    const ScratchFolder folder;
    writeWhole(folder / u8"x.gltf", "old");
    std::filesystem::create_directory(pathOfUtf8(folder / u8"x.bin"));
    Scene scene = sceneOf(square());
    EXPECT_THROW(writeGltf(pathOfUtf8(folder / u8"x.gltf"), scene), korvalite::Error);
    EXPECT_EQ(readWhole(folder / u8"x.gltf"), "old");
    const std::filesystem::directory_iterator files(pathOfUtf8(folder.path()));
    EXPECT_EQ(std::distance(files, {}), 2);
}

}  // namespace korva::test
