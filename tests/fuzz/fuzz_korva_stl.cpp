// SPDX-License-Identifier: MIT
//
// Any bytes as an STL file.
#include "fuzz/mesh_checks.h"
#include "korva/files/stl/stl_reader.h"
#include "korva/files/stl/stl_writer.h"

#include <cstddef>
#include <cstdint>

namespace {

using korvalite::Mesh;

void writeMesh(const std::filesystem::path& path, const Mesh& mesh) {
    korva::writeStl(path, mesh);
}

void requireSame(const Mesh& a, const Mesh& b) {
    using namespace korva::test;
    require(a.triangles == b.triangles);
    require(sameBytes(a.positions, b.positions));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    korva::test::requireRoundTrip<korva::readStl, writeMesh>(data, size, requireSame);
    return 0;
}
