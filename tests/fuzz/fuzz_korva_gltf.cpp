// SPDX-License-Identifier: MIT
//
// Any bytes as a glTF file, JSON or GLB. Reading must end in an Error or consistent meshes, which
// come back the same from a file of their own.
#include "fuzz/mesh_checks.h"
#include "korva/files/gltf/gltf_reader.h"
#include "korva/files/gltf/gltf_writer.h"
#include "support/scratch_folder.h"

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace {

using namespace korva::test;
using korvalite::core::test::pathOfUtf8;
using korvalite::core::test::ScratchFolder;
using korvalite::core::test::writeWhole;

void requireSame(const korva::NamedMesh& a, const korva::NamedMesh& b) {
    require(a.name == b.name);
    require(sameBytes(a.mesh.positions, b.mesh.positions));
    require(sameBytes(a.mesh.triangles, b.mesh.triangles));
    require(sameBytes(a.mesh.colors, b.mesh.colors));
    require(a.mesh.triangleUVs.size() == b.mesh.triangleUVs.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    static const std::string path = folder / u8"input.glb";
    static const std::filesystem::path output = pathOfUtf8(folder / u8"output.glb");
    writeWhole(path, std::string(data, data + size));
    try {
        const korva::Scene read = korva::readGltf(pathOfUtf8(path));
        require(!read.meshes.empty());
        for (const korva::NamedMesh& named : read.meshes) {
            requireConsistent(named.mesh);
            require(!named.mesh.triangles.empty());
        }
        korva::Scene copy = read;
        korva::writeGlb(output, copy);
        const korva::Scene again = korva::readGltf(output);
        require(again.meshes.size() == read.meshes.size());
        for (std::size_t i = 0; i < read.meshes.size(); ++i)
            requireSame(read.meshes[i], again.meshes[i]);
    } catch (const korvalite::Error& error) {
        require(error.code() == korvalite::ErrorCode::CannotRead);
    }
    return 0;
}
