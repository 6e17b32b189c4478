// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_reader.h"

#include "korva/gltf_files.h"

#include <array>

namespace korva::test {

namespace {

using Floats = std::vector<float>;
using Indices = std::vector<std::uint32_t>;

const Floats kSquare{0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0};

GltfDraft squareDraft(int mode) {
    GltfDraft draft;
    draft.addMesh({{"POSITION", draft.addAccessor(kSquare, "VEC3")}})["mode"] = mode;
    return draft;
}

template <typename Index>
void expectIndices() {
    GltfDraft draft = squareDraft(4);
    draft.primitive()["indices"] = draft.addAccessor<Index>({2, 1, 3, 0, 1, 2}, "SCALAR");
    EXPECT_EQ(read(draft).meshes.at(0).mesh.triangles, (Indices{2, 1, 3, 0, 1, 2}));
}

template <typename Value>
std::vector<std::uint8_t> colorsFrom(const std::vector<Value>& values, const std::string& type) {
    GltfDraft draft = triangleDraft();
    draft.primitive()["attributes"]["COLOR_0"] = draft.addAccessor(values, type, true);
    return read(draft).meshes.at(0).mesh.colors;
}

template <typename Value>
Floats uvsFrom(const std::vector<Value>& values, bool normalized) {
    GltfDraft draft = triangleDraft();
    draft.primitive()["attributes"]["TEXCOORD_0"] = draft.addAccessor(values, "VEC2", normalized);
    return read(draft).meshes.at(0).mesh.uvs;
}

}  // namespace

TEST(GltfReader, ReadsATriangleWithoutIndices) {
    const Scene scene = read(triangleDraft());
    ASSERT_EQ(scene.meshes.size(), 1U);
    EXPECT_EQ(scene.meshes[0].name, "mesh 0");
    EXPECT_EQ(scene.meshes[0].mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(scene.meshes[0].mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_TRUE(scene.meshes[0].mesh.colors.empty());
    EXPECT_TRUE(scene.meshes[0].mesh.uvs.empty());
    EXPECT_FALSE(scene.hadNormals);
    EXPECT_TRUE(scene.notes.empty());
}

TEST(GltfReader, ReadsIndicesOfEveryType) {
    expectIndices<std::uint8_t>();
    expectIndices<std::uint16_t>();
    expectIndices<std::uint32_t>();
}

TEST(GltfReader, ReadsStripsAndFans) {
    EXPECT_EQ(read(squareDraft(5)).meshes.at(0).mesh.triangles, (Indices{0, 1, 2, 1, 3, 2}));
    EXPECT_EQ(read(squareDraft(6)).meshes.at(0).mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
}

TEST(GltfReader, ReadsStripsLongerThanItsBatches) {
    GltfDraft draft;
    Floats positions;
    for (int i = 0; i < 2001; ++i)
        positions.insert(positions.end(),
                         {static_cast<float>(i / 2), static_cast<float>(i % 2), 0});
    draft.addMesh({{"POSITION", draft.addAccessor(positions, "VEC3")}})["mode"] = 5;
    const Indices triangles = read(draft).meshes.at(0).mesh.triangles;
    ASSERT_EQ(triangles.size(), 3U * 1999);
    for (std::uint32_t i = 0; i < 1999; ++i) {
        const std::array<std::uint32_t, 3> expected{i, i + 1 + i % 2, i + 2 - i % 2};
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_EQ(triangles[3 * i + k], expected.at(k));
    }
}

TEST(GltfReader, LeavesOutPointsLinesAndLooseCorners) {
    GltfDraft draft = squareDraft(4);
    draft.root["meshes"][0]["primitives"].push_back(draft.primitive());
    draft.primitive(0, 1)["mode"] = 1;
    const Scene scene = read(draft);
    EXPECT_EQ(scene.meshes.at(0).mesh.triangles, (Indices{0, 1, 2}));
    EXPECT_TRUE(hasNote(scene, "1 primitive of points or lines is ignored."));
    EXPECT_TRUE(
        hasNote(scene, "The last corners of 1 primitive form no triangle and are ignored."));
}

TEST(GltfReader, ReadsColoursAsTheyAre) {
    const std::vector<std::uint8_t> bytes{0, 1, 2, 3, 127, 128, 200, 201, 252, 253, 254, 255};
    EXPECT_EQ(colorsFrom(bytes, "VEC4"), bytes);
    EXPECT_EQ(colorsFrom<std::uint8_t>({1, 2, 3, 4, 5, 6, 7, 8, 9}, "VEC3"),
              (std::vector<std::uint8_t>{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255}));
    EXPECT_EQ(colorsFrom<std::uint16_t>({0, 257, 65535, 0, 0, 0, 128, 129, 514}, "VEC3"),
              (std::vector<std::uint8_t>{0, 1, 255, 255, 0, 0, 0, 255, 0, 1, 2, 255}));
    EXPECT_EQ(colorsFrom<float>({0, 0.5F, 1, 2, -1, NAN, 0.25F, 0, 0}, "VEC3"),
              (std::vector<std::uint8_t>{0, 128, 255, 255, 255, 0, 0, 255, 64, 0, 0, 255}));
}

TEST(GltfReader, ReadsUVsWithTheOriginAtTheBottom) {
    EXPECT_EQ(uvsFrom<float>({0, 0, 0.25F, 0.75F, -2, 3}, false),
              (Floats{0, 1, 0.25F, 0.25F, -2, -2}));
    EXPECT_EQ(uvsFrom<std::uint8_t>({0, 0, 255, 51, 0, 255}, true), (Floats{0, 1, 1, 0.8F, 0, 0}));
    EXPECT_EQ(uvsFrom<std::uint16_t>({0, 0, 65535, 0, 0, 65535}, true), (Floats{0, 1, 1, 1, 0, 0}));
}

TEST(GltfReader, ReadsInterleavedVertices) {
    GltfDraft draft = triangleDraft();
    const std::size_t view = draft.addView<float>(
        {9, 0, 0, 0, 0.5F, 0, 9, 1, 0, 0, 1, 0, 9, 0, 1, 0, 0, 0.5F});  // ?, position, UV
    draft.root["bufferViews"][view]["byteStride"] = 24;
    draft.root["accessors"].push_back({{"bufferView", view},
                                       {"byteOffset", 4},
                                       {"componentType", 5126},
                                       {"count", 3},
                                       {"type", "VEC3"}});
    draft.root["accessors"].push_back({{"bufferView", view},
                                       {"byteOffset", 16},
                                       {"componentType", 5126},
                                       {"count", 3},
                                       {"type", "VEC2"}});
    draft.primitive()["attributes"] = {{"POSITION", 1}, {"TEXCOORD_0", 2}};
    const korvalite::Mesh mesh = read(draft).meshes.at(0).mesh;
    EXPECT_EQ(mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(mesh.uvs, (Floats{0.5F, 1, 1, 1, 0, 0.5F}));
    draft.root["accessors"][2]["count"] = 4;
    EXPECT_TRUE(contains(faultOf(draft), "accessor 2: it goes beyond the end of its buffer view."));
}

TEST(GltfReader, ReadsSparseAccessors) {
    GltfDraft draft = sparseDraft();
    EXPECT_EQ(read(draft).meshes.at(0).mesh.positions, (Floats{5, 6, 7, 1, 0, 0, 8, 9, 10}));
    draft.root["accessors"][0].erase("bufferView");
    EXPECT_EQ(read(draft).meshes.at(0).mesh.positions, (Floats{5, 6, 7, 0, 0, 0, 8, 9, 10}));
    const std::size_t indices = draft.root["accessors"][0]["sparse"]["indices"]["bufferView"];
    draft.binary[draft.root["bufferViews"][indices]["byteOffset"].get<std::size_t>()] = 2;
    EXPECT_TRUE(contains(faultOf(draft), "not in ascending order"));
}

TEST(GltfReader, ReadsQuantizedPositions) {
    GltfDraft draft;
    draft.root["extensionsRequired"] = {"KHR_mesh_quantization"};
    draft.addMesh({{"POSITION", draft.addAccessor<std::int16_t>(
                                    {0, 0, 0, 32767, 0, 0, 0, -32768, 0}, "VEC3", true)}});
    EXPECT_EQ(read(draft).meshes.at(0).mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 0, -1, 0}));
}

TEST(GltfReader, JoinsVerticesAtSeams) {
    const Scene scene = read(seamDraft());
    const korvalite::Mesh& mesh = scene.meshes.at(0).mesh;
    EXPECT_EQ(mesh.positions, (Floats{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}));
    EXPECT_EQ(mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(mesh.triangleUVs, (Indices{0, 1, 2, 3, 2, 4}));
    EXPECT_EQ(mesh.uvs, (Floats{0, 1, 1, 1, 1, 0, 0.5F, 1, 0, 0}));
    EXPECT_TRUE(hasNote(scene, "2 vertices that differed only in UVs or normals were joined."));
    EXPECT_EQ(scene.notes.size(), 1U);
}

TEST(GltfReader, KeepsTheFirstOfDifferentColours) {
    GltfDraft draft = seamDraft();
    draft.primitive()["attributes"]["COLOR_0"] = draft.addAccessor<std::uint8_t>(
        {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 3, 3, 3, 6, 6, 6}, "VEC3", true);
    const Scene scene = read(draft);
    EXPECT_EQ(scene.meshes.at(0).mesh.colors,
              (std::vector<std::uint8_t>{1, 1, 1, 255, 2, 2, 2, 255, 3, 3, 3, 255, 6, 6, 6, 255}));
    EXPECT_TRUE(hasNote(scene, "1 of them had another colour, which is lost."));
}

TEST(GltfReader, JoinsPrimitivesAndCompletesThem) {
    GltfDraft draft = seamDraft();
    draft.primitive()["attributes"]["COLOR_0"] =
        draft.addAccessor<std::uint8_t>(std::vector<std::uint8_t>(18, 7), "VEC3", true);
    const std::size_t plain = draft.addAccessor<float>({0, 0, 5, 1, 0, 5, 0, 1, 5}, "VEC3");
    draft.root["meshes"][0]["primitives"].push_back({{"attributes", {{"POSITION", plain}}}});
    // This one has the same vertices as the first.
    draft.root["meshes"][0]["primitives"].push_back(draft.primitive());
    const korvalite::Mesh mesh = read(draft).meshes.at(0).mesh;
    EXPECT_EQ(mesh.vertexCount(), 7U);
    EXPECT_EQ(mesh.triangles, (Indices{0, 1, 2, 0, 2, 3, 4, 5, 6, 0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(mesh.colors.at(0), 7);
    EXPECT_EQ(mesh.colors.at(16), 255);
    for (std::size_t i = 6; i < 9; ++i) {
        EXPECT_EQ(mesh.uvs.at(2 * std::size_t{mesh.triangleUVs.at(i)}), 0);
        EXPECT_EQ(mesh.uvs.at(2 * std::size_t{mesh.triangleUVs.at(i)} + 1), 0);
    }
}

TEST(GltfReader, SaysWhatIsIgnored) {
    GltfDraft draft = triangleDraft();
    Json& attributes = draft.primitive()["attributes"];
    for (const char* name : {"NORMAL", "TANGENT", "TEXCOORD_1", "COLOR_1"})
        attributes[name] = 0;
    draft.primitive()["targets"] = {{{"POSITION", 0}}};
    draft.root["materials"] = Json::array({Json::object(), Json::object()});
    // Not a list in braces, which compilers take for the object itself or for an array of it.
    draft.root["textures"] = Json::array({Json::object()});
    for (const char* key : {"animations", "skins", "cameras"})
        draft.root[key] = Json::array({Json::object()});
    const Scene scene = read(draft);
    EXPECT_TRUE(scene.hadNormals);
    EXPECT_EQ(scene.notes, (std::vector<std::string>{
                               "2 materials and 1 texture are ignored.", "1 animation is ignored.",
                               "1 skin is ignored.", "1 camera is ignored.",
                               "Morph targets are ignored.", "UVs from TEXCOORD_1 on are ignored.",
                               "Colours from COLOR_1 on are ignored.", "Tangents are ignored."}));
}

}  // namespace korva::test
