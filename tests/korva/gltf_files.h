// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_reader.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace korva::test {

using korvalite::core::test::pathOfUtf8;
using korvalite::core::test::readWhole;
using korvalite::core::test::ScratchFolder;
using korvalite::core::test::writeWhole;
using Json = nlohmann::json;

template <typename Value>
constexpr int componentType() {
    if constexpr (std::is_same_v<Value, std::int8_t>) return 5120;
    if constexpr (std::is_same_v<Value, std::uint8_t>) return 5121;
    if constexpr (std::is_same_v<Value, std::int16_t>) return 5122;
    if constexpr (std::is_same_v<Value, std::uint16_t>) return 5123;
    if constexpr (std::is_same_v<Value, std::uint32_t>) return 5125;
    return 5126;
}

inline std::string wordOf(std::uint32_t word) {
    return {reinterpret_cast<const char*>(&word), sizeof word};
}

/// A glTF file in the making: JSON that tests may change, and one buffer.
struct GltfDraft {
    Json root{{"asset", {{"version", "2.0"}}}};
    std::string binary;

    template <typename Value>
    std::size_t addView(const std::vector<Value>& values) {
        binary.resize((binary.size() + 3) / 4 * 4);
        Json view{{"buffer", 0},
                  {"byteOffset", binary.size()},
                  {"byteLength", values.size() * sizeof(Value)}};
        binary.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(Value));
        root["bufferViews"].push_back(view);
        return root["bufferViews"].size() - 1;
    }

    template <typename Value>
    std::size_t addAccessor(const std::vector<Value>& values, const std::string& type,
                            bool normalized = false) {
        const std::size_t columns = type == "SCALAR" ? 1 : static_cast<std::size_t>(type[3] - '0');
        Json accessor{{"bufferView", addView(values)},
                      {"componentType", componentType<Value>()},
                      {"count", values.size() / columns},
                      {"type", type}};
        if (normalized) accessor["normalized"] = true;
        root["accessors"].push_back(accessor);
        return root["accessors"].size() - 1;
    }

    /// Adds a mesh of one primitive, and a node with it. Returns the primitive.
    Json& addMesh(const Json& attributes) {
        root["meshes"].push_back({{"primitives", Json::array({{{"attributes", attributes}}})}});
        root["nodes"].push_back({{"mesh", root["meshes"].size() - 1}});
        return primitive(root["meshes"].size() - 1);
    }
    Json& primitive(std::size_t mesh = 0, std::size_t index = 0) {
        return root["meshes"][mesh]["primitives"][index];
    }

    [[nodiscard]] std::string glb() const {
        Json whole = root;
        std::string data = binary;
        if (!whole.contains("buffers") && !data.empty())
            whole["buffers"] = Json::array({{{"byteLength", data.size()}}});
        std::string text = whole.dump();
        text.resize((text.size() + 3) / 4 * 4, ' ');
        data.resize((data.size() + 3) / 4 * 4);
        std::string chunks = wordOf(static_cast<std::uint32_t>(text.size())) + "JSON" + text;
        if (!data.empty())
            chunks +=
                wordOf(static_cast<std::uint32_t>(data.size())) + std::string("BIN\0", 4) + data;
        return "glTF" + wordOf(2) + wordOf(static_cast<std::uint32_t>(chunks.size() + 12)) + chunks;
    }
};

/// One triangle: (0, 0, 0), (1, 0, 0), (0, 1, 0).
inline GltfDraft triangleDraft() {
    GltfDraft draft;
    draft.addMesh({{"POSITION", draft.addAccessor<float>({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3")}});
    return draft;
}

/// The triangle (5, 6, 7), (1, 0, 0), (8, 9, 10): two positions of triangleDraft() are replaced.
inline GltfDraft sparseDraft() {
    GltfDraft draft = triangleDraft();
    const std::size_t indices = draft.addView<std::uint8_t>({0, 2});
    const std::size_t values = draft.addView<float>({5, 6, 7, 8, 9, 10});
    draft.root["accessors"][0]["sparse"] = {
        {"count", 2},
        {"indices", {{"bufferView", indices}, {"componentType", 5121}}},
        {"values", {{"bufferView", values}}}};
    return draft;
}

/// Two triangles that meet in a seam: four positions, six vertices.
inline GltfDraft seamDraft() {
    GltfDraft draft;
    const std::size_t positions = draft.addAccessor<float>(
        {0, 0, 0, 1, 0, 0, 1, 1, 0, -0.0F, 0, 0, 1, 1, 0, 0, 1, 0}, "VEC3");
    const std::size_t uvs =
        draft.addAccessor<float>({0, 0, 1, 0, 1, 1, 0.5F, 0, 1, 1, 0, 1}, "VEC2");
    const std::size_t indices = draft.addAccessor<std::uint16_t>({0, 1, 2, 3, 4, 5}, "SCALAR");
    draft.addMesh({{"POSITION", positions}, {"TEXCOORD_0", uvs}})["indices"] = indices;
    return draft;
}

inline Scene readBytes(const std::string& bytes) {
    const ScratchFolder folder;
    writeWhole(folder / u8"x.glb", bytes);
    return readGltf(pathOfUtf8(folder / u8"x.glb"));
}

inline Scene read(const GltfDraft& draft) {
    return readBytes(draft.glb());
}

/// The message of the Error.
inline std::string faultOfBytes(const std::string& bytes) {
    try {
        (void)readBytes(bytes);
    } catch (const korvalite::Error& error) {
        EXPECT_EQ(error.code(), korvalite::ErrorCode::CannotRead);
        return error.what();
    }
    return "no fault";
}

inline std::string faultOf(const GltfDraft& draft) {
    return faultOfBytes(draft.glb());
}

inline bool hasNote(const Scene& scene, const std::string& note) {
    for (const std::string& each : scene.notes)
        if (each == note) return true;
    ADD_FAILURE() << "no note: " << note << "; there are " << Json(scene.notes).dump();
    return false;
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace korva::test
