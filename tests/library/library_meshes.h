// SPDX-License-Identifier: MIT
//
// Meshes for tests of the library, and results in a form that can be compared.
#pragma once

#include "formats/vok_reader.h"
#include "library/mesh_copy.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace korvalite::test {

/// A mesh of the core with corner UVs as read from a file: one UV point for each corner.
inline Mesh ownedCopy(const core::DMesh& mesh) {
    core::DMesh copy = mesh;
    if (!copy.coordsUV.empty() && copy.indicesUV.empty()) {
        copy.indicesUV.resize(copy.coordsUV.size());
        for (std::size_t i = 0; i < copy.indicesUV.size(); ++i)
            copy.indicesUV[i] = static_cast<std::uint32_t>(i);
    }
    return copyOut(copy);
}

inline Mesh sampleMesh(const std::string& name) {
    core::DMesh mesh;
    EXPECT_TRUE(
        core::importDMesh((std::string(KORVALITE_SOURCE_DIR "/samples/") + name).c_str(), mesh));
    return ownedCopy(mesh);
}

/// A bumpy closed torus of around * across vertices.
inline Mesh torusMesh(std::uint32_t around = 40, std::uint32_t across = 24) {
    core::DMesh mesh = core::test::torus(around, across);
    core::test::jitter(mesh, 0.05F, 7);
    return ownedCopy(mesh);
}

/// A bumpy square with an open border.
inline Mesh gridMesh(std::uint32_t side = 30) {
    return ownedCopy(core::test::grid(side, side));
}

/// The UVs of each corner, whatever their indices are.
inline std::vector<float> cornerUVs(const Mesh& mesh) {
    std::vector<float> uvs;
    for (const std::uint32_t index : mesh.triangleUVs)
        uvs.insert(uvs.end(),
                   {mesh.uvs[2 * std::size_t{index}], mesh.uvs[2 * std::size_t{index} + 1]});
    return uvs;
}

/// Without the fourth byte, which no file holds.
inline std::vector<std::uint8_t> rgbOf(const Mesh& mesh) {
    std::vector<std::uint8_t> rgb;
    for (std::size_t i = 0; i < mesh.colors.size(); ++i)
        if (i % 4 != 3) rgb.push_back(mesh.colors[i]);
    return rgb;
}

inline void expectSame(const Mesh& a, const Mesh& b) {
    EXPECT_EQ(a.positions, b.positions);
    EXPECT_EQ(a.triangles, b.triangles);
    EXPECT_EQ(rgbOf(a), rgbOf(b));
    EXPECT_EQ(a.mask, b.mask);
    EXPECT_EQ(cornerUVs(a), cornerUVs(b));
}

/// The code and sentence of what `call` throws.
template <typename Call>
std::string errorOf(ErrorCode code, Call call) {
    try {
        call();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), code);
        return error.what();
    }
    ADD_FAILURE() << "no error";
    return "";
}

}  // namespace korvalite::test
