// SPDX-License-Identifier: MIT
//
// Readers and writers of mesh files, called with bytes instead of paths.
#pragma once

#include "korva/files/imported_mesh.h"
#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <gtest/gtest.h>

#include <string>

namespace korva::test {

/// Reads bytes as a file of the reader's format.
template <auto read>
ImportedMesh readBytesBy(const std::string& bytes) {
    const korvalite::core::test::ScratchFolder folder;
    const std::string path = folder / u8"mesh";
    korvalite::core::test::writeWhole(path, bytes);
    return read(korvalite::core::test::pathOfUtf8(path), {});
}

/// What the Error says after "Cannot read PATH: ", or "" if there is none.
template <auto read>
std::string errorOfBytesBy(const std::string& bytes) {
    try {
        (void)readBytesBy<read>(bytes);
    } catch (const korvalite::Error& error) {
        EXPECT_EQ(error.code(), korvalite::ErrorCode::CannotRead);
        const std::string text = error.what();
        EXPECT_EQ(text.rfind("Cannot read ", 0), 0U) << text;
        const std::string name = "mesh: ";
        return text.substr(text.find(name) + name.size());
    }
    return "";
}

/// The bytes of the file that the writer makes of a mesh.
template <auto write>
std::string bytesWrittenBy(const korvalite::Mesh& mesh) {
    const korvalite::core::test::ScratchFolder folder;
    const std::string path = folder / u8"mesh";
    write(korvalite::core::test::pathOfUtf8(path), mesh, {});
    return korvalite::core::test::readWhole(path);
}

}  // namespace korva::test
