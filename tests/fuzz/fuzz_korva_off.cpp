// SPDX-License-Identifier: MIT
//
// Any bytes as a OFF file. The result must be an error or a consistent mesh, and writing it and
// reading that must give the same.
#include "korva/files/off/off_reader.h"
#include "korva/files/off/off_writer.h"
#include "support/scratch_folder.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
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
    require(again.positions.size() == mesh.positions.size());
    // The text of NaNs does not keep their payload.
    for (std::size_t i = 0; i < mesh.positions.size(); ++i) {
        const float a = mesh.positions[i];
        const float b = again.positions[i];
        require(a == b || (a != a && b != b));
    }
    return 0;
}
