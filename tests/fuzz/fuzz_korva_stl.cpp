// SPDX-License-Identifier: MIT
//
// Any bytes as an STL file. The result must be an error or a consistent mesh, and writing it and
// reading that must give the same.
#include "fuzz/mesh_checks.h"
#include "korva/files/stl/stl_reader.h"
#include "korva/files/stl/stl_writer.h"
#include "support/scratch_folder.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using namespace korva::test;
using namespace korvalite::core::test;
using korvalite::Mesh;

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
    require(sameBytes(again.positions, mesh.positions));
    return 0;
}
