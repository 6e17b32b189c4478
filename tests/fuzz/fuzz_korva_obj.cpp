// SPDX-License-Identifier: MIT
//
// Any bytes as an OBJ file.
#include "fuzz/mesh_checks.h"
#include "korva/files/obj/obj_reader.h"
#include "korva/files/obj/obj_writer.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using namespace korva::test;
using korvalite::Mesh;

constexpr std::size_t kShortestVertex = 7;  // "v 0 0 0"; with a line end, but for the last

void writeMesh(const std::filesystem::path& path, const Mesh& mesh) {
    korva::writeObj(path, mesh);
}

// Alpha is not written.
bool sameColors(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (i % 4 != 3 && a[i] != b[i]) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    requireRoundTrip<korva::readObj, writeMesh>(data, size, [&](const Mesh& a, const Mesh& b) {
        require(a.vertexCount() > 0 && a.vertexCount() <= size / kShortestVertex);
        require(a.mask.empty());
        require(a.triangleUVs.empty() == a.uvs.empty());
        require(sameFloats(a.positions, b.positions) && sameFloats(a.uvs, b.uvs));
        require(a.triangles == b.triangles && a.triangleUVs == b.triangleUVs);
        require(sameColors(a.colors, b.colors));
    });
    return 0;
}
