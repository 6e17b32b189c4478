// SPDX-License-Identifier: MIT
//
// Any bytes as a PLY file. Reading must end in an Error or a consistent mesh, which comes back the
// same from a file of its own.
#include "fuzz/mesh_checks.h"
#include "korva/files/ply/ply_reader.h"
#include "korva/files/ply/ply_writer.h"
#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

using namespace korva::test;
using korvalite::core::test::pathOfUtf8;
using korvalite::core::test::ScratchFolder;
using korvalite::core::test::writeWhole;

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
        require(read.mesh.uvs.empty() == read.mesh.triangleUVs.empty());
        korva::writePly(output, read.mesh);
        requireSame(read.mesh, korva::readPly(output).mesh);
    } catch (const korvalite::Error& error) {
        require(error.code() == korvalite::ErrorCode::CannotRead);
    }
    return 0;
}
