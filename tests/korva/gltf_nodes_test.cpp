// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_reader.h"

#include "korva/gltf_files.h"

namespace korva::test {

namespace {

using Floats = std::vector<float>;
using Indices = std::vector<std::uint32_t>;

Floats positionsWith(const Json& node) {
    GltfDraft draft = triangleDraft();
    draft.root["nodes"][0].update(node);
    return read(draft).meshes.at(0).mesh.positions;
}

std::vector<std::string> namesIn(const Scene& scene) {
    std::vector<std::string> names;
    for (const NamedMesh& mesh : scene.meshes)
        names.push_back(mesh.name);
    return names;
}

std::string faultWithNodes(const Json& nodes, const Json& sceneNodes = nullptr) {
    GltfDraft draft = triangleDraft();
    draft.root["nodes"] = nodes;
    if (!sceneNodes.is_null()) draft.root["scenes"] = {{{"nodes", sceneNodes}}};
    return faultOf(draft);
}

}  // namespace

TEST(GltfNodes, MoveTheirMesh) {
    EXPECT_EQ(positionsWith({{"translation", {10, 20, 30}}}),
              (Floats{10, 20, 30, 11, 20, 30, 10, 21, 30}));
    EXPECT_EQ(positionsWith({{"scale", {2, 3, 4}}}), (Floats{0, 0, 0, 2, 0, 0, 0, 3, 0}));
    EXPECT_EQ(positionsWith({{"matrix", {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1}}}),
              (Floats{5, 6, 7, 5, 7, 7, 4, 6, 7}));
}

TEST(GltfNodes, ScaleThenTurnThenMove) {
    const double half = 0.70710678118654757;  // a quarter turn about z
    const Floats positions = positionsWith(
        {{"scale", {2, 3, 1}}, {"rotation", {0, 0, half, half}}, {"translation", {10, 0, 0}}});
    const Floats expected{10, 0, 0, 10, 2, 0, 7, 0, 0};
    ASSERT_EQ(positions.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(positions[i], expected[i], 1e-6);
}

TEST(GltfNodes, FollowTheirParents) {
    GltfDraft draft = triangleDraft();
    draft.root["nodes"] = {{{"mesh", 0}, {"translation", {1, 0, 0}}},
                           {{"children", {0}}, {"scale", {2, 2, 2}}},
                           {{"children", {1}}, {"translation", {0, 0, 100}}}};
    EXPECT_EQ(read(draft).meshes.at(0).mesh.positions, (Floats{2, 0, 100, 4, 0, 100, 2, 2, 100}));
}

TEST(GltfNodes, MirroringTurnsTrianglesOver) {
    GltfDraft draft = seamDraft();
    draft.root["nodes"][0]["scale"] = {-1, 1, 1};
    const korvalite::Mesh mesh = read(draft).meshes.at(0).mesh;
    EXPECT_EQ(mesh.triangles, (Indices{0, 2, 1, 0, 3, 2}));
    EXPECT_EQ(mesh.triangleUVs, (Indices{0, 2, 1, 3, 4, 2}));
    EXPECT_EQ(mesh.positions.at(3), -1);
    draft.root["nodes"][0]["scale"] = {-1, 1, -1};
    EXPECT_EQ(read(draft).meshes.at(0).mesh.triangles, (Indices{0, 1, 2, 0, 2, 3}));
}

TEST(GltfNodes, EachInstanceIsAMeshWithItsName) {
    GltfDraft draft = triangleDraft();
    draft.root["meshes"].push_back(draft.root["meshes"][0]);
    draft.root["meshes"][1]["name"] = "wheel";
    draft.root["nodes"] = {
        {{"mesh", 0}}, {{"mesh", 1}, {"children", {3, 4}}}, {{"mesh", 1}, {"name", "ä日本"}},
        {{"mesh", 1}}, {{"mesh", 1}, {"name", "wheel 2"}},  {{"mesh", 0}}};
    EXPECT_EQ(namesIn(read(draft)), (std::vector<std::string>{"mesh 0", "wheel", "wheel 2",
                                                              "wheel 2 2", "ä日本", "mesh 0 2"}));
}

TEST(GltfNodes, OnlyTheDefaultSceneCounts) {
    GltfDraft draft = triangleDraft();
    draft.root["nodes"] = {{{"mesh", 0}, {"name", "a"}}, {{"mesh", 0}, {"name", "b"}}};
    EXPECT_EQ(namesIn(read(draft)), (std::vector<std::string>{"a", "b"}));
    draft.root["scenes"] = {{{"nodes", {0}}}, {{"nodes", {1}}}};
    EXPECT_EQ(namesIn(read(draft)), (std::vector<std::string>{"a"}));
    draft.root["scene"] = 1;
    const Scene scene = read(draft);
    EXPECT_EQ(namesIn(scene), (std::vector<std::string>{"b"}));
    EXPECT_TRUE(hasNote(scene, "1 node with a mesh outside the scene is left out."));
}

TEST(GltfNodes, MeshesWithoutNodesAreRead) {
    GltfDraft draft = triangleDraft();
    draft.root.erase("nodes");
    EXPECT_EQ(read(draft).meshes.size(), 1U);
}

TEST(GltfNodes, MeshesWithoutTrianglesAreLeftOut) {
    GltfDraft draft = triangleDraft();
    draft.root["meshes"].push_back(draft.root["meshes"][0]);
    draft.root["nodes"].push_back({{"mesh", 1}});
    draft.primitive(1)["mode"] = 0;
    const Scene scene = read(draft);
    EXPECT_EQ(scene.meshes.size(), 1U);
    EXPECT_TRUE(hasNote(scene, "1 mesh without triangles is left out."));
    draft.primitive(0)["mode"] = 0;
    EXPECT_TRUE(contains(faultOf(draft), "its scene has no triangles."));
}

TEST(GltfNodes, MustBeAForest) {
    const auto with = [](const Json& children) { return Json{{"children", children}}; };
    EXPECT_TRUE(contains(faultWithNodes(Json::array({with({0})})), "node 0: it is its own child."));
    EXPECT_TRUE(contains(faultWithNodes({with({1}), with({0})}), "is its own descendant"));
    EXPECT_TRUE(contains(faultWithNodes({with({2}), with({2}), {{"mesh", 0}}}),
                         "node 2: it has two parents."));
    EXPECT_TRUE(contains(faultWithNodes({with({1, 1}), {{"mesh", 0}}}), "two parents"));
    EXPECT_TRUE(contains(faultWithNodes(Json::array({with({7})})),
                         "node 7 is referred to but does not exist"));
    EXPECT_TRUE(contains(faultWithNodes(Json::array({{{"mesh", 9}}})), "mesh 9 is referred to"));
    EXPECT_TRUE(contains(faultWithNodes({{{"mesh", 0}}}, {0, 0}), "it is in the scene twice."));
    EXPECT_TRUE(contains(faultWithNodes({with({1}), {{"mesh", 0}}}, {1}), "but has a parent."));
}

TEST(GltfNodes, MustNotBeTooDeep) {
    GltfDraft draft = triangleDraft();
    for (std::size_t i = 1; i < 1000; ++i)
        draft.root["nodes"].push_back({{"children", {i - 1}}});
    EXPECT_EQ(read(draft).meshes.size(), 1U);
    draft.root["nodes"].push_back({{"children", {999}}});
    EXPECT_TRUE(contains(faultOf(draft), "nested too deeply"));
}

TEST(GltfNodes, MustNotMultiplyVerticesBeyondReason) {
    GltfDraft draft = triangleDraft();
    draft.root["accessors"][0].erase("bufferView");
    draft.root["accessors"][0]["count"] = 1 << 20;
    draft.root["nodes"] = Json(2049, {{"mesh", 0}});
    EXPECT_TRUE(contains(faultOf(draft), "more than 2147483647 vertices"));
}

}  // namespace korva::test
