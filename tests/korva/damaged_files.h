// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace korva::test {

using MeshReader = std::function<ImportedMesh(const std::filesystem::path&)>;

inline void expectConsistent(const korvalite::Mesh& mesh) {
    const std::size_t vertices = mesh.vertexCount();
    EXPECT_EQ(mesh.positions.size() % 3, 0U);
    EXPECT_EQ(mesh.triangles.size() % 3, 0U);
    EXPECT_TRUE(mesh.colors.empty() || mesh.colors.size() == 4 * vertices);
    EXPECT_TRUE(mesh.mask.empty() || mesh.mask.size() == vertices);
    EXPECT_TRUE(mesh.triangleUVs.empty() || mesh.triangleUVs.size() == mesh.triangles.size());
    for (const std::uint32_t corner : mesh.triangles)
        EXPECT_LT(corner, vertices);
    for (const std::uint32_t corner : mesh.triangleUVs)
        EXPECT_LT(corner, mesh.uvs.size() / 2);
}

/// A file of these bytes gives a consistent mesh or an Error that names the file. Returns whether
/// it gives a mesh.
inline bool expectMeshOrError(const MeshReader& read, const std::string& path,
                              const std::string& bytes) {
    // Some file systems wait for the disk when a file is overwritten, but not for a new one.
    std::filesystem::remove(korvalite::core::test::pathOfUtf8(path));
    korvalite::core::test::writeWhole(path, bytes);
    try {
        expectConsistent(read(korvalite::core::test::pathOfUtf8(path)).mesh);
        return true;
    } catch (const korvalite::Error& error) {
        EXPECT_EQ(error.code(), korvalite::ErrorCode::CannotRead);
        EXPECT_EQ(std::string(error.what()).find("Cannot read " + path), 0U) << error.what();
        return false;
    }
}

/// Cuts the file at every byte, and changes every byte in several ways.
inline void expectToSurviveDamage(const MeshReader& read, const std::string& bytes) {
    const korvalite::core::test::ScratchFolder folder;
    const std::string path = folder / u8"damaged";
    for (std::size_t length = 0; length < bytes.size(); ++length)
        expectMeshOrError(read, path, bytes.substr(0, length));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (const char flip : {'\x01', '\x10', '\x80', '\xFF'}) {
            std::string damaged = bytes;
            damaged[i] = static_cast<char>(damaged[i] ^ flip);
            expectMeshOrError(read, path, damaged);
        }
    }
}

}  // namespace korva::test
