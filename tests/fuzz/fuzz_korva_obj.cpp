// SPDX-License-Identifier: MIT
//
// Any bytes as an OBJ file. The result must be a consistent mesh, and writing and reading it must
// give the same again.
#include "korva/files/obj/obj_reader.h"
#include "korva/files/obj/obj_writer.h"
#include "support/scratch_folder.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace korvalite::core;

constexpr std::size_t kShortestVertex = 7;  // "v 0 0 0"; with a line end, but for the last

void require(bool holds) {
    if (!holds) std::abort();
}

void requireIndicesBelow(std::size_t count, const std::vector<std::uint32_t>& indices) {
    for (const std::uint32_t index : indices)
        require(index < count);
}

void requireConsistent(const korvalite::Mesh& mesh, std::size_t fileSize) {
    const std::size_t vertices = mesh.vertexCount();
    require(vertices > 0 && vertices <= fileSize / kShortestVertex);
    require(mesh.positions.size() == 3 * vertices && mesh.triangles.size() % 3 == 0);
    require(mesh.colors.empty() || mesh.colors.size() == 4 * vertices);
    require(mesh.mask.empty());
    require(mesh.triangleUVs.empty() || mesh.triangleUVs.size() == mesh.triangles.size());
    require(mesh.triangleUVs.empty() == mesh.uvs.empty());
    requireIndicesBelow(vertices, mesh.triangles);
    requireIndicesBelow(mesh.uvs.size() / 2, mesh.triangleUVs);
}

bool same(const std::vector<float>& a, const std::vector<float>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::isnan(a[i]) != std::isnan(b[i])) return false;
        if (!std::isnan(a[i]) && (a[i] != b[i] || std::signbit(a[i]) != std::signbit(b[i])))
            return false;
    }
    return true;
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
    requireConsistent(*mesh, size);

    korva::writeObj(test::pathOfUtf8(path), *mesh);
    const std::optional<korvalite::Mesh> again = meshOf(test::pathOfUtf8(path));
    require(again.has_value());
    require(same(mesh->positions, again->positions) && same(mesh->uvs, again->uvs));
    require(mesh->triangles == again->triangles && mesh->triangleUVs == again->triangleUVs);
    require(sameColors(mesh->colors, again->colors));
    return 0;
}
