// SPDX-License-Identifier: MIT
//
// Any bytes as a PLY file. Reading must end in an Error or a consistent mesh, which comes back the
// same from a file of its own.
#include "korva/files/ply/ply_reader.h"
#include "korva/files/ply/ply_writer.h"
#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using korvalite::core::test::pathOfUtf8;
using korvalite::core::test::ScratchFolder;
using korvalite::core::test::writeWhole;

void require(bool holds) {
    if (!holds) std::abort();
}

void requireConsistent(const korvalite::Mesh& mesh) {
    const std::size_t vertices = mesh.vertexCount();
    require(mesh.positions.size() == 3 * vertices);
    require(mesh.colors.empty() || mesh.colors.size() == 4 * vertices);
    require(mesh.mask.empty() || mesh.mask.size() == vertices);
    require(mesh.triangles.size() % 3 == 0);
    require(mesh.triangleUVs.empty() || mesh.triangleUVs.size() == mesh.triangles.size());
    require(mesh.uvs.empty() == mesh.triangleUVs.empty());
    for (const std::uint32_t vertex : mesh.triangles)
        require(vertex < vertices);
    for (const std::uint32_t point : mesh.triangleUVs)
        require(point < mesh.uvs.size() / 2);
}

template <typename Value>
bool sameBytes(const std::vector<Value>& a, const std::vector<Value>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Value)) == 0);
}

void requireSame(const korvalite::Mesh& a, const korvalite::Mesh& b) {
    require(sameBytes(a.positions, b.positions) && sameBytes(a.triangles, b.triangles));
    require(sameBytes(a.colors, b.colors) && sameBytes(a.mask, b.mask));
    require(a.triangleUVs.size() == b.triangleUVs.size());
    for (std::size_t i = 0; i < a.triangleUVs.size(); ++i)
        require(std::memcmp(&a.uvs[2 * std::size_t{a.triangleUVs[i]}],
                            &b.uvs[2 * std::size_t{b.triangleUVs[i]}], 2 * sizeof(float)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    static const std::string path = folder / u8"input.ply";
    static const std::filesystem::path output = pathOfUtf8(folder / u8"output.ply");
    writeWhole(path, std::string(data, data + size));
    try {
        const korva::ImportedMesh read = korva::readPly(pathOfUtf8(path));
        requireConsistent(read.mesh);
        korva::writePly(output, read.mesh);
        requireSame(read.mesh, korva::readPly(output).mesh);
    } catch (const korvalite::Error& error) {
        require(error.code() == korvalite::ErrorCode::CannotRead);
    }
    return 0;
}
