// SPDX-License-Identifier: MIT
//
// Any bytes as a PLY file.
#include "fuzz/mesh_checks.h"
#include "korva/files/ply/ply_reader.h"
#include "korva/files/ply/ply_writer.h"

#include <cstddef>
#include <cstdint>

namespace {

using korvalite::Mesh;

void writeMesh(const std::filesystem::path& path, const Mesh& mesh) {
    korva::writePly(path, mesh);
}

void requireSame(const Mesh& a, const Mesh& b) {
    using namespace korva::test;
    require(a.uvs.empty() == a.triangleUVs.empty());
    require(sameBytes(a.positions, b.positions) && sameBytes(a.triangles, b.triangles));
    require(sameBytes(a.colors, b.colors) && sameBytes(a.mask, b.mask));
    require(a.triangleUVs.size() == b.triangleUVs.size());
    for (std::size_t i = 0; i < a.triangleUVs.size(); ++i)
        require(std::memcmp(&a.uvs[2 * std::size_t{a.triangleUVs[i]}],
                            &b.uvs[2 * std::size_t{b.triangleUVs[i]}], 2 * sizeof(float)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    korva::test::requireRoundTrip<korva::readPly, writeMesh>(data, size, requireSame);
    return 0;
}
