// SPDX-License-Identifier: MIT
//
// Damaged and malicious files.
#include "korva/files/gltf/gltf_reader.h"

#include "korva/damaged_files.h"
#include "korva/files/gltf/gltf_uri.h"
#include "korva/gltf_files.h"

#include <filesystem>
#include <functional>

namespace korva::test {

namespace {

/// The message of the Error for a triangle after this change.
std::string faultAfter(const std::function<void(GltfDraft&)>& change) {
    GltfDraft draft = triangleDraft();
    change(draft);
    return faultOf(draft);
}

std::string faultWithAccessor(const char* key, const Json& value) {
    return faultAfter([&](GltfDraft& draft) { draft.root["accessors"][0][key] = value; });
}

std::string faultWithView(const char* key, const Json& value) {
    return faultAfter([&](GltfDraft& draft) { draft.root["bufferViews"][0][key] = value; });
}

void expectFault(const std::string& fault, const std::string& part) {
    EXPECT_TRUE(contains(fault, part)) << fault;
}

/// The message of the Error for a .gltf file with this URI. "m.bin" and "sub/ä b.bin" hold its
/// buffer.
std::string faultWithUri(const std::string& uri) {
    const ScratchFolder folder;
    GltfDraft draft = triangleDraft();
    draft.root["buffers"] = {{{"byteLength", draft.binary.size()}, {"uri", uri}}};
    std::filesystem::create_directories(pathOfUtf8(folder / u8"in/sub"));
    writeWhole(folder / u8"outside.bin", draft.binary);
    writeWhole(folder / u8"in/m.bin", draft.binary);
    writeWhole(folder / u8"in/short.bin", "abc");
    writeWhole(folder / u8"in/sub/ä b.bin", draft.binary);
    writeWhole(folder / u8"in/x.gltf", draft.root.dump());
    try {
        EXPECT_EQ(readGltf(pathOfUtf8(folder / u8"in/x.gltf")).triangleCount(), 1U);
    } catch (const korvalite::Error& error) {
        return error.what();
    }
    return "no fault";
}

ImportedMesh readJoined(const std::filesystem::path& path) {
    Scene scene = readGltf(path);
    ImportedMesh imported;
    imported.mesh = joinMeshes(scene.meshes);
    return imported;
}

}  // namespace

TEST(GltfDamage, EveryByteOfAGlbCanBeDamaged) {
    GltfDraft draft = seamDraft();
    draft.primitive()["attributes"]["COLOR_0"] =
        draft.addAccessor(std::vector<std::uint8_t>(24, 9), "VEC4", true);
    draft.root["nodes"][0]["scale"] = {-1, 2, 1};
    expectToSurviveDamage(readJoined, draft.glb());
}

TEST(GltfDamage, EveryByteOfASparseFileCanBeDamaged) {
    expectToSurviveDamage(readJoined, sparseDraft().glb());
}

TEST(GltfDamage, EveryCutGivesAnError) {
    const std::string glb = seamDraft().glb();
    for (std::size_t length = 0; length < glb.size(); ++length)
        EXPECT_NE(faultOfBytes(glb.substr(0, length)), "no fault") << length;
}

TEST(GltfDamage, BytesAfterTheEndAreNoted) {
    EXPECT_TRUE(hasNote(readBytes(triangleDraft().glb() + "12345"),
                        "5 bytes after the end of the GLB data are ignored."));
}

TEST(GltfDamage, FaultsOfTheWholeFileAreNamed) {
    expectFault(faultOfBytes(""), "it is empty.");
    expectFault(faultOfBytes("solid x"), "its JSON has an error at byte 1.");
    expectFault(faultOfBytes("{}"), "no \"asset\"");
    expectFault(faultOfBytes("[1]"), "it should be a JSON object.");
    expectFault(faultOfBytes(R"({"asset":{"version":"1.0"}})"), "its glTF version is not 2;");
    expectFault(faultOfBytes(R"({"asset":{"version":"2.0"},"x":1e999})"), "too large");
    expectFault(faultOfBytes(R"({"asset":{"version":"2.0"}})"), "no triangles");
    expectFault(faultOfBytes("glTF" + wordOf(1) + wordOf(12)), "GLB version 1;");
    expectFault(faultOfBytes(std::string(1000000, '[')), "nested too deeply");
    std::string glb = triangleDraft().glb();
    glb[16] = 'X';
    expectFault(faultOfBytes(glb), "its first chunk is not JSON.");
}

TEST(GltfDamage, FaultsOfAccessorsAreNamed) {
    expectFault(faultWithAccessor("count", 4), "accessor 0: it goes beyond the end");
    expectFault(faultWithAccessor("count", 0x80000000U), "more than 2147483647 elements");
    expectFault(faultWithAccessor("count", 0x7FFFFFFF), "beyond the end");
    expectFault(faultWithAccessor("count", -1), "\"count\" should be a whole number");
    expectFault(faultWithAccessor("count", 1.5), "\"count\" should be a whole number");
    expectFault(faultWithAccessor("count", "3"), "\"count\" should be a whole number");
    expectFault(faultWithAccessor("byteOffset", 1), "beyond the end");
    expectFault(faultWithAccessor("byteOffset", 9007199254740991), "beyond the end");
    expectFault(faultWithAccessor("byteOffset", 1.8446744073709552e19), "whole number");
    expectFault(faultWithAccessor("componentType", 5124), "\"componentType\" 5124 is unknown");
    expectFault(faultWithAccessor("type", "MAT4"), "\"type\" should be");
    expectFault(faultWithAccessor("type", "VEC2"), "wrong \"type\" for POSITION");
    expectFault(faultWithAccessor("bufferView", 1), "buffer view 1 is referred to");
    expectFault(faultWithAccessor("normalized", 1), "should be true or false");
    expectFault(faultAfter([](GltfDraft& draft) {
                    draft.root["accessors"][0].erase("bufferView");
                    draft.root["accessors"][0]["count"] = (1 << 20) + 1;
                }),
                "has 1048577 elements, but no data");
}

TEST(GltfDamage, FaultsOfBufferViewsAndBuffersAreNamed) {
    expectFault(faultWithView("byteLength", 37), "buffer view 0: it goes beyond the end");
    expectFault(faultWithView("byteOffset", 9007199254740991), "beyond the end of its buffer.");
    expectFault(faultWithView("byteStride", 8), "\"byteStride\" does not fit accessor 0.");
    expectFault(faultWithView("byteStride", 4294967296), "\"byteStride\" does not fit");
    expectFault(faultWithView("buffer", 1), "buffer 1 is referred to but does not exist.");
    const auto withBuffer = [](const Json& buffer) {
        return faultAfter([&](GltfDraft& draft) { draft.root["buffers"] = Json::array({buffer}); });
    };
    expectFault(withBuffer({{"byteLength", 37}}), "should have 37 bytes, but the file holds 36.");
    expectFault(withBuffer(Json::object()), "buffer 0: \"byteLength\" is missing.");
    expectFault(withBuffer({{"byteLength", 36}, {"uri", 5}}), "should be a string");
    expectFault(faultAfter([](GltfDraft& draft) {
                    draft.root["buffers"] = {{{"byteLength", 0}}, {{"byteLength", 36}}};
                    draft.root["bufferViews"][0]["buffer"] = 1;
                }),
                "buffer 1: it has no data.");
}

TEST(GltfDamage, FaultsOfPrimitivesAreNamed) {
    const auto withPrimitive = [](const Json& change) {
        return faultAfter([&](GltfDraft& draft) { draft.primitive().update(change); });
    };
    expectFault(withPrimitive({{"mode", 7}}), "mesh 0, primitive 0: its \"mode\" 7 is unknown.");
    expectFault(withPrimitive({{"attributes", Json::object()}}), "it has no positions.");
    expectFault(withPrimitive({{"indices", 0}}), "accessor 0 has the wrong \"type\" for indices.");
    expectFault(faultAfter([](GltfDraft& draft) {
                    draft.primitive()["indices"] = draft.addAccessor<float>({0, 1, 2}, "SCALAR");
                }),
                "accessor 1 has the wrong \"componentType\" for indices.");
    expectFault(
        faultAfter([](GltfDraft& draft) {
            draft.primitive()["indices"] = draft.addAccessor<std::uint8_t>({0, 1, 3}, "SCALAR");
        }),
        "accessor 1: its element 2 is the index 3, but there are only 3 vertices.");
    expectFault(faultAfter([](GltfDraft& draft) {
                    draft.primitive()["attributes"]["TEXCOORD_0"] =
                        draft.addAccessor<float>({0, 1}, "VEC2");
                }),
                "accessor 1 has 1 elements, but there are 3 positions.");
}

TEST(GltfDamage, UnsupportedExtensionsAreNamed) {
    for (const std::string name : {"KHR_draco_mesh_compression", "EXT_meshopt_compression", "x"})
        expectFault(faultAfter([&](GltfDraft& draft) {
                        draft.root["extensionsRequired"] = {"KHR_texture_transform", name};
                    }),
                    "needs the extension " + name +
                        ", which is not supported; export it without this extension.");
    EXPECT_EQ(
        faultAfter([](GltfDraft& draft) {
            draft.root["extensionsRequired"] = {"KHR_texture_transform", "KHR_materials_unlit"};
        }),
        "no fault");
    expectFault(
        faultAfter([](GltfDraft& draft) {
            draft.root["accessors"][0].erase("bufferView");
            draft.primitive()["extensions"]["KHR_draco_mesh_compression"] = {{"bufferView", 0}};
        }),
        "compressed by KHR_draco_mesh_compression");
}

TEST(GltfDamage, UrisStayInTheFolder) {
    EXPECT_EQ(faultWithUri("m.bin"), "no fault");
    EXPECT_EQ(faultWithUri("./sub/%C3%A4%20b.bin"), "no fault");
    EXPECT_EQ(faultWithUri("sub/ä b.bin"), "no fault");
    for (const char* uri :
         {"../outside.bin", "sub/../m.bin", "%2e%2e/outside.bin", "/etc/passwd", "%2Fetc/passwd",
          "file:m.bin", "http://example.com/m.bin", "C:/m.bin", "..\\outside.bin", "m%2",
          "m%zz.bin", "m.bin%00", "%ff.bin", "", "sub/", "\\\\host\\m.bin", "..%5Coutside.bin"})
        expectFault(faultWithUri(uri), "not a path to a file in the folder");
    expectFault(faultWithUri("none.bin"), "none.bin is missing.");
    expectFault(faultWithUri("sub"), "sub is missing.");
    expectFault(faultWithUri("short.bin"), "should have 36 bytes, but has 3; is it cut off?");
}

TEST(GltfDamage, DataUrisAreDecoded) {
    // Nine floats: 0 0 0, 1 0 0, 0 1 0.
    const std::string text = "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA";
    EXPECT_EQ(faultWithUri("data:application/octet-stream;base64," + text), "no fault");
    EXPECT_EQ(faultWithUri("data:;base64," + text + "AA=="), "no fault");
    expectFault(faultWithUri("data:;base64," + text.substr(0, 44)), "its data are");
    expectFault(faultWithUri("data:;base64,!" + text.substr(1)), "its data are not valid base64");
    expectFault(faultWithUri("data:text/plain," + text), "not in base64");
    expectFault(faultWithUri("data:"), "not in base64");
}

TEST(GltfDamage, NamesSurviveConversionToUris) {
    const std::filesystem::path name(u8"ä日本 a+b#%20?.bin");
    EXPECT_EQ(gltfUriOf(u8"ä b.bin"), "%C3%A4%20b.bin");
    EXPECT_EQ(pathOfGltfUri(gltfUriOf(name)), name);
}

TEST(GltfDamage, CancellingEndsTheRead) {
    const ScratchFolder folder;
    writeWhole(folder / u8"x.glb", triangleDraft().glb());
    int calls = 0;
    // The first call is for the file itself, a later one for its meshes.
    const auto cancel = [&](std::uint64_t, std::uint64_t) {
        if (++calls > 1) throw korvalite::Error(korvalite::ErrorCode::Cancelled, "");
    };
    EXPECT_THROW((void)readGltf(pathOfUtf8(folder / u8"x.glb"), cancel), korvalite::Error);
    EXPECT_EQ(calls, 2);
}

}  // namespace korva::test
