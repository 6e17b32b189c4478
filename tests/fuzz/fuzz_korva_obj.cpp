// SPDX-License-Identifier: MIT
//
// Any bytes as an OBJ file. The result must be a consistent mesh, and writing and reading it must
// give the same again.
#include "fuzz/mesh_checks.h"
#include "korva/files/obj/obj_reader.h"
#include "korva/files/obj/obj_writer.h"
#include "support/scratch_folder.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace korva::test;
using namespace korvalite::core;

constexpr std::size_t kShortestVertex = 7;  // "v 0 0 0"; with a line end, but for the last

void requireObjMesh(const korvalite::Mesh& mesh, std::size_t fileSize) {
    requireConsistent(mesh);
    require(mesh.vertexCount() > 0 && mesh.vertexCount() <= fileSize / kShortestVertex);
    require(mesh.mask.empty());
    require(mesh.triangleUVs.empty() == mesh.uvs.empty());
}

// Alpha is not written.
bool sameColors(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (i % 4 != 3 && a[i] != b[i]) return false;
    return true;
}

std::optional<korvalite::Mesh> meshOf(const std::filesystem::path& path) {
    try {
        return korva::readObj(path).mesh;
    } catch (const korvalite::Error& error) {
        require(error.code() == korvalite::ErrorCode::CannotRead);
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test::ScratchFolder folder;
    static const std::string path = folder / u8"input.obj";
    test::writeWhole(path, std::string(data, data + size));
    const std::optional<korvalite::Mesh> mesh = meshOf(test::pathOfUtf8(path));
    if (!mesh) return 0;
    requireObjMesh(*mesh, size);

    korva::writeObj(test::pathOfUtf8(path), *mesh);
    const std::optional<korvalite::Mesh> again = meshOf(test::pathOfUtf8(path));
    require(again.has_value());
    require(sameFloats(mesh->positions, again->positions));
    require(sameFloats(mesh->uvs, again->uvs));
    require(mesh->triangles == again->triangles && mesh->triangleUVs == again->triangleUVs);
    require(sameColors(mesh->colors, again->colors));
    return 0;
}
