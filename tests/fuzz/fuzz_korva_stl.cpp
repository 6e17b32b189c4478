// SPDX-License-Identifier: MIT
//
// Any bytes as a STL file. The result must be an error or a consistent mesh, and writing it and
// reading that must give the same.
#include "korva/files/stl/stl_reader.h"
#include "korva/files/stl/stl_writer.h"
#include "support/scratch_folder.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

namespace {

using namespace korvalite::core::test;
using korvalite::Mesh;

void require(bool holds) {
    if (!holds) std::abort();
}

void requireConsistent(const Mesh& mesh) {
    const std::size_t vertices = mesh.vertexCount();
    require(mesh.positions.size() % 3 == 0 && mesh.triangles.size() % 3 == 0);
    require(mesh.colors.empty() || mesh.colors.size() == 4 * vertices);
    require(mesh.triangleUVs.empty() || mesh.triangleUVs.size() == mesh.triangles.size());
    for (const std::uint32_t corner : mesh.triangles)
        require(corner < vertices);
    for (const std::uint32_t corner : mesh.triangleUVs)
        require(corner < mesh.uvs.size() / 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    static const std::string path = folder / u8"input.stl";
    writeWhole(path, std::string(reinterpret_cast<const char*>(data), size));
    Mesh mesh;
    try {
        mesh = korva::readStl(pathOfUtf8(path)).mesh;
    } catch (const korvalite::Error&) {
        return 0;
    }
    requireConsistent(mesh);
    korva::writeStl(pathOfUtf8(path), mesh);
    const Mesh again = korva::readStl(pathOfUtf8(path)).mesh;
    require(again.triangles == mesh.triangles);
    require(again.positions.size() == mesh.positions.size());
    require(mesh.positions.empty() || std::memcmp(again.positions.data(), mesh.positions.data(),
                                                  std::span(mesh.positions).size_bytes()) == 0);
    return 0;
}
