// SPDX-License-Identifier: MIT
//
// Any bytes as an OFF file. The result must be an error or a consistent mesh, and writing it and
// reading that must give the same.
#include "fuzz/mesh_checks.h"
#include "korva/files/off/off_reader.h"
#include "korva/files/off/off_writer.h"
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
    static const std::string path = folder / u8"input.off";
    writeWhole(path, std::string(reinterpret_cast<const char*>(data), size));
    Mesh mesh;
    try {
        mesh = korva::readOff(pathOfUtf8(path)).mesh;
    } catch (const korvalite::Error&) {
        return 0;
    }
    requireConsistent(mesh);
    korva::writeOff(pathOfUtf8(path), mesh);
    const Mesh again = korva::readOff(pathOfUtf8(path)).mesh;
    require(again.triangles == mesh.triangles && again.colors == mesh.colors);
    require(sameFloats(again.positions, mesh.positions));
    return 0;
}
